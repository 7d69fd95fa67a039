#include "table/field_format.h"

#include <algorithm>
#include <cstring>
#include <memory>

#include "format/cell_text.h"
#include "format/generic_date.h"
#include "store/catalogue.h"
#include "store/column_style.h"
#include "table/table_state.h"

namespace kelpdex {

namespace {

// The groups the sheet's four pages edit, checked in this order.
constexpr int kSheetAttributes[] = {
    style::kNumberFormat, style::kWholeFont, style::kFontColour, style::kHorizontal,
    style::kVertical,     style::kIndent,    style::kWrap,       style::kFit,
    style::kRotation,     style::kDropDown,
};

bool SameBytes(const StyleRecord& a, const StyleRecord& b, uint32_t at, uint32_t size) {
  return std::memcmp(a.bytes + at, b.bytes + at, size) == 0;
}

bool Differs(const FieldFormat& a, const FieldFormat& b, int kind) {
  switch (kind) {
    case style::kNumberFormat:
      return !SameBytes(a.style, b.style, style::kNumberFormatAt, style::kFontSetAt);
    case style::kWholeFont:
      return std::memcmp(a.font.bytes, b.font.bytes, kFontRecordSize) != 0;
    case style::kFontColour:
      return !SameBytes(a.style, b.style, style::kFontColourSetAt, 1) ||
             !SameBytes(a.style, b.style, style::kFontColourAt, 4);
    case style::kHorizontal:
      return !SameBytes(a.style, b.style, style::kHorizontalAt, 1);
    case style::kVertical:
      return !SameBytes(a.style, b.style, style::kVerticalAt, 1);
    case style::kIndent:
      return !SameBytes(a.style, b.style, style::kIndentAt, 2);
    case style::kWrap:
      return !SameBytes(a.style, b.style, style::kWrapAt, 1);
    case style::kFit:
      return !SameBytes(a.style, b.style, style::kFitAt, 1);
    case style::kRotation:
      return !SameBytes(a.style, b.style, style::kRotationAt, 2);
    case style::kDropDown:
      return !SameBytes(a.style, b.style, style::kDropDownAt,
                        style::kProtectedAt - style::kDropDownAt);
    default:
      return false;
  }
}

bool Fail(Workbook& workbook, ErrorCode code) {
  if (workbook.errorCode == err::kNone) workbook.errorCode = code;
  return false;
}

bool IsDateKind(uint8_t kind) {
  return kind >= format_kind::kDate && kind <= format_kind::kDateTime;
}

}  // namespace

FieldFormat ReadFieldFormat(Workbook& workbook, uint16_t field) {
  FieldFormat result;
  TableSpec table;
  uint16_t styleId = 0;
  if (CurrentTable(workbook, table) && field < FieldCount(table)) {
    styleId = table.data->formats.ColumnStyle(field);
  }
  result.style = workbook.styles.Style(styleId);
  const uint8_t* b = result.style.bytes;
  result.font = workbook.styles.Font(b[style::kFontSetAt] ? b[style::kFontIndexAt] : 0);
  return result;
}

uint32_t ChangedAttributes(const FieldFormat& original, const FieldFormat& edited) {
  uint32_t changed = 0;
  for (int kind : kSheetAttributes) {
    if (Differs(original, edited, kind)) changed |= 1u << kind;
  }
  return changed;
}

bool ApplyFieldFormat(Workbook& workbook, const FieldFormat& original, const FieldFormat& edited,
                      const UndoContext& selection) {
  TableSpec table;
  if (!CurrentTable(workbook, table)) return Fail(workbook, err::kNoTableSelected);
  const uint16_t count = FieldCount(table);
  const uint16_t first = selection.firstColumn;
  const uint16_t last = std::min<uint16_t>(selection.lastColumn, count == 0 ? 0 : count - 1);
  const uint32_t changed = ChangedAttributes(original, edited);
  if (count == 0 || first > last || changed == 0) return true;
  UndoContext step = selection;
  step.firstColumn = first;
  step.lastColumn = last;
  if (workbook.undo != nullptr && !workbook.undo->RecordRange(step)) {
    return Fail(workbook, err::kOutOfMemory);
  }
  for (uint32_t c = first; c <= last; ++c) {
    for (int kind : kSheetAttributes) {
      if ((changed & (1u << kind)) == 0) continue;
      if (!SetColumnStyleAttribute(workbook, *table.data, static_cast<uint16_t>(c), kind,
                                   edited.style, &edited.font)) {
        return false;
      }
    }
  }
  return true;
}

std::string FormatSample(const NumberStyle& numberStyle, const CellRecord* current,
                         const LocaleSettings& settings) {
  // A user's string is checked first: a wrong one shows no sample rather than General's.
  std::unique_ptr<CompiledFormat> compiled;
  if (numberStyle.kind == format_kind::kUserDefined) {
    compiled = std::make_unique<CompiledFormat>();
    if (!ParseFormatString(numberStyle.userFormat, *compiled, &settings)) return {};
  }
  CellFormatter formatter(numberStyle, settings);
  char out[kDisplayTextMax];
  if (current != nullptr) {
    size_t n = formatter.Display(current, out);
    if (n > 0) return std::string(out, n);
  }
  const bool dates = IsDateKind(numberStyle.kind) || (compiled && compiled->HasDateTokens());
  if (dates) {
    // Afternoon and a day above twelve, so that every token of a date or time shows a difference.
    DateTimeRecord moment;
    moment.hasDate = moment.hasTime = true;
    moment.year = 2024;
    moment.month = 3;
    moment.day = 14;
    moment.hour = 15;
    moment.minute = 9;
    moment.second = 26;
    return std::string(out, formatter.DisplayText(FormatGenericDate(moment), out));
  }
  return std::string(out, formatter.DisplayNumber(-1234.5678, out));
}

}  // namespace kelpdex
