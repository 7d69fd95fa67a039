#include "text/rtf_text.h"

#include <array>
#include <cstdint>
#include <vector>

namespace kelpdex::text {

namespace {

// Groups whose contents are settings or embedded data, not text.
constexpr std::array<std::string_view, 16> kSkippedDestinations = {
    "fonttbl",      "colortbl",
    "stylesheet",   "info",
    "pict",         "header",
    "footer",       "object",
    "themedata",    "listtable",
    "rsidtbl",      "generator",
    "xmlnsdecl",    "listoverridetable",
    "latentstyles", "datastore"};

struct Symbol {
  std::string_view word;
  const char* text;
};

// Control words that stand for characters; the typographic ones as Windows-1252 has them.
constexpr std::array<Symbol, 11> kSymbols = {{{"par", "\n"},
                                              {"line", "\n"},
                                              {"tab", "\t"},
                                              {"emdash", "\x97"},
                                              {"endash", "\x96"},
                                              {"bullet", "\x95"},
                                              {"lquote", "\x91"},
                                              {"rquote", "\x92"},
                                              {"ldblquote", "\x93"},
                                              {"rdblquote", "\x94"},
                                              {"sect", "\n"}}};

int HexValue(char c) {
  if (c >= '0' && c <= '9') return c - '0';
  if (c >= 'a' && c <= 'f') return c - 'a' + 10;
  if (c >= 'A' && c <= 'F') return c - 'A' + 10;
  return -1;
}

bool IsLetter(char c) {
  return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z');
}

struct Group {
  bool skip = false;
  int unicodeSkip = 1;  // characters after \uN that stand in for it
};

class RtfReducer {
 public:
  explicit RtfReducer(std::string_view rtf) : in_(rtf) { groups_.push_back(Group()); }

  std::string Run() {
    while (at_ < in_.size()) {
      char c = in_[at_++];
      if (c == '{') {
        groups_.push_back(groups_.back());
      } else if (c == '}') {
        if (groups_.size() > 1) groups_.pop_back();
      } else if (c == '\\') {
        Control();
      } else if (c != '\r' && c != '\n') {
        Emit(c);
      }
    }
    return std::move(out_);
  }

 private:
  void Emit(char c) {
    if (pendingSkip_ > 0) {
      --pendingSkip_;
      return;
    }
    if (!groups_.back().skip) out_ += c;
  }
  void EmitText(const char* text) {
    for (; *text != '\0'; ++text) Emit(*text);
  }

  void Control() {
    if (at_ >= in_.size()) return;
    char c = in_[at_];
    if (!IsLetter(c)) {
      ++at_;
      switch (c) {
        case '\\':
        case '{':
        case '}':
          Emit(c);
          break;
        case '\'': {
          int high = at_ < in_.size() ? HexValue(in_[at_]) : -1;
          int low = at_ + 1 < in_.size() ? HexValue(in_[at_ + 1]) : -1;
          if (high >= 0 && low >= 0) {
            at_ += 2;
            Emit(static_cast<char>(high * 16 + low));
          }
          break;
        }
        case '*':
          groups_.back().skip = true;
          break;
        case '~':
          Emit('\xA0');
          break;
        case '_':
          Emit('-');
          break;
        case '\r':
        case '\n':
          Emit('\n');
          break;
        default:
          break;  // \- and the rest stand for nothing visible
      }
      return;
    }
    size_t start = at_;
    while (at_ < in_.size() && IsLetter(in_[at_])) ++at_;
    std::string_view word = in_.substr(start, at_ - start);
    bool negative = at_ < in_.size() && in_[at_] == '-';
    if (negative) ++at_;
    bool hasNumber = false;
    int64_t number = 0;
    while (at_ < in_.size() && in_[at_] >= '0' && in_[at_] <= '9') {
      if (number < 1000000) number = number * 10 + (in_[at_] - '0');
      hasNumber = true;
      ++at_;
    }
    if (negative) number = -number;
    // One blank ends a control word and belongs to it.
    if (at_ < in_.size() && in_[at_] == ' ') ++at_;
    Word(word, hasNumber, number);
  }

  void Word(std::string_view word, bool hasNumber, int64_t number) {
    for (std::string_view skipped : kSkippedDestinations) {
      if (word == skipped) {
        groups_.back().skip = true;
        return;
      }
    }
    for (const Symbol& symbol : kSymbols) {
      if (word == symbol.word) {
        EmitText(symbol.text);
        return;
      }
    }
    if (word == "uc" && hasNumber) {
      groups_.back().unicodeSkip = static_cast<int>(number < 0 ? 0 : number);
    } else if (word == "u" && hasNumber) {
      if (number < 0) number += 65536;
      // A character the code page lacks is shown as '?', as everywhere else.
      Emit(number >= 0 && number < 256 ? static_cast<char>(number) : '?');
      pendingSkip_ = groups_.back().unicodeSkip;
    }
  }

  std::string_view in_;
  size_t at_ = 0;
  std::vector<Group> groups_;
  int pendingSkip_ = 0;
  std::string out_;
};

}  // namespace

bool IsRichText(std::string_view value) {
  return value.substr(0, 5) == "{\\rtf" || value.substr(0, 5) == "{urtf";
}

std::string LongTextPlain(std::string_view value) {
  if (!IsRichText(value)) return std::string(value);
  // "{urtf" is read as the "{\rtf" it stands for.
  std::string rtf(value);
  rtf[1] = '\\';
  return RtfReducer(rtf).Run();
}

std::string LongTextPreview(std::string_view value, size_t max) {
  std::string plain = LongTextPlain(value);
  size_t end = plain.find_first_of("\r\n");
  if (end == std::string::npos) end = plain.size();
  if (end > max) end = max;
  plain.resize(end);
  return plain;
}

}  // namespace kelpdex::text
