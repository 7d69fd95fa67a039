#include "views/frame/qt_exchange_dialogs.h"

#include "core/prompter.h"
#include "core/reporting.h"
#include "exchange/xbase_field_lines.h"
#include "platform/os.h"
#include "views/dialogs/text_file_dialog.h"
#include "views/dialogs/xbase_field_dialog.h"

namespace kelpdex::views {

bool QtExchangeDialogs::Run(QDialog& dialog) {
  if (!script) return dialog.exec() == QDialog::Accepted;
  dialog.show();
  bool accepted = script(dialog);
  dialog.hide();
  return accepted;
}

bool QtExchangeDialogs::TextImport(const std::string& /*path*/, TextFileOptions& options) {
  TextFileDialog dialog(TextFileDialog::Direction::kImport, options, parent_);
  return Run(dialog);
}

bool QtExchangeDialogs::TextExport(const std::string& /*path*/, TextFileOptions& options) {
  TextFileDialog dialog(TextFileDialog::Direction::kExport, options, parent_);
  return Run(dialog);
}

bool QtExchangeDialogs::XbaseImport(const std::string& path, XbaseImportOptions& options) {
  XbaseHeader header;
  ErrorCode error = err::kNone;
  // A file whose header cannot be read goes on to the import, which names the fault.
  if (!ReadXbaseFileHeader(path, header, error)) return true;
  XbaseFieldDialog dialog(XbaseSummaryLine(header), header.fields, options.oem, parent_);
  if (!Run(dialog)) return false;
  options.oem = dialog.oem();
  return true;
}

bool QtExchangeDialogs::XbaseExport(const std::string& /*path*/, XbaseExportOptions& options) {
  XbaseFieldDialog dialog(options.fields, options.oem, parent_);
  if (!Run(dialog)) return false;
  options.oem = dialog.oem();
  return true;
}

bool QtExchangeDialogs::ExcelXmlAsTables(const std::string& path) {
  std::string question = "The file " + platform::FileNameOf(path) +
                         " holds worksheets but no Kelpdex database.\n"
                         "Open each worksheet as a table, its first row naming the fields?";
  return AskText(question, mb::kYesNo | mb::kIconQuestion) == answer::kYes;
}

}  // namespace kelpdex::views
