// File Format, Locales, Options, profiles, shell registration and Help.
#include <QCoreApplication>
#include <QDesktopServices>
#include <QDir>
#include <QFileDialog>
#include <QMessageBox>
#include <QUrl>

#include "core/locale_settings.h"
#include "core/reporting.h"
#include "core/strings.h"
#include "document/settings_host.h"
#include "format/user_formats.h"
#include "platform/shell_registration.h"
#include "text/utf8.h"
#include "views/commands/command_dispatch.h"
#include "views/commands/command_table.h"
#include "views/dialogs/options_dialog.h"
#include "views/frame/main_frame.h"
#include "views/frame/qt_locale_provider.h"
#include "views/grid/grid_view.h"

namespace kelpdex::views {

namespace {

void OpenHelpTopic(const char* topic) {
  QString path =
      QDir(QCoreApplication::applicationDirPath()).filePath(QString("../docs/help/") + topic);
  QDesktopServices::openUrl(QUrl::fromLocalFile(path));
}

void ApplyLocale(MainFrame& frame, int choice) {
  static QtLocaleProvider provider;
  ApplyLocaleChoice(choice, provider);
  frame.grid().InvalidateLooks();
  if (frame.HasDocument()) frame.session().UpdateDocumentStatus();
}

// A loaded profile takes effect at once: the undo depth, the regional settings, the grid font
// (with the number formats drawn again), the window's place and opacity, and the recent files.
void ApplyLoadedProfile(MainFrame& frame) {
  SessionSettings& settings = frame.settings();
  frame.book().undoLevel = settings.undoLevel;
  if (settings.localeChoice != currentLocale.localeIndex) {
    ApplyLocale(frame, settings.localeChoice);
  }
  frame.ApplyGridFont();
  frame.setWindowOpacity(settings.opacity / 100.0);
  if (settings.windowShow == show::kMaximized) {
    frame.showMaximized();
  } else {
    // A minimised window is not what a user who just chose a file expects: it comes back normal.
    frame.showNormal();
    frame.RestoreWindowState();
  }
  frame.RecentFilesChanged();
  if (frame.HasDocument()) frame.grid().Refresh();
}

}  // namespace

bool LoadProfileIntoFrame(MainFrame& frame, const std::string& path) {
  // A failure is shown by the load and leaves every setting as it was.
  if (!LoadProfileFile(path, frame.settings(), UserNumberFormats(), false)) return false;
  ApplyLoadedProfile(frame);
  return true;
}

void RunSettingsCommand(MainFrame& frame, uint16_t id) {
  SessionSettings& settings = frame.settings();
  if (id >= cmd::kFormatXml && id <= cmd::kFormatDefault) {
    frame.session().SetFileFormat(id == cmd::kFormatDefault
                                      ? NativeFormat::kDefault
                                      : static_cast<NativeFormat>(id - cmd::kFormatXml + 1));
    frame.session().UpdateDocumentStatus();
    return;
  }
  switch (id) {
    case cmd::kLocaleGeneric:
    case cmd::kLocaleSystem:
    case cmd::kLocaleUser: {
      int choice = id == cmd::kLocaleGeneric ? 0 : id == cmd::kLocaleSystem ? 1 : 2;
      if (currentLocale.localeIndex == choice) return;
      settings.localeChoice = static_cast<uint8_t>(choice);
      ApplyLocale(frame, choice);
      return;
    }
    case cmd::kOptions: {
      OptionsDialog dialog(settings, &frame);
      if (dialog.exec() != QDialog::Accepted) return;
      frame.book().undoLevel = settings.undoLevel;
      frame.setWindowOpacity(settings.opacity / 100.0);
      frame.ApplyGridFont();
      return;
    }
    case 33000: {
      QString path = QFileDialog::getOpenFileName(&frame, "Load Profile", {}, "Profile (*.xml)");
      if (path.isEmpty()) return;
      LoadProfileIntoFrame(frame, text::Utf8ToCp1252(path.toStdString()));
      return;
    }
    case 33001: {
      QString path = QFileDialog::getSaveFileName(&frame, "Save Profile As", {}, "Profile (*.xml)");
      if (path.isEmpty()) return;
      // The profile carries the window as it stands now, not as it stood at start.
      frame.StoreWindowState();
      SaveProfileFile(text::Utf8ToCp1252(path.toStdString()), settings, UserNumberFormats(), true);
      return;
    }
    case 32981:
    case 32982: {
      bool ok = id == 32981 ? platform::RegisterShellIntegration(
                                  QCoreApplication::applicationFilePath().toStdString())
                            : platform::UnregisterShellIntegration();
      if (!ok) AskText(FormatString(177), mb::kOk | mb::kIconExclamation);
      return;
    }
    case 57666:
      return OpenHelpTopic("intro.htm");
    case 32985:
      return OpenHelpTopic("support.htm");
    case 33015:
      return OpenHelpTopic("intro.htm");
    case 57664:
      QMessageBox::about(&frame, "About Kelpdex",
                         QString("Kelpdex %1\nA desktop database whose tables are worksheets.")
                             .arg(KELPDEX_VERSION_STRING));
      return;
    default:
      return;
  }
}

}  // namespace kelpdex::views
