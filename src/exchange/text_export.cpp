#include <cstring>
#include <string>

#include "core/progress.h"
#include "exchange/text_exchange.h"
#include "format/cell_text.h"
#include "persist/document_file.h"
#include "store/catalogue.h"
#include "store/field_row.h"
#include "text/oem.h"
#include "text/utf8.h"

namespace kelpdex {

namespace {

class TextWriter {
 public:
  TextWriter(FileStream& out, const TextFileOptions& options)
      : out_(out), options_(options), formatter_(NumberStyle()) {
    while (widthCount_ < options.widths.size() && options.widths[widthCount_] != 0) ++widthCount_;
    line_.reserve(1 << 16);
    // A line break inside a cell is quoted too: a reader would otherwise take it for a new record.
    for (char c : {options.separator, options.quote, '\r', '\n'})
      quotes_[static_cast<uint8_t>(c)] = true;
  }

  // One cell at `column` of the line being made; columns rise within a line.
  void Cell(uint16_t column, std::string_view text);
  void EndLine() {
    line_ += "\r\n";
    out_.Write(line_.data(), line_.size());
    line_.clear();
    column_ = 0;
  }
  void CellOf(const CellRecord* cell) {
    if (cell::IsText(cell)) {
      Cell(cell::Column(cell), cell::Text(cell));
    } else {
      size_t n = formatter_.Display(cell, scratch_);
      Cell(cell::Column(cell), std::string_view(scratch_, n));
    }
  }

 private:
  uint16_t Width(uint16_t column) const {
    return column < widthCount_ ? options_.widths[column] : 0;
  }

  FileStream& out_;
  const TextFileOptions& options_;
  CellFormatter formatter_;
  size_t widthCount_ = 0;
  std::string line_;
  std::string converted_;
  uint16_t column_ = 0;    // the column the next cell would take without a gap
  bool quotes_[256] = {};  // the bytes that put a cell in quotes
  char scratch_[kDisplayTextMax];
};

void TextWriter::Cell(uint16_t column, std::string_view text) {
  if (options_.fixedWidths) {
    for (; column_ < column; ++column_) line_.append(Width(column_), ' ');
  } else {
    if (column_ == 0 && column > 0) line_.append(column, options_.separator);
    if (column_ > 0 && column >= column_) line_.append(column - column_ + 1, options_.separator);
  }
  column_ = static_cast<uint16_t>(column + 1);
  switch (options_.encoding) {
    case TextEncoding::kUtf8: {
      if (!text::IsAscii(text)) {
        converted_ = text::Cp1252ToUtf8(text);
        text = converted_;
      }
      break;
    }
    case TextEncoding::kOem:
      converted_.assign(text);
      text::CharToOemInPlace(converted_);
      text = converted_;
      break;
    case TextEncoding::kAnsi:
      break;
  }
  if (options_.fixedWidths) {
    uint16_t width = Width(column);
    if (width == 0) {
      line_ += text;
    } else if (text.size() >= width) {
      line_ += text.substr(0, width);
    } else {
      line_ += text;
      line_.append(width - text.size(), ' ');
    }
    return;
  }
  const char quote = options_.quote;
  bool quoted = false;
  for (char c : text) {
    if (quotes_[static_cast<uint8_t>(c)]) {
      quoted = true;
      break;
    }
  }
  if (!quoted) {
    line_ += text;
    return;
  }
  line_ += quote;
  for (char c : text) {
    if (c == quote) line_ += quote;
    line_ += c;
  }
  line_ += quote;
}

}  // namespace

bool ExportText(const Workbook& book, const std::string& path, const TextFileOptions& options,
                ErrorCode& error) {
  Worksheet* data = book.currentSheet;
  Worksheet* catalogue = data != nullptr ? book.FindCatalogue(data->Name()) : nullptr;
  if (data == nullptr || catalogue == nullptr) {
    error = err::kInvalidDatabase;
    return false;
  }
  SafeFileWriter file;
  if (!file.Open(path, false, error)) return false;
  TextWriter writer(file.stream(), options);
  if (options.headerLine) {
    TableSpec table{const_cast<Workbook*>(&book), catalogue, data};
    uint16_t count = FieldCount(table);
    for (uint16_t i = 0; i < count; ++i) {
      writer.Cell(i, CatalogueText(*catalogue, i + 1u, catalogue::kFieldColumn));
    }
    writer.EndLine();
  }
  CellCursor cursor;
  uint32_t row = 0;
  bool lineOpen = false;
  uint32_t cells = 0;
  while (const CellRecord* cell = data->cells.NextCell(cursor)) {
    uint32_t at = cell::Row(cell);
    if (lineOpen && at != row) {
      writer.EndLine();
      ++row;
      lineOpen = false;
    }
    // An empty line for each row without cells.
    for (; row < at; ++row) writer.EndLine();
    writer.CellOf(cell);
    lineOpen = true;
    if ((++cells & 0xFFFF) == 0 && ProgressCancelled()) {
      error = err::kNone;
      return false;
    }
  }
  if (lineOpen) writer.EndLine();
  if (!file.stream().ok()) {
    error = file.stream().error();
    return false;
  }
  return file.Commit(error);
}

}  // namespace kelpdex
