#include "functions/criteria.h"

#include <algorithm>
#include <vector>

#include "core/locale_settings.h"
#include "format/number_text.h"
#include "text/code_page.h"

namespace kelpdex {

bool WildcardMatch(std::string_view pattern, std::string_view text) {
  // Iterative matching with one remembered "*": linear in practice, no recursion.
  size_t p = 0, t = 0, star = std::string_view::npos, resume = 0;
  while (t < text.size()) {
    if (p < pattern.size()) {
      char c = pattern[p];
      if (c == '*') {
        star = ++p;
        resume = t;
        continue;
      }
      bool literal =
          c == '~' && p + 1 < pattern.size() && (pattern[p + 1] == '*' || pattern[p + 1] == '?');
      char want = literal ? pattern[p + 1] : c;
      if ((!literal && c == '?') || text::CharUpper(want) == text::CharUpper(text[t])) {
        p += literal ? 2 : 1;
        ++t;
        continue;
      }
    }
    if (star == std::string_view::npos) return false;
    p = star;
    t = ++resume;
  }
  while (p < pattern.size() && pattern[p] == '*') ++p;
  return p == pattern.size();
}

size_t FindPattern(std::string_view pattern, std::string_view text, size_t from, size_t& length) {
  // One sweep over the pattern, keeping for every end position in the text the earliest start
  // from which the pattern read so far matches up to there: the leftmost match and its longest
  // extent come out together in time proportional to pattern times text.
  constexpr uint32_t kNone = 0xFFFFFFFF;
  const size_t n = text.size();
  if (from > n) return std::string_view::npos;
  std::vector<uint32_t> start(n + 1);
  for (size_t t = 0; t <= n; ++t) start[t] = t >= from ? static_cast<uint32_t>(t) : kNone;
  for (size_t p = 0; p < pattern.size(); ++p) {
    char c = pattern[p];
    if (c == '*') {
      for (size_t t = 1; t <= n; ++t) start[t] = std::min(start[t], start[t - 1]);
      continue;
    }
    bool literal =
        c == '~' && p + 1 < pattern.size() && (pattern[p + 1] == '*' || pattern[p + 1] == '?');
    if (literal) c = pattern[++p];
    bool any = !literal && c == '?';
    char want = text::CharUpper(c);
    for (size_t t = n; t > 0; --t) {
      bool step = any || text::CharUpper(text[t - 1]) == want;
      start[t] = step ? start[t - 1] : kNone;
    }
    start[0] = kNone;
  }
  uint32_t first = kNone;
  size_t end = 0;
  for (size_t t = 0; t <= n; ++t) {
    if (start[t] < first || (start[t] == first && first != kNone)) {
      first = start[t];
      end = t;
    }
  }
  if (first == kNone) return std::string_view::npos;
  length = end - first;
  return first;
}

void Criteria::SetNumber(double value) {
  op_ = Op::kEqual;
  numeric_ = true;
  number_ = value;
}

void Criteria::SetError(uint8_t code) {
  op_ = Op::kError;
  error_ = code;
}

void Criteria::SetText(std::string_view text) {
  op_ = Op::kPattern;
  std::string_view rest = text;
  if (text.substr(0, 2) == ">=") {
    op_ = Op::kGreaterEqual;
    rest = text.substr(2);
  } else if (text.substr(0, 2) == "<=") {
    op_ = Op::kLessEqual;
    rest = text.substr(2);
  } else if (!text.empty() && (text[0] == '=' || text[0] == '>' || text[0] == '<')) {
    op_ = text[0] == '=' ? Op::kEqual : (text[0] == '>' ? Op::kGreater : Op::kLess);
    rest = text.substr(1);
  }
  numeric_ = TextToNumber(rest, currentLocale.decimalSeparator, number_);
  text_.assign(rest);
}

bool Criteria::Matches(const CellRecord* r) const {
  uint8_t nibble = cell::ErrorNibble(r);
  if (op_ == Op::kError) return nibble == error_;
  if (nibble != 0) return false;
  bool isText = cell::IsText(r);
  int order = 0;
  if (numeric_) {
    // A number criterion compares with numbers only.
    if (isText) return false;
    double x = cell::IsNumber(r) ? cell::Number(r) : cell::CachedNumber(r);
    order = x < number_ ? -1 : (x > number_ ? 1 : 0);
  } else {
    std::string_view value = isText ? cell::Text(r) : std::string_view();
    std::string general;
    if (!isText) {
      general = NumberToGeneral(cell::IsNumber(r) ? cell::Number(r) : cell::CachedNumber(r));
      value = general;
    }
    if (op_ == Op::kPattern) return WildcardMatch(text_, value);
    order = text::CompareNoCase(value, text_);
  }
  switch (op_) {
    case Op::kEqual:
    case Op::kPattern:
      return order == 0;
    case Op::kLess:
      return order < 0;
    case Op::kLessEqual:
      return order <= 0;
    case Op::kGreater:
      return order > 0;
    default:
      return order >= 0;
  }
}

}  // namespace kelpdex
