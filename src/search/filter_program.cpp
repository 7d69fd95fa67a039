#include "search/filter_program.h"

#include "core/locale_settings.h"
#include "format/number_text.h"
#include "formula/formula_value.h"
#include "search/filter_text.h"
#include "text/code_page.h"

namespace kelpdex {

namespace {

bool IsFormulaBlank(char c) {
  return c == ' ' || c == '\r' || c == '\n';
}

std::string_view TrimBlanks(std::string_view s) {
  while (!s.empty() && IsFormulaBlank(s.front())) s.remove_prefix(1);
  while (!s.empty() && IsFormulaBlank(s.back())) s.remove_suffix(1);
  return s;
}

// The field a name at the start of `text` resolves to, as the tokenizer resolves it: the first
// Text or Number field whose name it begins with, not followed by more of a word. -1 for none,
// or when the text would not be read as a name at all.
int ResolveName(const std::vector<FormulaField>& fields, std::string_view text) {
  if (text.empty()) return -1;
  char c = text[0];
  if (!text::IsCharAlpha(c) && c != '$' && c != '#' && c != '\\') return -1;
  size_t searched =
      fields.size() < FormulaEngine::kMaxFields ? fields.size() : FormulaEngine::kMaxFields;
  for (size_t i = 0; i < searched; ++i) {
    const FormulaField& field = fields[i];
    if ((field.type != kFieldText && field.type != kFieldNumber) || field.name.empty()) continue;
    size_t n = field.name.size();
    if (n > text.size() || !text::EqualNoCase(text.substr(0, n), field.name)) continue;
    if (n < text.size() && text::IsCharAlphaNumeric(text[n])) continue;
    return static_cast<int>(i);
  }
  return -1;
}

uint16_t ComparisonOp(int digit) {
  switch (digit) {
    case filter_op::kEqual:
      return kind::kEqual;
    case filter_op::kNotEqual:
      return kind::kNotEqual;
    case filter_op::kGreater:
      return kind::kGreater;
    default:
      return kind::kLess;
  }
}

// Whether a SEARCH pattern ("?" any character, "*" any run, "~" before either makes it literal)
// matches at the start of `text`, or with `anywhere` at some place in it. Without case, by the
// code page's upper case, as SEARCH compares.
bool PatternMatches(std::string_view pattern, std::string_view text, bool anywhere) {
  constexpr size_t kNoStar = std::string_view::npos;
  size_t p = 0, t = 0;
  // Where to resume after a mismatch: behind the last star, one character further into the text.
  // Looking anywhere is a star before the pattern.
  size_t starP = anywhere ? 0 : kNoStar, starT = 0;
  for (;;) {
    // What follows the pattern's end is free: SEARCH needs a match that starts here, of any length.
    if (p == pattern.size()) return true;
    char c = pattern[p];
    if (c == '*') {
      starP = ++p;
      starT = t;
      continue;
    }
    size_t width = 1;
    bool any = c == '?';
    if (c == '~' && p + 1 < pattern.size() && (pattern[p + 1] == '*' || pattern[p + 1] == '?')) {
      c = pattern[p + 1];
      width = 2;
      any = false;
    }
    if (t < text.size() && (any || text::CharUpper(text[t]) == text::CharUpper(c))) {
      p += width;
      ++t;
      continue;
    }
    if (starP == kNoStar || starT >= text.size()) return false;
    p = starP;
    t = ++starT;
  }
}

}  // namespace

bool FilterProgram::AddPattern(std::string_view pattern) {
  if (pattern.find('"') != std::string_view::npos) return false;
  Term term;
  term.text.assign(pattern);
  terms_.push_back(std::move(term));
  patterns_ = true;
  return true;
}

bool FilterProgram::AddTerm(uint16_t op, bool number, std::string_view operand) {
  Term term;
  term.op = op;
  term.number = number;
  if (!number) {
    // Inside the formula's quotes: a quote of its own would end the string early.
    if (operand.find('"') != std::string_view::npos) return false;
    term.text.assign(operand);
  } else {
    // A number literal as the tokenizer reads it, alone or behind one minus sign.
    std::string_view literal = TrimBlanks(operand);
    bool negative = !literal.empty() && literal[0] == '-';
    if (negative) literal = TrimBlanks(literal.substr(1));
    char decimal = currentLocale.decimalSeparator;
    if (literal.empty() || !((literal[0] >= '0' && literal[0] <= '9') || literal[0] == decimal)) {
      return false;
    }
    double value = 0;
    if (ScanNumber(literal, decimal, false, value) != literal.size() || IsBadNumber(value)) {
      return false;
    }
    term.value = negative ? -value : value;
  }
  terms_.push_back(std::move(term));
  return true;
}

bool FilterProgram::Compile(const std::vector<FormulaField>& fields, std::string_view name,
                            FieldType type, int digit, std::string_view operand) {
  terms_.clear();
  patterns_ = false;
  if (digit < filter_op::kPattern || digit > filter_op::kOr) return false;
  const bool number = type == FieldType::kNumber;
  // In every expansion the name is followed by a blank.
  std::string named(name);
  named += ' ';
  // The name must be read whole as one field's; a shorter name that ends at a blank inside it
  // would leave the rest as a formula of another shape.
  int column = ResolveName(fields, named);
  if (column < 0 || fields[column].name.size() != name.size()) return false;
  column_ = static_cast<uint16_t>(column);

  std::vector<std::string_view> words;
  for (size_t at = 0; at < operand.size();) {
    while (at < operand.size() && operand[at] == ' ') ++at;
    size_t start = at;
    while (at < operand.size() && operand[at] != ' ') ++at;
    if (at > start) words.push_back(operand.substr(start, at - start));
  }
  switch (digit) {
    case filter_op::kBetween:
      combine_ = Combine::kBoth;
      return words.size() >= 2 && AddTerm(kind::kGreaterEqual, number, words[0]) &&
             AddTerm(kind::kLessEqual, number, words[1]);
    case filter_op::kAnd:
    case filter_op::kOr:
      combine_ = digit == filter_op::kAnd ? Combine::kAll : Combine::kAny;
      if (words.empty()) return false;
      for (std::string_view word : words) {
        if (!(number ? AddTerm(kind::kEqual, true, word) : AddPattern(word))) return false;
      }
      return true;
    case filter_op::kPattern:
      combine_ = Combine::kOne;
      return AddPattern(operand);
    default:
      combine_ = Combine::kOne;
      return AddTerm(ComparisonOp(digit), number, operand);
  }
}

FilterProgram::Outcome FilterProgram::Compare(const Term& term, const CellRecord* cell) const {
  if (term.op == 0) {
    // SEARCH(pattern, text,) = 1: true where the pattern matches at the start, false where it
    // matches further on, and an error where it matches nowhere or the text is empty.
    std::string_view text = cell != nullptr ? cell::Text(cell) : std::string_view();
    if (text.empty()) return Outcome::kError;
    if (PatternMatches(term.text, text, false)) return Outcome::kTrue;
    return PatternMatches(term.text, text, true) ? Outcome::kFalse : Outcome::kError;
  }
  // An empty cell compares as 0 with a number and as "" with a text; a number never compares
  // with a text.
  int order;
  if (cell == nullptr) {
    order = term.number ? (0 < term.value ? -1 : (0 > term.value ? 1 : 0))
                        : text::CompareNoCase(std::string_view(), term.text);
  } else if (cell::IsNumber(cell)) {
    if (!term.number) return Outcome::kError;
    double x = cell::Number(cell);
    order = x < term.value ? -1 : (x > term.value ? 1 : 0);
  } else {
    if (term.number) return Outcome::kError;
    order = text::CompareNoCase(cell::Text(cell), term.text);
  }
  return ComparisonHolds(term.op, order) ? Outcome::kTrue : Outcome::kFalse;
}

FilterProgram::Verdict FilterProgram::Test(const CellRecord* cell) const {
  if (cell != nullptr) {
    // A formula cell may still have to be calculated, and SEARCH reads a number as its text:
    // the evaluator decides.
    if (!cell::IsNumber(cell) && !cell::IsText(cell)) return Verdict::kEvaluate;
    if (patterns_ && cell::IsNumber(cell) && cell::ErrorNibble(cell) == 0) {
      return Verdict::kEvaluate;
    }
    if (cell::ErrorNibble(cell) != 0) return Verdict::kDrop;
  }
  bool all = true, any = false;
  for (const Term& term : terms_) {
    Outcome outcome = Compare(term, cell);
    if (outcome == Outcome::kError) return Verdict::kDrop;
    all = all && outcome == Outcome::kTrue;
    any = any || outcome == Outcome::kTrue;
  }
  bool keep = combine_ == Combine::kAny ? any : all;
  return keep ? Verdict::kKeep : Verdict::kDrop;
}

}  // namespace kelpdex
