// Matching cells against a criteria argument (countIf, sumIf) and the wildcard patterns that the
// text and lookup functions share.
#pragma once

#include <string>
#include <string_view>

#include "formula/formula_value.h"
#include "store/cell_record.h"

namespace kelpdex {

// "?" one character, "*" any run, "~" makes the next "?" or "*" literal; case-insensitive over the
// whole text.
bool WildcardMatch(std::string_view pattern, std::string_view text);

// The first place at or after `from` where the pattern (as for WildcardMatch) matches a stretch of
// the text; npos when there is none. `length` gets the longest stretch that matches there.
size_t FindPattern(std::string_view pattern, std::string_view text, size_t from, size_t& length);

class Criteria {
 public:
  // From the criteria argument: a number, a text (with an optional leading comparison) or an
  // error value.
  void SetNumber(double value);
  void SetText(std::string_view text);
  void SetError(uint8_t code);
  bool Matches(const CellRecord* cell) const;

 private:
  enum class Op { kEqual, kLess, kLessEqual, kGreater, kGreaterEqual, kPattern, kError };
  Op op_ = Op::kEqual;
  bool numeric_ = false;
  double number_ = 0;
  std::string text_;
  uint8_t error_ = 0;
};

}  // namespace kelpdex
