#include "document/settings_host.h"

#include "core/reporting.h"
#include "persist/profile.h"

namespace kelpdex {

bool LoadProfileFile(const std::string& path, SessionSettings& settings, UserFormatList& formats,
                     bool startUp) {
  // Read into copies, so that a profile broken half-way leaves the options as they were.
  SessionSettings read = settings;
  UserFormatList readFormats = formats;
  ErrorCode error = err::kNone;
  int line = 0;
  if (!LoadProfile(path, read, readFormats, error, &line)) {
    if (!startUp) {
      if (IsXmlLineError(error)) {
        ShowErrorAtLine(error, line);
      } else {
        ShowError(error);
      }
    }
    return false;
  }
  read.settingsPath = settings.settingsPath;
  settings = std::move(read);
  formats = std::move(readFormats);
  return true;
}

bool SaveProfileFile(const std::string& path, const SessionSettings& settings,
                     const UserFormatList& formats, bool showFailure) {
  ErrorCode error = err::kNone;
  if (SaveProfile(path, settings, formats, error)) return true;
  if (showFailure) ShowError(error != err::kNone ? error : err::kFileWrite);
  return false;
}

bool ProfileProcessHost::LoadSettings(const std::string& path, SessionSettings& settings,
                                      bool startUp) {
  return LoadProfileFile(path, settings, UserNumberFormats(), startUp);
}

bool ProfileProcessHost::SaveSettings(const std::string& path, const SessionSettings& settings) {
  return SaveProfileFile(path, settings, UserNumberFormats(), false);
}

}  // namespace kelpdex
