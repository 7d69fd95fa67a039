#include "core/process.h"

#include <chrono>
#include <thread>

#include "core/command_line.h"
#include "core/locale_settings.h"
#include "core/server_module.h"
#include "platform/os.h"
#include "platform/shell_registration.h"

namespace kelpdex {

platform::LocaleProvider& ProcessHost::Locales() {
  return platform::SystemLocaleProvider();
}

SettingsPathFacts ProcessHost::PathFacts() {
  SettingsPathFacts facts;
  facts.userSettingsFolder = platform::UserSettingsFolder();
  facts.executablePath = platform::ExecutablePath();
  facts.systemPrefixes = platform::SystemPrefixes();
  facts.fileExists = [](const std::string& path) { return platform::FileExists(path); };
  return facts;
}

bool ProcessHost::RegisterShell() {
  return platform::RegisterShellIntegration(platform::ExecutablePath());
}

bool ProcessHost::UnregisterShell() {
  return platform::UnregisterShellIntegration();
}

int ChooseShowCommand(int savedShow, int requestedShow) {
  bool savedSpecial = savedShow == show::kMaximized || savedShow == show::kMinimize;
  bool requestedPlain = requestedShow == show::kDefault || requestedShow == show::kNormal ||
                        requestedShow == show::kShow;
  return savedSpecial && requestedPlain ? savedShow : requestedShow;
}

int RunApplication(std::string_view commandLine, int showCommand, ProcessHost& host,
                   const SessionSettings& settings) {
  std::unique_ptr<Frame> frame = host.CreateFrame();
  if (frame == nullptr || !frame->Create(settings)) return 0;
  std::string_view path = PathFromCommandLine(commandLine);
  if (!path.empty()) frame->OpenFromCommandLine(std::string(path));
  frame->Show(ChooseShowCommand(settings.windowShow, showCommand));
  return frame->RunLoop();
}

int RunProcess(std::string_view commandLine, int showCommand, ProcessHost& host,
               SessionSettings& settings) {
  // Registration touches neither the settings file nor the frame.
  CommandSwitch sw = ScanCommandLine(commandLine);
  switch (sw) {
    case CommandSwitch::kRegServer:
      return host.RegisterShell() ? kExitOk : kExitRegistrationFailed;
    case CommandSwitch::kUnregServer:
    case CommandSwitch::kUninstall:
      // Removing the program's own folder is left to the package manager on POSIX.
      return host.UnregisterShell() ? kExitOk : kExitRegistrationFailed;
    default:
      break;
  }
  bool automation = sw == CommandSwitch::kAutomation || sw == CommandSwitch::kEmbedding;

  SettingsPathFacts facts = host.PathFacts();
  settings.settingsPath = DecideSettingsPath(facts);
  if (facts.fileExists(settings.settingsPath)) {
    host.LoadSettings(settings.settingsPath, settings, true);
  }
  currentLocale = BuildLocaleSettings(settings.localeChoice, host.Locales());
  host.LoadMainImages();

  ServerModule server(host.ServerTimeOutMs(), host.ServerPauseMs());
  server.StartMonitor();
  int exitCode;
  if (automation) {
    // No object of ours is ever handed out, so the server is idle from the start and the
    // process ends after one quiet time-out.
    server.SetShutdownEvent();
    exitCode = server.RunUntilQuit();
  } else {
    exitCode = RunApplication(commandLine, showCommand, host, settings);
  }

  server.Terminate();
  std::this_thread::sleep_for(std::chrono::milliseconds(server.pauseMs()));
  host.DestroyMainImages();
  WriteSettingsAtExit(settings.settingsPath,
                      [&](const std::string& path) { return host.SaveSettings(path, settings); });
  return exitCode;
}

}  // namespace kelpdex
