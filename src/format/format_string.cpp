#include "format/format_string.h"

#include <cstring>

#include "format/number_text.h"
#include "text/code_page.h"

namespace kelpdex {

bool CompiledFormat::HasDateTokens() const {
  for (int s = 0; s < sectionCount; ++s) {
    if (sections[s].kinds & item::kDateTokens) return true;
  }
  return false;
}

int CompiledFormat::TextSection() const {
  for (int s = 0; s < sectionCount; ++s) {
    if (sections[s].kinds & item::kText) return s;
  }
  return sectionCount == 4 ? 3 : -1;
}

namespace {

struct NamedColour {
  const char* name;
  uint32_t colour;
};

// The sixteen colours, as COLORREF values (red in the low byte).
constexpr NamedColour kColours[16] = {
    {"black", 0x000000},  {"maroon", 0x000080},  {"green", 0x008000}, {"olive", 0x008080},
    {"navy", 0x800000},   {"purple", 0x800080},  {"teal", 0x808000},  {"gray", 0x808080},
    {"silver", 0xC0C0C0}, {"red", 0x0000FF},     {"lime", 0x00FF00},  {"yellow", 0x00FFFF},
    {"blue", 0xFF0000},   {"fuchsia", 0xFF00FF}, {"aqua", 0xFFFF00},  {"white", 0xFFFFFF},
};

int HexValue(char c) {
  if (c >= '0' && c <= '9') return c - '0';
  if (c >= 'a' && c <= 'f') return c - 'a' + 10;
  if (c >= 'A' && c <= 'F') return c - 'A' + 10;
  return -1;
}

char LowerAscii(char c) {
  return (c >= 'A' && c <= 'Z') ? static_cast<char>(c - 'A' + 'a') : c;
}

bool IsPlaceholder(char c) {
  return c == '0' || c == '#' || c == '?';
}

// How many times `c` repeats from `at`, in any case.
size_t RunOf(std::string_view text, size_t at, char c) {
  size_t n = 0;
  while (at + n < text.size() && LowerAscii(text[at + n]) == c) ++n;
  return n;
}

class FormatParser {
 public:
  FormatParser(std::string_view text, CompiledFormat& out, const LocaleSettings& settings)
      : text_(text), out_(out), settings_(settings) {}

  bool Parse() {
    std::memset(&out_, 0, sizeof out_);
    out_.decimalSeparator = settings_.decimalSeparator;
    out_.thousandSeparator = settings_.thousandSeparator;
    if (text_.empty()) return false;
    StartSection();
    size_t i = 0;
    while (i < text_.size()) {
      if (!Step(i)) return false;
      if (out_.overflow) return false;
    }
    return EndSection();
  }

 private:
  FormatSection& section() { return out_.sections[out_.sectionCount - 1]; }

  void StartSection() {
    FormatSection& s = out_.sections[out_.sectionCount++];
    s.first = out_.itemCount;
    s.pointAt = s.barAt = s.numeratorAt = -1;
    s.exponentChar = 'E';
    s.exponentSign = '+';
    seenPoint_ = seenBar_ = seenExponent_ = false;
    denominatorOpen_ = false;
    lastToken_ = 0;
    runStart_ = -1;
    brackets_ = 0;
  }

  bool EndSection() {
    FormatSection& s = section();
    s.count = static_cast<uint16_t>(out_.itemCount - s.first);
    // Digits and date tokens cannot share a section: a number cannot be both.
    if ((s.kinds & item::kNumberTokens) && (s.kinds & item::kDateTokens)) return false;
    return true;
  }

  void Add(uint32_t kind, char ch) {
    if (out_.itemCount >= kMaxFormatItems) {
      out_.overflow = true;
      return;
    }
    FormatItem& it = out_.items[out_.itemCount++];
    it.kind = kind;
    it.section = static_cast<uint8_t>(out_.sectionCount - 1);
    it.ch = ch;
    section().kinds |= kind;
  }

  void AddLiteral(char c) {
    runStart_ = -1;
    Add(item::kLiteral, c);
  }

  bool HasDigits() { return (section().kinds & item::kDigit) != 0; }

  // An "m" run is minutes behind an hour, or before a second.
  bool MinutesAt(size_t at, size_t run) {
    if (run > 2) return false;
    if (lastToken_ & item::kHour) return true;
    for (size_t j = at + run; j < text_.size(); ++j) {
      char c = LowerAscii(text_[j]);
      if (c == 's') return true;
      if (c == 'y' || c == 'm' || c == 'd' || c == 'h' || c == 'a' || c == ';' || c == '[') {
        return false;
      }
    }
    return false;
  }

  void AddToken(uint32_t kind, size_t count) {
    runStart_ = -1;
    lastToken_ = kind;
    Add(kind, static_cast<char>(count));
  }

  bool Bracket(size_t& i) {
    size_t close = text_.find(']', i);
    if (close == std::string_view::npos) return false;
    if (++brackets_ > 3) return false;
    std::string_view inside = text_.substr(i + 1, close - i - 1);
    i = close + 1;
    if (inside.empty()) return true;
    char first = LowerAscii(inside[0]);
    if ((first == 'h' || first == 'm' || first == 's') &&
        RunOf(inside, 0, first) == inside.size()) {
      uint32_t kind = first == 'h' ? item::kHour : first == 'm' ? item::kMinute : item::kSecond;
      AddToken(kind | item::kElapsed, inside.size());
      return true;
    }
    FormatSection& s = section();
    uint32_t colour = 0;
    if (ParseColourName(inside, colour)) {
      FormatBracket& b = s.brackets[s.bracketCount++];
      b.type = bracket::kColour;
      b.colour = colour;
      return true;
    }
    if (first == '<' || first == '>' || first == '=') {
      uint8_t op = condition::kEqual;
      size_t at = 1;
      if (first == '<' && inside.size() > 1 && inside[1] == '=') {
        op = condition::kLessEqual, at = 2;
      } else if (first == '<' && inside.size() > 1 && inside[1] == '>') {
        op = condition::kNotEqual, at = 2;
      } else if (first == '>' && inside.size() > 1 && inside[1] == '=') {
        op = condition::kGreaterEqual, at = 2;
      } else if (first == '<') {
        op = condition::kLess;
      } else if (first == '>') {
        op = condition::kGreater;
      }
      double value = 0;
      if (!TextToNumber(inside.substr(at), settings_.decimalSeparator, value)) return false;
      FormatBracket& b = s.brackets[s.bracketCount++];
      b.type = bracket::kCondition;
      b.op = op;
      b.value = value;
      return true;
    }
    return true;  // an unknown bracket, such as a locale mark, says nothing to us
  }

  void Placeholder(char c) {
    FormatSection& s = section();
    if (seenExponent_) {
      ++s.exponentDigits;
    } else if (seenBar_) {
      ++s.denominatorDigits;
    } else if (seenPoint_) {
      ++s.decimalDigits;
    } else {
      ++s.integerDigits;
      if (runStart_ < 0) runStart_ = out_.itemCount;
    }
    Add(item::kDigit, c);
  }

  // A fraction bar: the placeholders of the run just before it become the numerator.
  void Bar() {
    FormatSection& s = section();
    int run = 0;
    for (int k = runStart_; k >= 0 && k < out_.itemCount; ++k) {
      if (out_.items[k].kind == item::kDigit) ++run;
    }
    s.integerDigits = static_cast<uint16_t>(s.integerDigits - run);
    s.numeratorDigits = static_cast<uint16_t>(run);
    s.numeratorAt = static_cast<int16_t>(runStart_);
    s.barAt = static_cast<int16_t>(out_.itemCount);
    seenBar_ = true;
    denominatorOpen_ = true;
    runStart_ = -1;
    Add(item::kBar, '/');
  }

  bool Step(size_t& i) {
    char c = text_[i];
    FormatSection& s = section();
    if (denominatorOpen_) {
      // A fixed denominator: digits from 1 to 9 right of the bar, quoted or not.
      size_t j = i;
      bool quoted = c == '"' && i + 1 < text_.size() && text_[i + 1] >= '1' && text_[i + 1] <= '9';
      if (quoted) ++j;
      if (j < text_.size() && text_[j] >= '1' && text_[j] <= '9') {
        int64_t d = 0;
        while (j < text_.size() && text_[j] >= '0' && text_[j] <= '9' && d < 100000000000000LL) {
          d = d * 10 + (text_[j++] - '0');
        }
        if (quoted) {
          if (j >= text_.size() || text_[j] != '"') return false;
          ++j;
        }
        s.fixedDenominator = d;
        denominatorOpen_ = false;
        i = j;
        return true;
      }
      denominatorOpen_ = false;
    }
    if (c == ';') {
      if (!EndSection()) return false;
      if (out_.sectionCount == kMaxFormatSections) return false;
      StartSection();
      ++i;
      return true;
    }
    if (i + 7 <= text_.size() && text::EqualNoCase(text_.substr(i, 7), "General")) {
      Add(item::kGeneral, 'G');
      i += 7;
      return true;
    }
    if (IsPlaceholder(c)) {
      // Behind seconds the zeros are the second's fraction, not a number's digits.
      if (seenPoint_ && (s.kinds & item::kSecond) && c == '0') {
        ++s.secondDigits;
        Add(item::kSecondFraction, c);
      } else {
        Placeholder(c);
      }
      ++i;
      return true;
    }
    if (c == settings_.thousandSeparator && !seenBar_ && !seenExponent_ && i > 0 &&
        (IsPlaceholder(text_[i - 1]) || text_[i - 1] == c) && HasDigits()) {
      bool grouping =
          !seenPoint_ && i + 1 < text_.size() && IsPlaceholder(text_[i + 1]) && text_[i - 1] != c;
      if (grouping) {
        s.grouping = true;
      } else if (s.thousandsScale < 5) {
        ++s.thousandsScale;
      }
      Add(item::kThousands, c);
      ++i;
      return true;
    }
    // In a date picture the decimal character is punctuation ("d mmmm, yyyy" under a comma
    // locale); only behind seconds does it start their fraction.
    if (c == settings_.decimalSeparator && (s.kinds & item::kDateTokens) &&
        !(s.kinds & item::kSecond) && !HasDigits()) {
      AddLiteral(c);
      ++i;
      return true;
    }
    if (c == settings_.decimalSeparator && !seenPoint_ && !seenExponent_ && !seenBar_) {
      seenPoint_ = true;
      runStart_ = -1;
      if (s.kinds & item::kSecond) {
        Add(item::kSecondFraction, c);
      } else {
        s.pointAt = static_cast<int16_t>(out_.itemCount);
        Add(item::kPoint, c);
      }
      ++i;
      return true;
    }
    if (c == '/') {
      if (HasDigits() && !seenBar_ && !seenPoint_ && !seenExponent_) {
        Bar();
      } else if (s.kinds & item::kDateTokens) {
        runStart_ = -1;
        Add(item::kDateSeparator, c);
      } else {
        AddLiteral(c);
      }
      ++i;
      return true;
    }
    if ((c == 'E' || c == 'e') && i + 1 < text_.size() &&
        (text_[i + 1] == '+' || text_[i + 1] == '-') && HasDigits() && !seenExponent_) {
      seenExponent_ = true;
      runStart_ = -1;
      s.exponentChar = c;
      s.exponentSign = text_[i + 1];
      Add(item::kExponent, c);
      i += 2;
      return true;
    }
    if (c == '[') return Bracket(i);
    char lower = LowerAscii(c);
    if (lower == 'a') {
      if (i + 5 <= text_.size() && text::EqualNoCase(text_.substr(i, 5), "AM/PM")) {
        s.twelveHour = true;
        AddToken(item::kAmPm, 5);
        i += 5;
        return true;
      }
      if (i + 3 <= text_.size() && text::EqualNoCase(text_.substr(i, 3), "A/P")) {
        s.twelveHour = true;
        AddToken(item::kAmPm, 3);
        i += 3;
        return true;
      }
    }
    if (lower == 'y' || lower == 'm' || lower == 'd' || lower == 'h' || lower == 's') {
      size_t run = RunOf(text_, i, lower);
      size_t take = run;
      uint32_t kind = 0;
      switch (lower) {
        case 'y':
          take = run >= 4 ? 4 : 2;
          kind = item::kYear;
          break;
        case 'm':
          take = run > 5 ? 5 : run;
          kind = MinutesAt(i, take) ? item::kMinute : item::kMonth;
          break;
        case 'd':
          take = run > 4 ? 4 : run;
          kind = item::kDay;
          break;
        case 'h':
          take = run > 2 ? 2 : run;
          kind = item::kHour;
          break;
        default:
          take = run > 2 ? 2 : run;
          kind = item::kSecond;
          break;
      }
      if (take > run) take = run;  // a lone "y" reads as "yy"
      AddToken(kind, lower == 'y' ? (run >= 4 ? 4 : 2) : take);
      i += take;
      return true;
    }
    if (c == ':') {
      runStart_ = -1;
      Add(item::kTimeSeparator, c);
      ++i;
      return true;
    }
    if (c == settings_.dateSeparator && (s.kinds & item::kDateTokens) && !HasDigits()) {
      runStart_ = -1;
      Add(item::kDateSeparator, c);
      ++i;
      return true;
    }
    if (c == '_' || c == '*') {
      if (i + 1 >= text_.size()) {
        AddLiteral(c);
        ++i;
        return true;
      }
      runStart_ = -1;
      Add(c == '_' ? item::kBlank : item::kFill, text_[i + 1]);
      i += 2;
      return true;
    }
    if (c == '"' || c == '\'') {
      size_t close = text_.find(c, i + 1);
      if (close == std::string_view::npos) close = text_.size();
      for (size_t j = i + 1; j < close; ++j) AddLiteral(text_[j]);
      i = close < text_.size() ? close + 1 : close;
      return true;
    }
    if (c == '\\') {
      if (i + 1 < text_.size()) AddLiteral(text_[i + 1]);
      i += 2;
      return true;
    }
    if (c == '@') {
      runStart_ = -1;
      Add(item::kText, c);
      ++i;
      return true;
    }
    if (c == '%') {
      runStart_ = -1;
      if (s.percentCount < 5) ++s.percentCount;
      Add(item::kPercent, c);
      ++i;
      return true;
    }
    AddLiteral(c);
    ++i;
    return true;
  }

  std::string_view text_;
  CompiledFormat& out_;
  const LocaleSettings& settings_;
  bool seenPoint_ = false;
  bool seenBar_ = false;
  bool seenExponent_ = false;
  bool denominatorOpen_ = false;
  uint32_t lastToken_ = 0;
  int runStart_ = -1;  // the first placeholder of the current run of integer digits
  int brackets_ = 0;
};

}  // namespace

bool ParseFormatString(std::string_view text, CompiledFormat& compiled,
                       const LocaleSettings* settings) {
  FormatParser parser(text, compiled, settings != nullptr ? *settings : genericLocale);
  return parser.Parse();
}

bool ParseColourName(std::string_view text, uint32_t& colour) {
  if (text.size() == 7 && text[0] == '#') {
    uint32_t rgb[3];
    for (int k = 0; k < 3; ++k) {
      int high = HexValue(text[1 + 2 * k]);
      int low = HexValue(text[2 + 2 * k]);
      if (high < 0 || low < 0) return false;
      rgb[k] = static_cast<uint32_t>(high * 16 + low);
    }
    colour = rgb[0] | (rgb[1] << 8) | (rgb[2] << 16);
    return true;
  }
  for (const NamedColour& named : kColours) {
    if (text::EqualNoCase(text, named.name)) {
      colour = named.colour;
      return true;
    }
  }
  return false;
}

size_t ColourName(uint32_t colour, char* out) {
  for (const NamedColour& named : kColours) {
    if (named.colour == colour) {
      size_t n = std::strlen(named.name);
      std::memcpy(out, named.name, n + 1);
      return n;
    }
  }
  static const char kHex[] = "0123456789ABCDEF";
  out[0] = '#';
  for (int k = 0; k < 3; ++k) {
    uint32_t part = (colour >> (8 * k)) & 0xFF;
    out[1 + 2 * k] = kHex[part >> 4];
    out[2 + 2 * k] = kHex[part & 15];
  }
  out[7] = '\0';
  return 7;
}

}  // namespace kelpdex
