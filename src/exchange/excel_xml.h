// Excel 2003 XML (SpreadsheetML): the whole workbook as worksheets, each catalogue written as
// "sys_<table>" ahead of the tables, read back into the same tree. The reader shares the native
// XML scanner; the writer shares its tag writer and escaping.
#pragma once

#include <string>

#include "core/error_code.h"
#include "persist/file_stream.h"
#include "store/workbook.h"

namespace kelpdex {

// Writes every catalogue and its table into an open stream. False with the stream's error.
bool WriteExcelXml(FileStream& stream, const Workbook& book);

// Writes the file at `path`, replaced only once it is complete: a failure or a cancel leaves what
// was there. False with `error` set (none for a cancel).
bool ExportExcelXml(const Workbook& book, const std::string& path, ErrorCode& error);

enum class ExcelXmlMode : uint8_t {
  // The documented import: "sys_" sheets are the catalogues of their partners, and a file without
  // that structure fails with 45.
  kDatabase,
  // Any spreadsheet: every worksheet becomes a table whose first row names the fields.
  kWorksheetsAsTables,
};

// Reads a SpreadsheetML stream into `book`, which is replaced only when the read succeeds. False
// with the book's errorCode set, and `line` (when given) the line of an XML failure, else 0.
bool ReadExcelXml(FileStream& stream, Workbook& book, ExcelXmlMode mode, int* line = nullptr);

// The same from the file at `path`; a cancel through the progress sink fails with no code.
bool ImportExcelXml(Workbook& book, const std::string& path, ExcelXmlMode mode,
                    int* line = nullptr);

// What an XML file's root element says it is: SpreadsheetML's Workbook (by its namespace, or the
// processing instruction spreadsheets put in front of it), the native document's Workbook, or
// neither (not XML, unreadable, another root).
enum class XmlRoot : uint8_t { kOther, kNative, kSpreadsheet };
XmlRoot SniffXmlRoot(const std::string& path);

}  // namespace kelpdex
