// Any bytes as the styles or one sheet's layout that an SQLite file carries in the native form:
// the readers must accept or refuse them, never crash, leak or loop; what they accept must write
// out and read back. The first byte picks the reader and, for a layout, the style count.
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

#include "persist/binary_format.h"
#include "store/workbook.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  if (size == 0) return 0;
  const std::string_view bytes(reinterpret_cast<const char*>(data) + 1, size - 1);
  std::string again;
  if (data[0] == 0) {
    kelpdex::DropDownLists lists;
    auto styles = std::make_unique<kelpdex::StyleTable>();
    if (!kelpdex::ReadBinaryStyles(bytes, lists, *styles)) return 0;
    kelpdex::Workbook book;
    book.dropDownLists = lists;
    book.styles = *styles;
    kelpdex::WriteBinaryStyles(book, again);
    if (!kelpdex::ReadBinaryStyles(again, lists, *styles)) __builtin_trap();
    return 0;
  }
  kelpdex::Worksheet sheet("fuzz");
  kelpdex::ErrorCode error = kelpdex::err::kNone;
  if (!kelpdex::ReadBinarySheetLayout(bytes, sheet, data[0], error)) return 0;
  kelpdex::WriteBinarySheetLayout(sheet, again);
  kelpdex::Worksheet copy("copy");
  if (!kelpdex::ReadBinarySheetLayout(again, copy, data[0], error)) __builtin_trap();
  return 0;
}
