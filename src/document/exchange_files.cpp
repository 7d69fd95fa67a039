#include "document/exchange_files.h"

#include "core/reporting.h"
#include "exchange/text_exchange.h"

namespace kelpdex {

namespace {

bool IsXbaseKind(DocumentKind kind) {
  return kind >= DocumentKind::kDbase3 && kind <= DocumentKind::kClipper;
}

}  // namespace

bool ExchangeFiles::Read(DocumentKind openKind, const std::string& path, Workbook& book,
                         bool reuseOptions) {
  errorLine_ = 0;
  kindRead_ = DocumentKind::kNative;
  if (openKind == DocumentKind::kText) {
    TextFileOptions options = book.textOptions;
    if (!reuseOptions) {
      // A cancelled dialog fails with no code: the lifecycle shows nothing.
      options = importTextOptions;
      if (!dialogs_->TextImport(path, options)) return false;
      importTextOptions = options;
    }
    if (!ImportText(book, path, options, &lastTextImport)) return false;
    book.textOptions = options;
    return true;
  }
  if (IsXbaseKind(openKind)) {
    XbaseImportOptions options = xbaseImport;
    if (!reuseOptions) {
      options.dialect = static_cast<XbaseDialect>(openKind);
      if (!dialogs_->XbaseImport(path, options)) return false;
      xbaseImport = options;
    }
    XbaseDialect read = options.dialect;
    if (!ImportXbase(book, path, options, &read)) return false;
    kindRead_ = static_cast<DocumentKind>(read);
    return true;
  }
  if (openKind == DocumentKind::kExcelXml) {
    ExcelXmlMode mode = reuseOptions ? excelModeRead_ : excelMode;
    excelModeRead_ = mode;
    if (ImportExcelXml(book, path, mode, &errorLine_)) return true;
    if (mode != ExcelXmlMode::kDatabase || book.errorCode != err::kInvalidExcelDatabase ||
        !dialogs_->ExcelXmlAsTables(path)) {
      return false;
    }
    errorLine_ = 0;
    book.errorCode = err::kNone;
    if (!ImportExcelXml(book, path, ExcelXmlMode::kWorksheetsAsTables, &errorLine_)) return false;
    excelModeRead_ = ExcelXmlMode::kWorksheetsAsTables;
    return true;
  }
  if (openKind == DocumentKind::kSqlite) {
    // The session locks the whole file for an open unless another program holds it, which
    // leaves the document read-only; only then must SQLite's own locks see that program.
    if (ImportSqlite(book, path, sqliteTable, lastSqliteProblem, !book.readOnly)) return true;
    // The message names the table and column, which a code alone cannot; a cancel shows nothing.
    if (lastSqliteProblem.any()) ShowMessage(lastSqliteProblem.Text());
    book.errorCode = err::kNone;
    return false;
  }
  book.errorCode = err::kFileOpenRead;  // no reader for this kind is linked in
  return false;
}

bool ExchangeFiles::Write(DocumentKind openKind, const std::string& path, const Workbook& book) {
  ErrorCode error = err::kNone;
  bool ok = false;
  if (openKind == DocumentKind::kText) {
    TextFileOptions options = book.textOptions;
    if (!dialogs_->TextExport(path, options)) return false;
    ok = ExportText(book, path, options, error);
    // The document keeps what it was written with, for the next save.
    if (ok) const_cast<Workbook&>(book).textOptions = options;
  } else if (IsXbaseKind(openKind)) {
    XbaseExportOptions options = xbaseExport;
    options.dialect = static_cast<XbaseDialect>(openKind);
    if (options.fields.empty()) {
      XbaseHeader header;
      if (!BuildXbaseHeader(book, header, options.dialect, &options.fields, error)) {
        const_cast<Workbook&>(book).errorCode = error;
        return false;
      }
    }
    if (!dialogs_->XbaseExport(path, options)) return false;
    ok = ExportXbase(book, path, options, error);
  } else if (openKind == DocumentKind::kExcelXml) {
    ok = ExportExcelXml(book, path, error);
  } else if (openKind == DocumentKind::kSqlite) {
    if (ExportSqlite(book, path, sqliteTable, lastSqliteProblem)) return true;
    if (lastSqliteProblem.any()) ShowMessage(lastSqliteProblem.Text());
    return false;
  } else {
    error = err::kFileOpenWrite;  // no writer for this kind is linked in
  }
  // The lifecycle reads the outcome from the book, as it does for its own writers.
  if (!ok) const_cast<Workbook&>(book).errorCode = error;
  return ok;
}

}  // namespace kelpdex
