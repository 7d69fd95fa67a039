#include "document/side_value_text.h"

#include "format/format_number.h"
#include "persist/document_file.h"
#include "persist/side_values.h"
#include "text/rtf_text.h"

namespace kelpdex {

bool SideValueText(const Workbook& book, Worksheet& data, uint32_t row, uint16_t column,
                   FieldType type, std::string& shown, ErrorCode& error) {
  const std::string side = SideFilePath(book.fileName);
  bool present = false;
  shown.clear();
  if (type == FieldType::kLongText) {
    std::string text;
    if (!ReadLongTextValue(data, side, row, column, text, present, error)) return false;
    shown = text::LongTextPreview(text, kDisplayTextMax - 1);
    return true;
  }
  BinaryObjectList list;
  if (!ReadObjectsValue(data, side, row, column, list, present, error)) return false;
  for (const BinaryObjectItem* item = list.first(); item != nullptr; item = item->next) {
    if (item != list.first()) shown += "; ";
    shown += item->name;
  }
  return true;
}

}  // namespace kelpdex
