// kelpdex: the desktop application. Everything but the Qt application object lives in views/.
#include <QApplication>
#include <QIcon>
#include <string>

#include "core/process.h"
#include "core/session_settings.h"
#include "document/external_documents.h"
#include "store/workbook.h"
#include "views/frame/frame_process.h"

int main(int argc, char** argv) {
  QApplication app(argc, argv);
  QApplication::setApplicationName("Kelpdex");
  QApplication::setWindowIcon(QIcon::fromTheme("kelpdex"));
  // The documented command line is the words after the program's name, joined as one line.
  std::string line;
  for (int i = 1; i < argc; ++i) {
    if (i > 1) line += ' ';
    line += argv[i];
  }
  kelpdex::InstallExternalDocuments();
  kelpdex::Workbook book;
  kelpdex::views::DesktopHost host(book, QCoreApplication::applicationFilePath().toStdString());
  return kelpdex::RunProcess(line, kelpdex::show::kDefault, host, kelpdex::Session());
}
