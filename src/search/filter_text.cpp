#include "search/filter_text.h"

#include <cstring>
#include <vector>

namespace kelpdex {

namespace {

// Appends to a fixed buffer the way a bounded print does: what does not fit is dropped.
class FormulaBuffer {
 public:
  explicit FormulaBuffer(char* out) : out_(out) { out_[0] = '\0'; }
  FormulaBuffer& operator<<(std::string_view text) {
    size_t room = kFilterFormulaRoom - 1 - size_;
    size_t n = text.size() < room ? text.size() : room;
    std::memcpy(out_ + size_, text.data(), n);
    size_ += n;
    out_[size_] = '\0';
    return *this;
  }
  size_t size() const { return size_; }

 private:
  char* out_;
  size_t size_ = 0;
};

// Words run from a non-blank to the next blank; only the blank separates them.
std::vector<std::string_view> SplitWords(std::string_view text) {
  std::vector<std::string_view> words;
  size_t at = 0;
  while (at < text.size()) {
    while (at < text.size() && text[at] == ' ') ++at;
    size_t start = at;
    while (at < text.size() && text[at] != ' ') ++at;
    if (at > start) words.push_back(text.substr(start, at - start));
  }
  return words;
}

const char* ComparisonOf(int digit) {
  switch (digit) {
    case filter_op::kEqual:
      return "=";
    case filter_op::kNotEqual:
      return "<>";
    case filter_op::kGreater:
      return ">";
    default:
      return "<";
  }
}

}  // namespace

bool SplitFilterText(std::string_view text, int& digit, std::string_view& operand) {
  if (text.size() < 2 || text[0] < '0' || text[0] > '9' || text[1] != ':') return false;
  digit = text[0] - '0';
  operand = text.substr(2);
  return true;
}

std::string MakeFilterText(int digit, std::string_view operand) {
  std::string text(1, static_cast<char>('0' + digit));
  text += ':';
  text += operand;
  return text;
}

size_t BuildFilterFormula(std::string_view field, FieldType type, std::string_view filterText,
                          char* out) {
  FormulaBuffer f(out);
  int digit;
  std::string_view operand;
  if (!SplitFilterText(filterText, digit, operand)) return 0;
  const bool number = type == FieldType::kNumber;
  const std::string_view quote = number ? "" : "\"";
  switch (digit) {
    case filter_op::kExpression:
      f << operand;
      break;
    case filter_op::kPattern:
      f << "=SEARCH(\"" << operand << "\", " << field << ",) = 1";
      break;
    case filter_op::kEqual:
    case filter_op::kNotEqual:
    case filter_op::kGreater:
    case filter_op::kLess:
      f << "=" << field << " " << ComparisonOf(digit) << " " << quote << operand << quote;
      break;
    case filter_op::kBetween: {
      std::vector<std::string_view> words = SplitWords(operand);
      if (words.size() < 2) return 0;
      f << "=(" << field << " >= " << quote << words[0] << quote << ")*(" << field
        << " <= " << quote << words[1] << quote << ")";
      break;
    }
    case filter_op::kAnd:
    case filter_op::kOr: {
      f << (digit == filter_op::kAnd ? "=AND(" : "=OR(");
      const char* separator = "";
      for (std::string_view word : SplitWords(operand)) {
        f << separator;
        if (number) {
          f << field << " = " << word;
        } else {
          f << "SEARCH(\"" << word << "\", " << field << ",) = 1";
        }
        separator = ", ";
      }
      f << ")";
      break;
    }
    default:
      return 0;
  }
  return f.size();
}

}  // namespace kelpdex
