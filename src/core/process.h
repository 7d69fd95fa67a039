// What runs between the entry point and the exit code: the command line, the settings file, the
// regional settings, the automation server, the frame and its loop, and the writing of the
// settings at exit. The frame and the settings format live elsewhere, behind ProcessHost.
#pragma once

#include <memory>
#include <string>
#include <string_view>

#include "core/session_settings.h"
#include "core/settings_path.h"
#include "platform/locale_provider.h"

namespace kelpdex {

// The main window of the desktop application.
class Frame {
 public:
  virtual ~Frame() = default;
  // Creates the window at the saved rectangle; false when it cannot be made.
  virtual bool Create(const SessionSettings& settings) = 0;
  virtual void OpenFromCommandLine(const std::string& path) = 0;
  virtual void Show(int showCommand) = 0;
  // Runs the event loop and returns the exit code it ended with.
  virtual int RunLoop() = 0;
};

// The services the process needs from the rest of the program and from the OS. The defaults go
// to the OS; tests override what they need.
class ProcessHost {
 public:
  virtual ~ProcessHost() = default;
  virtual bool LoadSettings(const std::string& path, SessionSettings& settings, bool startUp) = 0;
  virtual bool SaveSettings(const std::string& path, const SessionSettings& settings) = 0;
  // The frame, or nullptr when the program has none to offer.
  virtual std::unique_ptr<Frame> CreateFrame() = 0;
  virtual void LoadMainImages() {}
  virtual void DestroyMainImages() {}

  virtual platform::LocaleProvider& Locales();
  virtual SettingsPathFacts PathFacts();
  virtual bool RegisterShell();
  virtual bool UnregisterShell();
  // The automation server's idle time-out and the pause after revoking it, in milliseconds.
  virtual int ServerTimeOutMs() { return 5000; }
  virtual int ServerPauseMs() { return 1000; }
};

// Exit codes of the registration switches.
constexpr int kExitOk = 0;
constexpr int kExitRegistrationFailed = 1;

// The whole life of the desktop process. `commandLine` excludes the program name.
int RunProcess(std::string_view commandLine, int showCommand, ProcessHost& host,
               SessionSettings& settings);

// Creates the frame, opens a file named on the line, shows the frame and runs its loop. A frame
// that cannot be created ends the run with exit code 0.
int RunApplication(std::string_view commandLine, int showCommand, ProcessHost& host,
                   const SessionSettings& settings);

// A frame saved maximised or minimised comes back that way, unless the caller asked for a
// particular show state.
int ChooseShowCommand(int savedShow, int requestedShow);

}  // namespace kelpdex
