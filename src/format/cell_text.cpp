#include "format/cell_text.h"

#include <cstring>

#include "format/format_text.h"
#include "format/generic_date.h"
#include "format/number_text.h"
#include "format/parse_date.h"
#include "format/parse_number.h"
#include "store/cell_error.h"
#include "text/code_page.h"

namespace kelpdex {

namespace {

bool IsDateKind(uint8_t kind) {
  return kind >= format_kind::kDate && kind <= format_kind::kDateTime;
}

size_t Copy(std::string_view text, char* out) {
  size_t n = text.size() < kDisplayTextMax - 1 ? text.size() : kDisplayTextMax - 1;
  std::memcpy(out, text.data(), n);
  out[n] = '\0';
  return n;
}

}  // namespace

CellFormatter::CellFormatter(const NumberStyle& style, const LocaleSettings& settings)
    : kind_(style.kind), settings_(settings) {
  if (kind_ == format_kind::kDefault || kind_ >= format_kind::kCount) return;
  char text[kBuiltFormatMax];
  if (BuildFormatString(style, text, &settings_) == 0) return;
  format_ = std::make_unique<CompiledFormat>();
  compiled_ = ParseFormatString(text, *format_, &settings_);
}

size_t CellFormatter::DisplayNumber(double x, char* out, FormatColour* colour) const {
  if (colour != nullptr) colour->set = false;
  if (compiled_ && !IsDateKind(kind_)) {
    if (kind_ == format_kind::kPercentage) x *= 100;
    size_t n = 0;
    if (FormatNumber(x, *format_, out, &n, &settings_, colour)) return n;
    if (kind_ == format_kind::kPercentage) x /= 100;
  }
  return NumberToGeneral(x, out, &settings_);
}

size_t CellFormatter::DisplayText(std::string_view text, char* out) const {
  if (compiled_ && (kind_ == format_kind::kUserDefined || IsDateKind(kind_))) {
    size_t n = 0;
    if (FormatText(text, *format_, out, &n, &settings_)) return n;
  }
  return Copy(text, out);
}

size_t CellFormatter::Display(const CellRecord* cell, char* out, FormatColour* colour) const {
  if (colour != nullptr) colour->set = false;
  uint8_t error = cell::ErrorNibble(cell);
  if (error != 0) return Copy(ErrorLiteral(error), out);
  if (cell::IsText(cell)) return DisplayText(cell::Text(cell), out);
  if (cell::IsNumber(cell)) return DisplayNumber(cell::Number(cell), out, colour);
  uint8_t flags = cell::FormulaFlags(cell);
  if (flags & cell::kCachedString) return DisplayText(cell::CachedString(cell), out);
  if (flags & cell::kCachedNumber) return DisplayNumber(cell::CachedNumber(cell), out, colour);
  out[0] = '\0';
  return 0;
}

size_t CellDisplayText(const CellRecord* cell, const NumberStyle& style, char* out) {
  CellFormatter formatter(style);
  return formatter.Display(cell, out);
}

std::string CellDisplayText(const CellRecord* cell, const NumberStyle& style) {
  char buf[kDisplayTextMax];
  size_t n = CellDisplayText(cell, style, buf);
  return std::string(buf, n);
}

TypedResult TextToCell(std::string_view text, NumberStyle& style, uint8_t* cell, uint32_t row,
                       uint16_t column, const LocaleSettings& settings) {
  // 1. An error literal typed in full is that error.
  if (!text.empty() && text[0] == '#') {
    for (uint8_t code = 0x10; code <= 0xC0; code = static_cast<uint8_t>(code + 0x10)) {
      if (text::EqualNoCase(text, ErrorLiteral(code))) {
        return {TypedCell::kError, cell::EncodeNumber(cell, row, column, 0, code)};
      }
    }
  }
  // 2. Numbers typed into a column of a number kind keep the column's format.
  double value = 0;
  NumberStyle parsed = style;
  auto accepts = [&](std::initializer_list<uint8_t> kinds) {
    for (uint8_t k : kinds) {
      if (parsed.kind == k) return true;
    }
    return false;
  };
  if (style.kind == format_kind::kFraction) {
    if (ParseNumberText(text, value, parsed, &settings) == NumberParse::kNumber &&
        accepts({format_kind::kFraction, format_kind::kDefault})) {
      return {TypedCell::kNumber, cell::EncodeNumber(cell, row, column, value)};
    }
  } else if (style.kind == format_kind::kCurrency || style.kind == format_kind::kAccounting) {
    bool ok = ParseNumberText(text, value, parsed, &settings) == NumberParse::kNumber;
    size_t symbolLength = strnlen(style.symbol, sizeof style.symbol);
    if (!ok && std::string_view(style.symbol, symbolLength) != settings.currencySymbol) {
      // The column's own symbol, where it is not the locale's.
      LocaleSettings own = settings;
      std::memset(own.currencySymbol, 0, sizeof own.currencySymbol);
      std::memcpy(
          own.currencySymbol, style.symbol,
          symbolLength < sizeof own.currencySymbol ? symbolLength : sizeof own.currencySymbol - 1);
      parsed = style;
      ok = ParseNumberText(text, value, parsed, &own) == NumberParse::kNumber;
    }
    bool fits =
        style.kind == format_kind::kCurrency
            ? accepts({format_kind::kCurrency, format_kind::kDefault, format_kind::kGeneral})
            : accepts({format_kind::kAccounting, format_kind::kCurrency, format_kind::kDefault,
                       format_kind::kGeneral});
    if (ok && fits) return {TypedCell::kNumber, cell::EncodeNumber(cell, row, column, value)};
  }
  // 3. A date or time is kept as its generic string.
  DateTimeRecord date;
  int dateKind = IsDateKind(style.kind) ? style.kind : format_kind::kDateTime;
  if (ParseDateText(text, date, dateKind, &style, &settings)) {
    char generic[kGenericDateSize];
    size_t n = FormatGenericDate(date, generic);
    if (n > 0) {
      return {TypedCell::kText, cell::EncodeText(cell, row, column, std::string_view(generic, n))};
    }
  }
  // 4. A number in any notation; the notation becomes the style the caller may adopt.
  parsed = style;
  NumberParse result = ParseNumberText(text, value, parsed, &settings);
  if (result == NumberParse::kNumber) {
    if (parsed.kind != format_kind::kDefault) style = parsed;
    return {TypedCell::kNumber, cell::EncodeNumber(cell, row, column, value)};
  }
  if (result != NumberParse::kNotANumber) return {TypedCell::kUnchanged, 0};
  // 5. Text as typed.
  if (cell::TextSize(text.size()) > kTypedCellMax) return {TypedCell::kTooLong, 0};
  return {TypedCell::kText, cell::EncodeText(cell, row, column, text)};
}

}  // namespace kelpdex
