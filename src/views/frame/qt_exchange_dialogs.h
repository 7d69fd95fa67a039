// The option dialogs of the foreign files on the desktop: Open and Save Text File, xBase Field
// Definition before an import and an export, and the question for a spreadsheet without
// catalogues.
#pragma once

#include <functional>

#include "document/exchange_files.h"

class QDialog;
class QWidget;

namespace kelpdex::views {

class QtExchangeDialogs : public ExchangeDialogs {
 public:
  explicit QtExchangeDialogs(QWidget* parent) : parent_(parent) {}

  bool TextImport(const std::string& path, TextFileOptions& options) override;
  bool TextExport(const std::string& path, TextFileOptions& options) override;
  bool XbaseImport(const std::string& path, XbaseImportOptions& options) override;
  bool XbaseExport(const std::string& path, XbaseExportOptions& options) override;
  bool ExcelXmlAsTables(const std::string& path) override;

  // Tests answer in place of the user: each dialog is shown and handed to the script, whose
  // answer stands for OK or Cancel.
  std::function<bool(QDialog& dialog)> script;

 private:
  bool Run(QDialog& dialog);

  QWidget* parent_;
};

}  // namespace kelpdex::views
