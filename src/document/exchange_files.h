// The foreign files the lifecycle opens and saves: text, xBase, Excel 2003 XML and SQLite through
// src/exchange/. The options of the last xBase import stay here, so that a Reload reads the file
// as it was read before; a text file's options stay in the document.
#pragma once

#include <string>

#include "document/document_session.h"
#include "exchange/excel_xml.h"
#include "exchange/sqlite.h"
#include "exchange/text_options.h"
#include "exchange/xbase.h"

namespace kelpdex {

// The option dialogs of the foreign files. Each gets the options in force and may change them;
// false is Cancel. The defaults take the options as they are, for a program without dialogs.
class ExchangeDialogs {
 public:
  virtual ~ExchangeDialogs() = default;
  virtual bool TextImport(const std::string& /*path*/, TextFileOptions& /*options*/) {
    return true;
  }
  virtual bool TextExport(const std::string& /*path*/, TextFileOptions& /*options*/) {
    return true;
  }
  virtual bool XbaseImport(const std::string& /*path*/, XbaseImportOptions& /*options*/) {
    return true;
  }
  // `options.fields` holds the list BuildXbaseHeader made, for the field dialog to edit.
  virtual bool XbaseExport(const std::string& /*path*/, XbaseExportOptions& /*options*/) {
    return true;
  }
  // A SpreadsheetML file without catalogues failed to open as a database (45): true reads each
  // worksheet as a table instead. The default keeps the failure.
  virtual bool ExcelXmlAsTables(const std::string& /*path*/) { return false; }
};

class ExchangeFiles : public ForeignFiles {
 public:
  void SetDialogs(ExchangeDialogs* dialogs) { dialogs_ = dialogs; }

  bool Read(DocumentKind openKind, const std::string& path, Workbook& book,
            bool reuseOptions) override;
  bool Write(DocumentKind openKind, const std::string& path, const Workbook& book) override;
  int ErrorLine() const override { return errorLine_; }
  DocumentKind KindRead(DocumentKind asked) const override {
    return kindRead_ != DocumentKind::kNative ? kindRead_ : asked;
  }

  // What the text import dialog starts from: the user's last choice in this session. The
  // options a document was read or written with stay in the document.
  TextFileOptions importTextOptions;
  XbaseImportOptions xbaseImport;
  // Its dialect comes from the kind written; an empty field list is made from the table.
  XbaseExportOptions xbaseExport;
  // What the last text import dropped for want of room.
  TextImportReport lastTextImport;
  // How an Excel 2003 XML file is read: as a database with its catalogues, or each worksheet as
  // a table of its own.
  ExcelXmlMode excelMode = ExcelXmlMode::kDatabase;
  // The one table an SQLite file is read from or written with; empty for all of them.
  std::string sqliteTable;
  // Why the last SQLite read or write failed; its message has been shown.
  SqliteProblem lastSqliteProblem;

 private:
  ExchangeDialogs defaultDialogs_;
  ExchangeDialogs* dialogs_ = &defaultDialogs_;
  int errorLine_ = 0;
  DocumentKind kindRead_ = DocumentKind::kNative;  // native: the kind asked for stands
  // How the last Excel XML file was read after the question, so that a Reload reads it so again.
  ExcelXmlMode excelModeRead_ = ExcelXmlMode::kDatabase;
};

}  // namespace kelpdex
