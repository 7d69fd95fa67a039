// Cells as the grid shows them, and typed text turned into a cell, through the column's number
// format under the regional settings in force.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

#include "core/locale_settings.h"
#include "format/format_number.h"
#include "format/format_string.h"
#include "format/number_style.h"
#include "store/cell_record.h"

namespace kelpdex {

// Shows the cells of one column: the format is built and compiled once, so a whole column can be
// drawn or exported at the speed of the digit writer.
class CellFormatter {
 public:
  explicit CellFormatter(const NumberStyle& style, const LocaleSettings& settings = currentLocale);

  // Writes the display text into `out` (kDisplayTextMax bytes) and returns its length. A formula
  // shows its cached value, an error cell its literal, a formula never computed nothing.
  size_t Display(const CellRecord* cell, char* out, FormatColour* colour = nullptr) const;
  size_t DisplayNumber(double x, char* out, FormatColour* colour = nullptr) const;
  size_t DisplayText(std::string_view text, char* out) const;

 private:
  uint8_t kind_;
  bool compiled_ = false;
  LocaleSettings settings_;
  std::unique_ptr<CompiledFormat> format_;
};

size_t CellDisplayText(const CellRecord* cell, const NumberStyle& style, char* out);
std::string CellDisplayText(const CellRecord* cell, const NumberStyle& style);

enum class TypedCell {
  kUnchanged,  // a number out of range: the cell stays as it was
  kNumber,
  kText,
  kError,    // one of the error literals typed: a number cell carrying that error
  kTooLong,  // more text than a cell holds
};

// The longest record TextToCell writes, and so the buffer it needs.
constexpr uint32_t kTypedCellMax = 8182;

struct TypedResult {
  TypedCell kind;
  uint32_t size;  // bytes written to the cell buffer; 0 for kUnchanged and kTooLong
};

// Typed text into a cell record at (row, column): an error literal, a number by the column's
// format kind, a date or time kept as a generic string, a number in any notation, else the text
// as typed. `style` is a copy of the column's; where a number was typed in a notation of its own
// in a column of another kind ("$5", "12%"), it comes back as the style that shows it, and is
// otherwise left as it was.
TypedResult TextToCell(std::string_view text, NumberStyle& style, uint8_t* cell, uint32_t row,
                       uint16_t column, const LocaleSettings& settings = currentLocale);

}  // namespace kelpdex
