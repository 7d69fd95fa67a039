// The settings file and profiles as the process and the Load Profile and Save Profile commands
// use them.
#pragma once

#include <string>

#include "core/process.h"
#include "core/session_settings.h"
#include "format/user_formats.h"

namespace kelpdex {

// Reads a profile over `settings` and `formats`. A failure changes neither; at start it is not
// shown (the defaults stand), by command it is.
bool LoadProfileFile(const std::string& path, SessionSettings& settings, UserFormatList& formats,
                     bool startUp);
// Writes a profile; by command a failure is shown, at exit it is not.
bool SaveProfileFile(const std::string& path, const SessionSettings& settings,
                     const UserFormatList& formats, bool showFailure);

// The process services that read the settings file at start and write it at exit, with the
// process's own number format list. Programs with a frame derive from it.
class ProfileProcessHost : public ProcessHost {
 public:
  bool LoadSettings(const std::string& path, SessionSettings& settings, bool startUp) override;
  bool SaveSettings(const std::string& path, const SessionSettings& settings) override;
  std::unique_ptr<Frame> CreateFrame() override { return nullptr; }
};

}  // namespace kelpdex
