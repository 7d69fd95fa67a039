#include <fcntl.h>
#include <pwd.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <time.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <system_error>
#include <thread>

#include "platform/os.h"
#include "platform/posix_time.h"

namespace kelpdex::platform {

namespace {

std::string Environment(const char* name) {
  const char* value = std::getenv(name);
  return value == nullptr ? std::string() : std::string(value);
}

// The XDG base directories are ignored unless absolute.
std::string XdgFolder(const char* variable, const char* fallbackUnderHome) {
  std::string value = Environment(variable);
  if (!value.empty() && value[0] == '/') return value;
  std::string home = Environment("HOME");
  if (home.empty()) {
    struct passwd entry;
    struct passwd* found = nullptr;
    char buffer[4096];
    if (getpwuid_r(geteuid(), &entry, buffer, sizeof buffer, &found) == 0 && found != nullptr &&
        found->pw_dir != nullptr) {
      home = found->pw_dir;
    }
  }
  if (home.empty()) return "";
  return JoinPath(home, fallbackUnderHome);
}

// strerror_r is the GNU one (returning the text) or the XSI one (filling the buffer) depending
// on the C library and feature macros; these two overloads accept either.
[[maybe_unused]] const char* ErrorTextOf(int result, const char* buffer) {
  return result == 0 ? buffer : nullptr;
}
[[maybe_unused]] const char* ErrorTextOf(const char* result, const char*) {
  return result;
}

bool WriteAll(int fd, std::string_view bytes) {
  while (!bytes.empty()) {
    ssize_t written = write(fd, bytes.data(), bytes.size());
    if (written < 0) {
      if (errno == EINTR) continue;
      return false;
    }
    bytes.remove_prefix(static_cast<size_t>(written));
  }
  return true;
}

int CloseKeepingErrno(int fd) {
  int saved = errno;
  int result = close(fd);
  errno = saved;
  return result;
}

// A new file beside `target`, named so that an interrupted write leaves something recognisable.
// The mode is given to open so that the umask applies, as for any file the user creates.
int CreateSiblingTemp(const std::string& target, mode_t mode, std::string& tempPath) {
  static std::atomic<unsigned> counter{0};
  std::string folder = FolderOf(target);
  // Cut so that the temporary name stays within NAME_MAX whatever the target is called.
  std::string name = "." + FileNameOf(target).substr(0, 160) + ".kelpdex-";
  for (int attempt = 0; attempt < 100; ++attempt) {
    struct timespec now {};
    clock_gettime(CLOCK_REALTIME, &now);
    std::string unique = std::to_string(getpid()) + "-" + std::to_string(counter++) + "-" +
                         std::to_string(now.tv_nsec);
    tempPath = JoinPath(folder, name + unique + ".tmp");
    int fd = open(tempPath.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, mode);
    if (fd >= 0 || errno != EEXIST) return fd;
  }
  return -1;
}

// Files from this size up are let go of by a helper thread once replaced (see CloseReplaced).
constexpr off_t kLargeReplaced = 8 << 20;

// Dropping the last reference to a file that a rename replaced frees its cached pages and its
// blocks, which for a file of hundreds of megabytes takes a fifth of a second; a helper thread
// does that instead of the save that is waiting to report success.
void CloseReplaced(int fd) {
  struct stat info {};
  if (::fstat(fd, &info) == 0 && S_ISREG(info.st_mode) && info.st_nlink == 0 &&
      info.st_size >= kLargeReplaced) {
    try {
      std::thread([fd] { ::close(fd); }).detach();
      return;
    } catch (const std::system_error&) {
      // No thread to be had: close it here, only more slowly.
    }
  }
  ::close(fd);
}

void RemoveKeepingErrno(const std::string& path) {
  int saved = errno;
  unlink(path.c_str());
  errno = saved;
}

}  // namespace

std::string UserName() {
  struct passwd entry;
  struct passwd* found = nullptr;
  char buffer[4096];
  if (getpwuid_r(geteuid(), &entry, buffer, sizeof buffer, &found) == 0 && found != nullptr &&
      found->pw_name != nullptr && found->pw_name[0] != '\0') {
    return found->pw_name;
  }
  return Environment("USER");
}

LocalTime GetLocalTime() {
  struct timespec now {};
  clock_gettime(CLOCK_REALTIME, &now);
  LocalTime t;
  LocalTimeOf(now.tv_sec, t);
  t.milliseconds = static_cast<int>(now.tv_nsec / 1000000);
  return t;
}

std::string TempFolder() {
  std::string folder = Environment("TMPDIR");
  if (folder.empty()) folder = "/tmp";
  while (folder.size() > 1 && folder.back() == '/') folder.pop_back();
  return folder;
}

std::string UserSettingsFolder() {
  std::string config = XdgFolder("XDG_CONFIG_HOME", ".config");
  if (config.empty()) return "";
  return JoinPath(config, "Kelpdex");
}

std::string UserDataFolder() {
  return XdgFolder("XDG_DATA_HOME", ".local/share");
}

std::string ExecutablePath() {
  std::string path(256, '\0');
  for (;;) {
    ssize_t length = readlink("/proc/self/exe", path.data(), path.size());
    if (length < 0) return "";
    if (static_cast<size_t>(length) < path.size()) {
      path.resize(static_cast<size_t>(length));
      return path;
    }
    path.resize(path.size() * 2);
  }
}

std::vector<std::string> SystemPrefixes() {
  return {"/usr/", "/opt/"};
}

std::string FolderOf(std::string_view path) {
  size_t slash = path.rfind('/');
  if (slash == std::string_view::npos) return "";
  if (slash == 0) return "/";
  return std::string(path.substr(0, slash));
}

std::string FileNameOf(std::string_view path) {
  size_t slash = path.rfind('/');
  return std::string(slash == std::string_view::npos ? path : path.substr(slash + 1));
}

std::string JoinPath(std::string_view folder, std::string_view name) {
  std::string joined(folder);
  if (!joined.empty() && joined.back() != '/') joined += '/';
  joined += name;
  return joined;
}

bool FileExists(const std::string& path) {
  struct stat info {};
  return stat(path.c_str(), &info) == 0 && !S_ISDIR(info.st_mode);
}

bool FolderExists(const std::string& path) {
  struct stat info {};
  return stat(path.c_str(), &info) == 0 && S_ISDIR(info.st_mode);
}

bool GetFileSize(const std::string& path, uint64_t& size) {
  struct stat info {};
  if (stat(path.c_str(), &info) != 0) return false;
  if (S_ISDIR(info.st_mode)) {
    errno = EISDIR;
    return false;
  }
  size = static_cast<uint64_t>(info.st_size);
  return true;
}

bool DeleteFile(const std::string& path) {
  return unlink(path.c_str()) == 0;
}

// The copy is written beside the target and moved into place, so that the target is either the
// old file or the whole copy, never half of it.
bool CopyFile(const std::string& from, const std::string& to, bool failIfExists) {
  if (failIfExists && access(to.c_str(), F_OK) == 0) {
    errno = EEXIST;
    return false;
  }
  int in = open(from.c_str(), O_RDONLY | O_CLOEXEC);
  if (in < 0) return false;
  struct stat info {};
  bool regular = fstat(in, &info) == 0;
  if (regular && !S_ISREG(info.st_mode)) {
    errno = S_ISDIR(info.st_mode) ? EISDIR : EINVAL;
    regular = false;
  }
  if (!regular) {
    CloseKeepingErrno(in);
    return false;
  }
  std::string tempPath;
  int out = CreateSiblingTemp(to, info.st_mode & 07777, tempPath);
  if (out < 0) {
    CloseKeepingErrno(in);
    return false;
  }
  bool ok = true;
  char buffer[65536];
  for (;;) {
    ssize_t got = read(in, buffer, sizeof buffer);
    if (got < 0 && errno == EINTR) continue;
    if (got < 0) ok = false;
    if (got <= 0) break;
    if (!WriteAll(out, std::string_view(buffer, static_cast<size_t>(got)))) {
      ok = false;
      break;
    }
  }
  // Like CopyFileA, the copy keeps the time the original was last written.
  if (ok) {
    struct timespec times[2] = {info.st_atim, info.st_mtim};
    (void)futimens(out, times);
  }
  CloseKeepingErrno(in);
  if (close(out) != 0) ok = false;
  if (ok) {
    if (failIfExists) {
      // link() refuses an existing target, which closes the gap since the check above.
      if (link(tempPath.c_str(), to.c_str()) == 0) {
        unlink(tempPath.c_str());
        return true;
      }
      if (errno == EEXIST) {
        RemoveKeepingErrno(tempPath);
        return false;
      }
      // A file system without hard links (FAT on a memory stick): check and rename instead.
      if (access(to.c_str(), F_OK) == 0) {
        RemoveKeepingErrno(tempPath);
        errno = EEXIST;
        return false;
      }
    }
    if (rename(tempPath.c_str(), to.c_str()) == 0) return true;
  }
  RemoveKeepingErrno(tempPath);
  return false;
}

bool CreateFolder(const std::string& path) {
  if (path.empty()) {
    errno = ENOENT;
    return false;
  }
  if (FolderExists(path)) return true;
  std::string parent = FolderOf(path);
  while (!parent.empty() && parent.size() > 1 && parent.back() == '/') parent.pop_back();
  if (!parent.empty() && parent != path && !FolderExists(parent) && !CreateFolder(parent)) {
    return false;
  }
  if (mkdir(path.c_str(), 0777) == 0) return true;
  // Made meanwhile by someone else, or the path ends with a separator.
  int saved = errno;
  if (FolderExists(path)) return true;
  errno = saved;
  return false;
}

bool WriteWholeFile(const std::string& path, std::string_view bytes) {
  struct stat existing {};
  bool replacing = stat(path.c_str(), &existing) == 0;
  if (replacing && S_ISDIR(existing.st_mode)) {
    errno = EISDIR;
    return false;
  }
  std::string tempPath;
  int fd = CreateSiblingTemp(path, 0666, tempPath);
  if (fd < 0) return false;
  // A replaced file keeps its permissions (a settings file the user made private stays so).
  bool ok = (!replacing || fchmod(fd, existing.st_mode & 07777) == 0) && WriteAll(fd, bytes) &&
            fsync(fd) == 0;
  if (close(fd) != 0) ok = false;
  if (ok && rename(tempPath.c_str(), path.c_str()) == 0) return true;
  RemoveKeepingErrno(tempPath);
  return false;
}

bool ReadWholeFile(const std::string& path, std::string& bytes) {
  bytes.clear();
  int fd = open(path.c_str(), O_RDONLY | O_CLOEXEC);
  if (fd < 0) return false;
  char buffer[65536];
  for (;;) {
    ssize_t got = read(fd, buffer, sizeof buffer);
    if (got < 0 && errno == EINTR) continue;
    if (got < 0) {
      CloseKeepingErrno(fd);
      return false;
    }
    if (got == 0) break;
    bytes.append(buffer, static_cast<size_t>(got));
  }
  close(fd);
  return true;
}

int LastSystemError() {
  return errno;
}

void SetLastSystemError(int code) {
  errno = code;
}

std::string SystemErrorText(int code) {
  char buffer[256] = {};
  const char* text = ErrorTextOf(strerror_r(code, buffer, sizeof buffer), buffer);
  if (text == nullptr || text[0] == '\0') return "Unknown error " + std::to_string(code);
  return text;
}

bool ReplaceFile(const std::string& from, const std::string& to) {
  // Holding the file about to be replaced keeps the rename from freeing it on our time.
  int old = -1;
  struct stat info {};
  if (::lstat(to.c_str(), &info) == 0 && S_ISREG(info.st_mode) && info.st_size >= kLargeReplaced) {
    old = ::open(to.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY | O_NOFOLLOW);
  }
  bool ok = ::rename(from.c_str(), to.c_str()) == 0;
  int saved = errno;
  if (old >= 0) CloseReplaced(old);
  errno = saved;
  return ok;
}

bool SyncFile(const std::string& path) {
  int fd = ::open(path.c_str(), O_RDONLY);
  if (fd < 0) return false;
  bool ok = ::fsync(fd) == 0;
  ::close(fd);
  return ok;
}

std::string ResolveLinks(const std::string& path) {
  std::string current = path;
  // The kernel's own limit on links followed in one lookup.
  for (int hop = 0; hop < 40; ++hop) {
    struct stat info {};
    if (::lstat(current.c_str(), &info) != 0 || !S_ISLNK(info.st_mode)) return current;
    std::string target(4096, '\0');
    ssize_t length = ::readlink(current.c_str(), target.data(), target.size());
    if (length <= 0 || static_cast<size_t>(length) >= target.size()) return "";
    target.resize(static_cast<size_t>(length));
    if (target[0] != '/') {
      std::string folder = FolderOf(current);
      if (!folder.empty()) target = JoinPath(folder, target);
    }
    current = target;
  }
  errno = ELOOP;
  return "";
}

bool InspectReplacedFile(const std::string& path, ReplacedFile& info) {
  info = ReplacedFile();
  struct stat st {};
  if (::lstat(path.c_str(), &st) != 0) return errno == ENOENT || errno == ENOTDIR;
  info.exists = true;
  info.regular = S_ISREG(st.st_mode);
  info.folder = S_ISDIR(st.st_mode);
  // The effective ids decide, as they do for the open that a write would make.
  info.writable = ::faccessat(AT_FDCWD, path.c_str(), W_OK, AT_EACCESS) == 0;
  info.mode = st.st_mode & 07777;
  info.owner = st.st_uid;
  info.group = st.st_gid;
  return true;
}

bool CreatePrivateFile(const std::string& path, const ReplacedFile& like) {
  int fd = ::open(path.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0600);
  if (fd < 0) return false;
  if (like.exists) {
    struct stat st {};
    if (::fstat(fd, &st) == 0 && (st.st_uid != like.owner || st.st_gid != like.group)) {
      // Only a privileged process gives a file away; anyone may pass it to a group of his own.
      // Neither failure stops the save: the document is written all the same.
      if (::fchown(fd, like.owner, like.group) != 0) {
        (void)::fchown(fd, static_cast<uid_t>(-1), like.group);
      }
    }
  }
  if (::close(fd) != 0) {
    RemoveKeepingErrno(path);
    return false;
  }
  return true;
}

bool TakeOverPermissions(const std::string& path, const ReplacedFile& like) {
  // After the change of owner, which clears the set-id bits, so that they come back.
  return ::chmod(path.c_str(), static_cast<mode_t>(like.mode & 07777)) == 0;
}

FileLock::~FileLock() {
  Release();
}

void PrefaultMemory(void* memory, size_t bytes) {
#if defined(__linux__)
#ifndef MADV_POPULATE_WRITE
#define MADV_POPULATE_WRITE 23  // Linux 5.14; older kernels refuse it and the pages fault later
#endif
  constexpr size_t kPage = 4096;
  // madvise wants whole pages; a partial page at either end simply faults when it is written.
  auto first = (reinterpret_cast<uintptr_t>(memory) + kPage - 1) & ~(kPage - 1);
  auto end = (reinterpret_cast<uintptr_t>(memory) + bytes) & ~(kPage - 1);
  if (end <= first) return;
  size_t length = end - first;
  auto populate = [](uintptr_t from, size_t size) {
    ::madvise(reinterpret_cast<void*>(from), size, MADV_POPULATE_WRITE);
  };
  // Two cores clear pages twice as fast as one; below a few megabytes a thread is not worth it.
  if (length < (8u << 20) || std::thread::hardware_concurrency() < 2) {
    populate(first, length);
    return;
  }
  size_t half = (length / 2) & ~(kPage - 1);
  std::thread helper(populate, first + half, length - half);
  populate(first, half);
  helper.join();
#else
  (void)memory;
  (void)bytes;
#endif
}

bool SameFile(const std::string& a, const std::string& b) {
  struct stat sa {};
  struct stat sb {};
  if (::stat(a.c_str(), &sa) == 0 && ::stat(b.c_str(), &sb) == 0) {
    return sa.st_dev == sb.st_dev && sa.st_ino == sb.st_ino;
  }
  return a == b;
}

LockResult FileLock::Acquire(const std::string& path) {
  Release();
  int fd = ::open(path.c_str(), O_RDWR);
  if (fd < 0) fd = ::open(path.c_str(), O_RDONLY);
  if (fd < 0) return LockResult::kUnavailable;
  // An open file description lock: held per open file, so that it also stands between threads,
  // and released when the descriptor closes.
  struct flock lock {};
  lock.l_type = F_RDLCK;  // a reader's lock is enough to be seen, and works on read-only files
  lock.l_whence = SEEK_SET;
#ifdef F_OFD_SETLK
  int command = F_OFD_SETLK;
#else
  int command = F_SETLK;
#endif
  // A second process takes a write lock to test; ours is a read lock, so test with both.
  struct flock probe = lock;
  probe.l_type = F_WRLCK;
#ifdef F_OFD_GETLK
  int getCommand = F_OFD_GETLK;
#else
  int getCommand = F_GETLK;
#endif
  if (::fcntl(fd, getCommand, &probe) == 0 && probe.l_type != F_UNLCK) {
    ::close(fd);
    return LockResult::kInUse;
  }
  lock.l_type = F_WRLCK;
  if (::fcntl(fd, command, &lock) != 0) {
    lock.l_type = F_RDLCK;
    if (::fcntl(fd, command, &lock) != 0) {
      ::close(fd);
      return LockResult::kInUse;
    }
  }
  handle_ = fd;
  return LockResult::kLocked;
}

void FileLock::Release() {
  if (handle_ == kNone) return;
  // After a save the lock holds the document that the save replaced.
  CloseReplaced(static_cast<int>(handle_));
  handle_ = kNone;
}

}  // namespace kelpdex::platform
