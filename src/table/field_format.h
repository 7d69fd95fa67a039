// The format sheet's side of a field's style: the style a field shows, the attribute groups an
// edited copy changes, a sample of a number format, and applying the edit to selected fields.
#pragma once

#include <cstdint>
#include <string>

#include "format/number_style.h"
#include "store/style_table.h"
#include "store/undo_recorder.h"
#include "store/workbook.h"

namespace kelpdex {

// A field's style as the sheet edits it: the style record and the font it refers to.
struct FieldFormat {
  StyleRecord style{};
  FontRecord font{};
};

// The style of field `field` of the current table (the default style without a table).
FieldFormat ReadFieldFormat(Workbook& workbook, uint16_t field);

// The attribute kinds (style::Attribute) in which `edited` differs from `original`, one bit per
// kind at 1 << kind. Only changed groups are applied, so that fields of different styles keep
// what the sheet did not touch.
uint32_t ChangedAttributes(const FieldFormat& original, const FieldFormat& edited);

// Fields firstColumn..lastColumn of the context take the changed groups, their style runs too,
// after one undo step. False with the workbook's code (26 when the style table is full).
bool ApplyFieldFormat(Workbook& workbook, const FieldFormat& original, const FieldFormat& edited,
                      const UndoContext& selection);

// What the Style page shows as its sample: the value of the current cell if it has one, else a
// fixed number (or, for the date and time kinds, a fixed moment), through the edited format.
// A user-defined string that is no format gives "".
std::string FormatSample(const NumberStyle& numberStyle, const CellRecord* current,
                         const LocaleSettings& settings = currentLocale);

// The longest name a drop-down list keeps, and the longest item.
constexpr size_t kDropDownNameMax = 29;
constexpr size_t kDropDownItemMax = 1024;

}  // namespace kelpdex
