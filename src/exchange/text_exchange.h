// Delimited and fixed-width text files: a file read as a new database of one table, and a table
// written as a file.
#pragma once

#include <string>

#include "core/error_code.h"
#include "exchange/text_options.h"
#include "store/workbook.h"

namespace kelpdex {

// Reads the file at `path` into `book`, which must hold no document, as one table named after the
// file. Every field is "field%d" (or its name from the first line), a Number field where the
// column held numbers alone, else Text / Link. False with the book's errorCode set and the book
// empty again; a cancel through the progress sink fails with no code.
bool ImportText(Workbook& book, const std::string& path, const TextFileOptions& options,
                TextImportReport* report = nullptr);

// Writes the cells of the current table, in row order with an empty line for each empty row, and
// CR LF after each row. The file is replaced only when it is complete; a failure or a cancel
// leaves what was there. False with `error` set (none for a cancel).
bool ExportText(const Workbook& book, const std::string& path, const TextFileOptions& options,
                ErrorCode& error);

}  // namespace kelpdex
