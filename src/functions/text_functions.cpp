#include "functions/text_functions.h"

#include <cmath>
#include <cstring>

#include "core/locale_settings.h"
#include "format/format_number.h"
#include "format/number_style.h"
#include "format/number_text.h"
#include "format/parse_number.h"
#include "functions/criteria.h"
#include "functions/scalar_call.h"
#include "store/cell_record.h"
#include "text/code_page.h"

namespace kelpdex::fn {

namespace {

// No result can be longer than the pool.
constexpr size_t kResultMax = FormulaEngine::kPoolBytes;

void Fail(FormulaEngine& e, const ScalarCall& call, uint8_t error) {
  SetTextResult(e, call.slot, {}, error);
}

// One text in, changed where it stands: `change(bytes, size)` returns the size it keeps. The
// text is worked on on top of the pool when it can be, else in the full frame's copy.
template <typename Change>
void ChangeText(FormulaEngine& e, Change change) {
  TextInPlace in;
  if (ReadTextInPlace(e, 0, in)) return KeepTextInPlace(e, in, change(in.text, in.size));
  ScalarCall call;
  if (!ReadScalarCall(e, "t", 1, call)) return;
  size_t n = change(call.buffers[0], call.text[0].size());
  SetTextResult(e, call.slot, std::string_view(call.buffers[0], n), call.error);
}

// One text in, one text of the same length out, byte by byte.
template <typename Map>
void MapText(FormulaEngine& e, Map map) {
  ChangeText(e, [&](char* text, size_t n) {
    for (size_t i = 0; i < n; ++i) text[i] = map(text[i]);
    return n;
  });
}

// Rounds x at `digits` places (left of the point when negative), half away from zero, as the
// rounding functions do.
double RoundAt(double x, int32_t digits) {
  if (digits > 15) return x;
  if (digits < -308) return 0;
  double scale = std::pow(10.0, std::abs(digits));
  double m = std::fabs(x);
  m = digits < 0 ? m / scale : m * scale;
  m = std::floor(m + 0.5);
  m = digits < 0 ? m * scale : m / scale;
  return x < 0 ? -m : m;
}

// Shows x through a number style built for the call, in the notation in force.
void FormatWithStyle(FormulaEngine& e, const ScalarCall& call, double x, int32_t digits,
                     NumberStyle& style) {
  if (call.error != 0) return Fail(e, call, call.error);
  x = RoundAt(x, digits);
  if (IsBadNumber(x) && x != 0) return Fail(e, call, ferr::kNum);
  style.fixedDecimals = true;
  style.decimalDigits = static_cast<uint8_t>(digits < 0 ? 0 : (digits > 14 ? 14 : digits));
  char format[kBuiltFormatMax];
  BuildFormatString(style, format, &currentLocale);
  char out[kDisplayTextMax];
  size_t length = 0;
  if (!FormatNumber(x, format, out, &length, &currentLocale)) {
    length = NumberToGeneral(x, out, &currentLocale);
  }
  SetTextResult(e, call.slot, std::string_view(out, length), 0);
}

// find and search: the start position (default 1) must lie within the text.
template <typename Locate>
void RunFind(FormulaEngine& e, Locate locate) {
  ScalarCall call;
  call.integer[2] = 1;
  if (!ReadScalarCall(e, "tti", 2, call)) return;
  uint8_t error = call.error;
  std::string_view what = call.text[0], within = call.text[1];
  int32_t from = call.integer[2];
  double position = 0;
  if (error == 0) {
    size_t found = std::string_view::npos;
    if (from >= 1 && static_cast<size_t>(from) <= within.size()) found = locate(what, within, from);
    if (found == std::string_view::npos) error = ferr::kValue;
    position = static_cast<double>(found + 1);
  }
  SetNumberResult(e, call.slot, position, error);
}

void Append(char* out, size_t& length, std::string_view piece) {
  if (!piece.empty()) std::memcpy(out + length, piece.data(), piece.size());
  length += piece.size();
}

// concatenate's pieces are read from the last argument to the first, so they are laid down from
// the end of the buffer backwards.
struct Joined {
  char buffer[kResultMax];
  size_t start = kResultMax;
  uint8_t error = 0;
  // An array's cells come in their own order; they are gathered here, then put in front.
  char cells[kResultMax];
  size_t cellsLength = 0;

  void Prepend(std::string_view piece) {
    if (piece.size() > start) {
      error = LargerError(error, ferr::kValue);
      return;
    }
    start -= piece.size();
    if (!piece.empty()) std::memcpy(buffer + start, piece.data(), piece.size());
  }
  static void AddCell(void* context, const CellRecord* r) {
    auto* self = static_cast<Joined*>(context);
    uint8_t nibble = cell::ErrorNibble(r);
    char number[32];
    std::string_view piece;
    if (nibble != 0) {
      self->error = LargerError(self->error, nibble);
      return;
    }
    if (cell::IsText(r)) {
      piece = cell::Text(r);
    } else {
      double x = cell::IsNumber(r) ? cell::Number(r) : cell::CachedNumber(r);
      piece = std::string_view(number, NumberToGeneral(x, number));
    }
    if (piece.size() > kResultMax - self->cellsLength) {
      self->error = LargerError(self->error, ferr::kValue);
      return;
    }
    Append(self->cells, self->cellsLength, piece);
  }
};

}  // namespace

void Asc(FormulaEngine& e) {
  MapText(e, [](char c) { return c; });
}

void Char(FormulaEngine& e) {
  ScalarCall call;
  if (!ReadScalarCall(e, "i", 1, call)) return;
  int32_t code = call.integer[0];
  if (call.error == 0 && (code < 1 || code > 255)) call.error = ferr::kValue;
  char c = static_cast<char>(code);
  SetTextResult(e, call.slot, std::string_view(&c, 1), call.error);
}

void Clean(FormulaEngine& e) {
  ChangeText(e, [](char* text, size_t n) {
    size_t kept = 0;
    for (size_t i = 0; i < n; ++i) {
      if (static_cast<uint8_t>(text[i]) >= 32 && text[i] != 127) text[kept++] = text[i];
    }
    return kept;
  });
}

void Code(FormulaEngine& e) {
  ScalarCall call;
  if (!ReadScalarCall(e, "t", 1, call)) return;
  uint8_t error = call.error;
  if (error == 0 && call.text[0].empty()) error = ferr::kValue;
  double code = error == 0 ? static_cast<uint8_t>(call.text[0][0]) : 0;
  SetNumberResult(e, call.slot, code, error);
}

void Concatenate(FormulaEngine& e) {
  int base = e.Operand(e.depth()).argumentBase;
  if (!HasArguments(e, 1)) return;
  Joined joined;
  for (int slot = e.depth() - 1; slot >= base; --slot) {
    FormulaValue& v = e.Operand(slot);
    if ((v.kind & kind::kArrayOrRange) != 0) {
      joined.cellsLength = 0;
      joined.error = LargerError(joined.error, ForEachCellOf(e, slot, &joined, Joined::AddCell));
      joined.Prepend(std::string_view(joined.cells, joined.cellsLength));
      continue;
    }
    char buffer[kTextArgSize];
    std::string_view text;
    joined.error = LargerError(joined.error, GetTextArg(e, slot, buffer, text));
    joined.Prepend(text);
  }
  SetTextResult(e, base, std::string_view(joined.buffer + joined.start, kResultMax - joined.start),
                joined.error);
}

void Dollar(FormulaEngine& e) {
  ScalarCall call;
  call.integer[1] = 2;
  if (!ReadScalarCall(e, "ni", 1, call)) return;
  NumberStyle style;
  style.kind = format_kind::kCurrency;
  style.groupDigits = true;
  std::strncpy(style.symbol, currentLocale.currencySymbol, sizeof style.symbol - 1);
  FormatWithStyle(e, call, call.number[0], call.integer[1], style);
}

void Exact(FormulaEngine& e) {
  ScalarCall call;
  if (!ReadScalarCall(e, "tt", 2, call)) return;
  SetNumberResult(e, call.slot, call.text[0] == call.text[1] ? 1 : 0, call.error);
}

void Find(FormulaEngine& e) {
  RunFind(e, [](std::string_view what, std::string_view within, int32_t from) {
    return within.find(what, static_cast<size_t>(from - 1));
  });
}

void Fixed(FormulaEngine& e) {
  ScalarCall call;
  call.integer[1] = 2;
  call.integer[2] = 0;
  if (!ReadScalarCall(e, "nii", 1, call)) return;
  NumberStyle style;
  style.kind = format_kind::kGeneral;
  style.groupDigits = call.integer[2] == 0;
  FormatWithStyle(e, call, call.number[0], call.integer[1], style);
}

void Left(FormulaEngine& e) {
  TextInPlace in;
  if (ReadTextInPlace(e, 1, in)) return KeepTextInPlace(e, in, static_cast<size_t>(in.integer[0]));
  ScalarCall call;
  call.integer[1] = 1;
  if (!ReadScalarCall(e, "ti", 1, call)) return;
  int32_t n = call.integer[1];
  if (call.error == 0 && n < 0) return Fail(e, call, ferr::kValue);
  SetTextResult(e, call.slot, call.text[0].substr(0, static_cast<size_t>(n)), call.error);
}

void Len(FormulaEngine& e) {
  ScalarCall call;
  if (!ReadScalarCall(e, "t", 1, call)) return;
  SetNumberResult(e, call.slot, static_cast<double>(call.text[0].size()), call.error);
}

void Lower(FormulaEngine& e) {
  MapText(e, [](char c) { return text::CharLower(c); });
}

void Mid(FormulaEngine& e) {
  TextInPlace in;
  // A start before the first byte is an error, which the full frame gives.
  if (ReadTextInPlace(e, 2, in) && in.integer[0] >= 1) {
    size_t at = std::min(static_cast<size_t>(in.integer[0] - 1), in.size);
    size_t keep = std::min(static_cast<size_t>(in.integer[1]), in.size - at);
    std::memmove(in.text, in.text + at, keep);
    return KeepTextInPlace(e, in, keep);
  }
  ScalarCall call;
  if (!ReadScalarCall(e, "tii", 3, call)) return;
  int32_t first = call.integer[1], count = call.integer[2];
  if (call.error == 0 && (first < 1 || count < 0)) return Fail(e, call, ferr::kValue);
  std::string_view text = call.text[0];
  size_t at = static_cast<size_t>(first - 1);
  SetTextResult(e, call.slot, at < text.size() ? text.substr(at, static_cast<size_t>(count)) : "",
                call.error);
}

void Proper(FormulaEngine& e) {
  ChangeText(e, [](char* text, size_t n) {
    bool inWord = false;
    for (size_t i = 0; i < n; ++i) {
      bool letter = text::IsCharAlpha(text[i]);
      if (letter) text[i] = inWord ? text::CharLower(text[i]) : text::CharUpper(text[i]);
      inWord = letter;
    }
    return n;
  });
}

void Replace(FormulaEngine& e) {
  ScalarCall call;
  if (!ReadScalarCall(e, "tiit", 4, call)) return;
  int32_t first = call.integer[1], count = call.integer[2];
  if (call.error != 0) return Fail(e, call, call.error);
  if (first < 1 || count < 0) return Fail(e, call, ferr::kValue);
  std::string_view text = call.text[0], with = call.text[3];
  size_t at = std::min(static_cast<size_t>(first - 1), text.size());
  size_t resume = std::min(at + static_cast<size_t>(count), text.size());
  if (at + with.size() + (text.size() - resume) > kResultMax) return Fail(e, call, ferr::kValue);
  char out[kResultMax];
  size_t length = 0;
  Append(out, length, text.substr(0, at));
  Append(out, length, with);
  Append(out, length, text.substr(resume));
  SetTextResult(e, call.slot, std::string_view(out, length), 0);
}

void Rept(FormulaEngine& e) {
  ScalarCall call;
  if (!ReadScalarCall(e, "ti", 2, call)) return;
  if (call.error != 0) return Fail(e, call, call.error);
  std::string_view text = call.text[0];
  int32_t times = call.integer[1];
  // The size is checked before anything is written: the pool's room is the limit.
  if (times < 0 || (!text.empty() && static_cast<uint64_t>(times) > kResultMax / text.size())) {
    return Fail(e, call, ferr::kValue);
  }
  char out[kResultMax];
  size_t length = 0;
  if (!text.empty()) {
    for (int32_t i = 0; i < times; ++i) Append(out, length, text);
  }
  SetTextResult(e, call.slot, std::string_view(out, length), 0);
}

void Right(FormulaEngine& e) {
  TextInPlace in;
  if (ReadTextInPlace(e, 1, in)) {
    size_t keep = std::min(static_cast<size_t>(in.integer[0]), in.size);
    std::memmove(in.text, in.text + in.size - keep, keep);
    return KeepTextInPlace(e, in, keep);
  }
  ScalarCall call;
  call.integer[1] = 1;
  if (!ReadScalarCall(e, "ti", 1, call)) return;
  int32_t n = call.integer[1];
  if (call.error == 0 && n < 0) return Fail(e, call, ferr::kValue);
  std::string_view text = call.text[0];
  size_t keep = std::min(static_cast<size_t>(n), text.size());
  SetTextResult(e, call.slot, text.substr(text.size() - keep), call.error);
}

void Search(FormulaEngine& e) {
  RunFind(e, [](std::string_view pattern, std::string_view within, int32_t from) {
    size_t length = 0;
    return FindPattern(pattern, within, static_cast<size_t>(from - 1), length);
  });
}

void Substitute(FormulaEngine& e) {
  ScalarCall call;
  call.integer[3] = 0;
  if (!ReadScalarCall(e, "ttti", 3, call)) return;
  if (call.error != 0) return Fail(e, call, call.error);
  std::string_view text = call.text[0], pattern = call.text[1], with = call.text[2];
  int32_t which = call.integer[3];
  if (which < 0) return Fail(e, call, ferr::kValue);
  char out[kResultMax];
  size_t length = 0;
  size_t copied = 0;  // the text before this offset is in `out`
  size_t at = 0;      // where the next occurrence is looked for
  int32_t seen = 0;
  while (!pattern.empty()) {
    size_t matched = 0;
    size_t found = FindPattern(pattern, text, at, matched);
    // A pattern of stars alone may match nothing, which is no occurrence.
    if (found == std::string_view::npos || matched == 0) break;
    ++seen;
    if (which == 0 || seen == which) {
      if (length + (found - copied) + with.size() > kResultMax) return Fail(e, call, ferr::kValue);
      Append(out, length, text.substr(copied, found - copied));
      Append(out, length, with);
      copied = found + matched;
      if (which != 0) break;
    }
    at = found + matched;
  }
  if (length + (text.size() - copied) > kResultMax) return Fail(e, call, ferr::kValue);
  Append(out, length, text.substr(copied));
  SetTextResult(e, call.slot, std::string_view(out, length), 0);
}

void Text(FormulaEngine& e) {
  ScalarCall call;
  if (!ReadScalarCall(e, "nt", 2, call)) return;
  if (call.error != 0) return Fail(e, call, call.error);
  char out[kDisplayTextMax];
  size_t length = 0;
  if (!FormatNumber(call.number[0], call.text[1], out, &length, &currentLocale)) {
    length = NumberToGeneral(call.number[0], out, &currentLocale);
  }
  SetTextResult(e, call.slot, std::string_view(out, length), 0);
}

void Trim(FormulaEngine& e) {
  // Nothing is written ahead of what is read, so the text is trimmed where it stands.
  ChangeText(e, [](char* text, size_t n) {
    size_t kept = 0;
    bool gap = false;
    for (size_t i = 0; i < n; ++i) {
      char c = text[i];
      if (c == ' ' || c == '\t' || c == '\r' || c == '\n') {
        gap = kept > 0;
        continue;
      }
      if (gap) text[kept++] = ' ';
      gap = false;
      text[kept++] = c;
    }
    return kept;
  });
}

void Upper(FormulaEngine& e) {
  MapText(e, [](char c) { return text::CharUpper(c); });
}

void Value(FormulaEngine& e) {
  if (!HasArguments(e, 1) || BroadcastArrays(e, 1)) return;
  int slot = e.depth() - 1;
  e.LoadReference(e.Operand(slot));
  // A number is its own value: through its text it would lose digits.
  if (e.Operand(slot).kind == kind::kNumber) {
    FormulaValue v = e.Operand(slot);
    return SetNumberResult(e, slot, v.number, v.errorCode);
  }
  char buffer[kTextArgSize];
  std::string_view text;
  uint8_t error = GetTextArg(e, slot, buffer, text);
  double x = 0;
  NumberStyle shown;
  if (error == 0 && ParseNumberText(text, x, shown, &currentLocale) != NumberParse::kNumber) {
    error = ferr::kValue;
  }
  SetNumberResult(e, slot, x, error);
}

}  // namespace kelpdex::fn
