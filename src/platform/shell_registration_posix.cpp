// The launcher entry and the *.kpx file type for freedesktop desktops, per user, under
// $XDG_DATA_HOME. Desktops read the caches rebuilt by update-mime-database and
// update-desktop-database; where those tools are missing the files still work once the desktop
// rescans, so their failure is not ours.
#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <string>
#include <vector>

#include "platform/os.h"
#include "platform/shell_registration.h"

extern char** environ;

namespace kelpdex::platform {

namespace {

constexpr const char* kDesktopFileName = "kelpdex.desktop";
constexpr const char* kMimePackageName = "kelpdex.xml";

// The executable as one argument of an Exec key: in double quotes, with the characters that
// stay special inside them escaped, then escaped again as a desktop-file string, and with '%'
// doubled so that it is not read as a field code.
std::string ExecArgument(const std::string& path) {
  std::string quoted = "\"";
  for (char c : path) {
    if (c == '"' || c == '`' || c == '$' || c == '\\') quoted += '\\';
    quoted += c;
  }
  quoted += '"';
  std::string value;
  for (char c : quoted) {
    if (c == '\\') {
      value += "\\\\";
    } else if (c == '\n') {
      value += "\\n";
    } else if (c == '%') {
      value += "%%";
    } else {
      value += c;
    }
  }
  return value;
}

std::string DesktopEntry(const std::string& executablePath) {
  return "[Desktop Entry]\n"
         "Type=Application\n"
         "Name=Kelpdex\n"
         "Comment=Single-user desktop database\n"
         "Exec=" +
         ExecArgument(executablePath) +
         " %f\n"
         "MimeType=application/x-kelpdex;\n"
         "Terminal=false\n"
         "Categories=Office;Database;\n";
}

constexpr const char* kMimePackage =
    "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
    "<mime-info xmlns=\"http://www.freedesktop.org/standards/shared-mime-info\">\n"
    "  <mime-type type=\"application/x-kelpdex\">\n"
    "    <comment>Kelpdex File</comment>\n"
    "    <glob pattern=\"*.kpx\"/>\n"
    "  </mime-type>\n"
    "</mime-info>\n";

// Runs a tool found on PATH with its output thrown away and waits for it; any failure is
// ignored and errno is left as it was.
void RunQuietly(const char* tool, const std::string& argument) {
  int saved = errno;
  posix_spawn_file_actions_t actions;
  if (posix_spawn_file_actions_init(&actions) == 0) {
    posix_spawn_file_actions_addopen(&actions, STDOUT_FILENO, "/dev/null", O_WRONLY, 0);
    posix_spawn_file_actions_addopen(&actions, STDERR_FILENO, "/dev/null", O_WRONLY, 0);
    std::string program = tool;
    std::string arg = argument;
    char* argv[] = {program.data(), arg.data(), nullptr};
    pid_t child = 0;
    if (posix_spawnp(&child, tool, &actions, nullptr, argv, environ) == 0) {
      int status = 0;
      while (waitpid(child, &status, 0) < 0 && errno == EINTR) {
      }
    }
    posix_spawn_file_actions_destroy(&actions);
  }
  errno = saved;
}

void RefreshCaches(const std::string& dataFolder) {
  std::string mimeFolder = JoinPath(dataFolder, "mime");
  std::string applicationsFolder = JoinPath(dataFolder, "applications");
  if (FolderExists(mimeFolder)) RunQuietly("update-mime-database", mimeFolder);
  if (FolderExists(applicationsFolder)) {
    RunQuietly("update-desktop-database", applicationsFolder);
  }
}

}  // namespace

bool RegisterShellIntegration(const std::string& executablePath) {
  std::string data = UserDataFolder();
  if (data.empty()) {
    errno = ENOENT;
    return false;
  }
  std::string applications = JoinPath(data, "applications");
  std::string packages = JoinPath(JoinPath(data, "mime"), "packages");
  if (!CreateFolder(applications) || !CreateFolder(packages)) return false;
  if (!WriteWholeFile(JoinPath(packages, kMimePackageName), kMimePackage)) return false;
  if (!WriteWholeFile(JoinPath(applications, kDesktopFileName), DesktopEntry(executablePath))) {
    return false;
  }
  RefreshCaches(data);
  return true;
}

bool UnregisterShellIntegration() {
  std::string data = UserDataFolder();
  if (data.empty()) return true;  // no data folder, so nothing of ours in it
  const std::string files[] = {
      JoinPath(JoinPath(data, "applications"), kDesktopFileName),
      JoinPath(JoinPath(JoinPath(data, "mime"), "packages"), kMimePackageName),
  };
  int error = 0;
  for (const std::string& file : files) {
    if (!DeleteFile(file) && errno != ENOENT && errno != ENOTDIR) error = errno;
  }
  RefreshCaches(data);
  if (error != 0) {
    errno = error;
    return false;
  }
  return true;
}

}  // namespace kelpdex::platform
