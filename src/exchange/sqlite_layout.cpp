// The sheets' formats in the catalogue table: a "styles" entry for the workbook (its drop-down
// lists, fonts and styles) and per table a "layout" entry for the data sheet (row 0) and one for
// the catalogue sheet (row 1), each a BLOB in the native binary form, so that the binary format's
// own routines write and check them. Other programs see opaque bytes and may leave them.
#include <memory>

#include "exchange/sqlite_parts.h"
#include "persist/binary_format.h"

namespace kelpdex::sqlite {

bool WriteStyles(CatalogueWriter& writer, const Workbook& book) {
  std::string bytes;
  WriteBinaryStyles(book, bytes);
  return writer.Blob("", "styles", 0, bytes);
}

bool WriteLayouts(CatalogueWriter& writer, const std::string& tableUtf8, const TableSpec& table) {
  std::string bytes;
  const Worksheet* sheets[2] = {table.data, table.catalogue};
  for (int k = 0; k < 2; ++k) {
    bytes.clear();
    WriteBinarySheetLayout(*sheets[k], bytes);
    if (!writer.Blob(tableUtf8, "layout", k, bytes)) return false;
  }
  return true;
}

bool LayoutReader::Begin(std::string_view styles, Workbook& book, SqliteProblem& problem) {
  problem.code = err::kInvalidBinaryFormat;
  problem.column = kSqliteCatalogueTable;
  // The file's table is large and needed only while its records are added to the workbook's.
  auto file = std::make_unique<StyleTable>();
  DropDownLists lists;
  if (!ReadBinaryStyles(styles, lists, *file)) return false;
  ErrorCode error = err::kNone;
  std::vector<uint8_t> fonts(file->fontCount());
  for (uint8_t f = 0; f < file->fontCount(); ++f) {
    if (!book.styles.FindOrAddFont(file->Font(f), fonts[f], error)) {
      problem.code = error;
      return false;
    }
  }
  ids_.resize(file->styleCount());
  for (uint16_t s = 0; s < file->styleCount(); ++s) {
    StyleRecord record = file->Style(s);
    uint8_t& font = record.bytes[style::kFontIndexAt];
    font = font < fonts.size() ? fonts[font] : 0;
    if (!book.styles.FindOrAddStyle(record, ids_[s], error)) {
      problem.code = error;
      return false;
    }
  }
  // The lists keep their slots: the styles name them by number.
  book.dropDownLists = std::move(lists);
  began_ = true;
  problem = SqliteProblem();
  return true;
}

bool LayoutReader::Apply(const TableCatalogue& stored, const TableSpec& table,
                         SqliteProblem& problem) {
  Worksheet* sheets[2] = {table.data, table.catalogue};
  for (int k = 0; k < 2; ++k) {
    if (!stored.layouts[k]) continue;
    ErrorCode error = err::kInvalidBinaryFormat;
    // A layout without the styles it names is as damaged as one cut short.
    if (!began_ || !ReadBinarySheetLayout(*stored.layouts[k], *sheets[k],
                                          static_cast<uint16_t>(ids_.size()), error)) {
      problem.code = error;
      problem.table = stored.name;
      problem.column = kSqliteCatalogueTable;
      return false;
    }
    sheets[k]->formats.MapStyles(ids_.data(), static_cast<uint16_t>(ids_.size()));
  }
  return true;
}

}  // namespace kelpdex::sqlite
