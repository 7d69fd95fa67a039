// The native XML document: the whole workbook as one text, written and read in one forward pass.
#pragma once

#include <string>

#include "persist/file_stream.h"
#include "store/workbook.h"

namespace kelpdex {

// Writes the document into an open stream. False with the stream's error; for 94, a value too
// long for the form, `place` (when given) says where: the table, record and field of a table's
// cell ("Table: ...\nRecord: ...\nField: ..."), or the worksheet and cell of any other.
bool WriteXmlDocument(FileStream& stream, const Workbook& book, std::string* place = nullptr);

// Reads a whole XML document into `book`, which is replaced only when the read succeeds. False
// with the workbook's errorCode set, and `line` the line of the failure where the XML itself
// failed (0 otherwise).
bool ReadXmlDocument(FileStream& stream, Workbook& book, int* line = nullptr);

// The word tables of the format, shared by writer and reader.
namespace xml_words {
extern const char* const kLineStyles[10];
extern const char* const kPatterns[23];
extern const char* const kFamilies[6];
extern const char* const kWeights[4];
extern const char* const kCharSets[17];
}  // namespace xml_words

// Page settings fields this form carries beyond the offsets the binary record names.
namespace page_settings {
constexpr uint32_t kPrintRangeAt = 0;  // 0 all, 1 selection, 2 pages
constexpr uint32_t kScaleAt = 290;     // u16 percent, 0 fit to the sheet size
constexpr uint32_t kPagesPerSheetColumnsAt = 1140;
constexpr uint32_t kPagesPerSheetRowsAt = 1142;
constexpr uint32_t kHorizontalAlignmentAt = 1136;
constexpr uint32_t kVerticalAlignmentAt = 1137;
constexpr uint32_t kFontSize = 135;
}  // namespace page_settings

}  // namespace kelpdex
