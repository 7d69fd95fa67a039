// Where the settings file lives: per user, or beside a portable executable.
#pragma once

#include <functional>
#include <string>
#include <vector>

namespace kelpdex {

struct SettingsPathFacts {
  std::string userSettingsFolder;           // the per-user folder, without "settings.xml"
  std::string executablePath;               // may be empty when the OS cannot tell
  std::vector<std::string> systemPrefixes;  // where installed programs live
  std::function<bool(const std::string&)> fileExists;
};

// The per-user file if it exists; else the file beside the executable if it exists; else the
// per-user file for an executable installed under a system prefix, and the portable file for one
// that is not (a program run from a removable disk keeps its settings with it).
std::string DecideSettingsPath(const SettingsPathFacts& facts);

// Writes the settings at exit: the folder is created when missing, and when it cannot be, or the
// writer fails, nothing is reported. Returns whether `write` ran and succeeded.
bool WriteSettingsAtExit(const std::string& settingsPath,
                         const std::function<bool(const std::string&)>& write);

}  // namespace kelpdex
