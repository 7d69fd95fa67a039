// The desktop process's host: the settings file, QLocale's regional data, the shell
// registration, and the Qt main frame with its event loop.
#pragma once

#include <memory>

#include "document/settings_host.h"
#include "store/workbook.h"
#include "views/frame/qt_locale_provider.h"

namespace kelpdex::views {

class DesktopHost : public ProfileProcessHost {
 public:
  DesktopHost(Workbook& book, std::string executablePath);
  std::unique_ptr<Frame> CreateFrame() override;
  platform::LocaleProvider& Locales() override { return locales_; }
  bool RegisterShell() override;
  bool UnregisterShell() override;
  // Nobody waits for the automation server's pause at exit in a desktop session.
  int ServerPauseMs() override { return 0; }

 private:
  Workbook& book_;
  std::string executable_;
  QtLocaleProvider locales_;
};

}  // namespace kelpdex::views
