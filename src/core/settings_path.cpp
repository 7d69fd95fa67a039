#include "core/settings_path.h"

#include "platform/os.h"
#include "text/code_page.h"

namespace kelpdex {

namespace {

constexpr const char* kSettingsFileName = "settings.xml";

bool StartsWithPrefix(const std::string& path, const std::vector<std::string>& prefixes) {
  for (const std::string& prefix : prefixes) {
    if (!prefix.empty() && text::StartsWithNoCase(path, prefix)) return true;
  }
  return false;
}

}  // namespace

std::string DecideSettingsPath(const SettingsPathFacts& facts) {
  std::string perUser = platform::JoinPath(facts.userSettingsFolder, kSettingsFileName);
  if (facts.fileExists(perUser)) return perUser;
  // Without the executable's folder there is no portable place to fall back to.
  std::string exeFolder = platform::FolderOf(facts.executablePath);
  if (exeFolder.empty()) return perUser;
  std::string portable = platform::JoinPath(exeFolder, kSettingsFileName);
  if (facts.fileExists(portable)) return portable;
  if (StartsWithPrefix(portable, facts.systemPrefixes)) return perUser;
  return portable;
}

bool WriteSettingsAtExit(const std::string& settingsPath,
                         const std::function<bool(const std::string&)>& write) {
  std::string folder = platform::FolderOf(settingsPath);
  if (!folder.empty() && !platform::FolderExists(folder) && !platform::CreateFolder(folder)) {
    return false;
  }
  return write(settingsPath);
}

}  // namespace kelpdex
