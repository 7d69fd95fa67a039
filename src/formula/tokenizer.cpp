// The tokenizer: one token at a time from the formula text. Scanning reads the text and resolves
// names; loading gives the token its value on the stacks. A kept token list is scanned once and
// loaded at every evaluation.
#include <cstring>

#include "core/locale_settings.h"
#include "format/number_text.h"
#include "formula/formula_engine.h"
#include "text/code_page.h"

namespace kelpdex {

namespace {

bool IsBlank(char c) {
  return c == ' ' || c == '\r' || c == '\n';
}

bool StartsWithNoCase(const char* p, const char* end, std::string_view word) {
  return static_cast<size_t>(end - p) >= word.size() &&
         text::EqualNoCase(std::string_view(p, word.size()), word);
}

// The twelve error literals, in code order.
uint8_t MatchErrorLiteral(const char* p, const char* end, size_t& length) {
  for (uint8_t code = ferr::kDivZero; code <= ferr::kSyntax; code += 0x10) {
    std::string_view literal = ErrorLiteral(code);
    if (StartsWithNoCase(p, end, literal)) {
      length = literal.size();
      return code;
    }
  }
  return 0;
}

// TRUE and FALSE match as prefixes: what follows them is the next token's business.
bool MatchBoolean(const char* p, const char* end, double& value, size_t& length) {
  if (StartsWithNoCase(p, end, "FALSE")) {
    value = 0;
    length = 5;
    return true;
  }
  if (StartsWithNoCase(p, end, "TRUE")) {
    value = 1;
    length = 4;
    return true;
  }
  return false;
}

}  // namespace

int FormulaEngine::LookupFunction(std::string_view text, size_t& length) const {
  if (functions_ == nullptr) return -1;
  int low = 0;
  int high = static_cast<int>(functions_->count) - 1;
  while (low <= high) {
    int mid = (low + high) / 2;
    std::string_view name = functions_->entries[mid].name;
    std::string_view head = text.substr(0, name.size());
    int order = text::CompareNoCase(head, name);
    if (order == 0 && head.size() == name.size()) {
      // A name whose family is not built yet is no function.
      if (functions_->entries[mid].handler == nullptr) return -1;
      length = name.size();
      return mid;
    }
    if (order < 0 || (order == 0 && head.size() < name.size())) {
      high = mid - 1;
    } else {
      low = mid + 1;
    }
  }
  return -1;
}

// Gives each token its value on the engine's stacks as it is read.
struct FormulaEngine::LoadSink {
  FormulaEngine& engine;
  FormulaValue& token;
  bool fixedNotation;

  void Begin() { token = FormulaValue(); }
  uint16_t Kind(uint16_t k) { return token.kind = k; }
  uint16_t Number(double value, uint8_t error) {
    token.number = value;
    token.errorCode = error;
    return token.kind = kind::kNumber;
  }
  // A quoted string, or an unknown name: a string that is "#NAME?" when used as a value, and a
  // path before "!".
  uint16_t String(const char* start, size_t length, bool name) {
    if (!engine.PushString(std::string_view(start, length))) {
      // No room: an error value instead, so that every string operand owns a pool entry.
      token.errorCode = name ? ferr::kValue : ferr::kName;
      return token.kind = kind::kEmpty;
    }
    token.errorCode = name ? ferr::kName : uint8_t{0};
    return token.kind = kind::kString;
  }
  // Parses the literal behind the "{" at `cursor` onto the array list.
  uint16_t Array(const char*& cursor, const char* end) {
    CellStore* cells = engine.PushArray();
    if (cells == nullptr || !engine.ParseArrayLiteral(cursor, end, fixedNotation, token, cells)) {
      engine.SetSyntaxError();
      return token.kind = kind::kInvalid;
    }
    return token.kind;
  }
  uint16_t Reference(uint16_t column) {
    token.column = column;
    token.row = engine.currentRow_;
    token.flags = rflag::kAbsolute;
    token.sheet = engine.sheet_;
    return token.kind = kind::kReference;
  }
  uint16_t Function(uint16_t index) {
    token.functionIndex = index;
    return token.kind = kind::kFunction;
  }
};

// Notes each token for a kept list, touching nothing of the evaluation state.
struct FormulaEngine::ScanSink {
  const char* base;
  FormulaToken& token;

  void Begin() { token = FormulaToken(); }
  uint16_t Kind(uint16_t k) { return token.kind = k; }
  uint16_t Number(double value, uint8_t error) {
    token.number = value;
    token.errorCode = error;
    return token.kind = kind::kNumber;
  }
  uint16_t String(const char* start, size_t length, bool name) {
    token.offset = static_cast<uint32_t>(start - base);
    token.length = static_cast<uint32_t>(length);
    token.errorCode = name ? ferr::kName : uint8_t{0};
    return token.kind = kind::kString;
  }
  // The literal is parsed where it is loaded, since its cells go onto the array list.
  uint16_t Array(const char*& cursor, const char*) {
    token.offset = static_cast<uint32_t>(cursor - base);
    return token.kind = kind::kArray;
  }
  uint16_t Reference(uint16_t column) {
    token.index = column;
    return token.kind = kind::kReference;
  }
  uint16_t Function(uint16_t index) {
    token.index = index;
    return token.kind = kind::kFunction;
  }
};

template <typename Sink>
inline uint16_t FormulaEngine::ReadToken(const char*& cursor, const char* end, bool fixedNotation,
                                         Sink& sink) const {
  sink.Begin();
  const LocaleSettings& notation = fixedNotation ? genericLocale : currentLocale;
  while (cursor < end && IsBlank(*cursor)) ++cursor;
  if (cursor == end || *cursor == '\0') return sink.Kind(kind::kEnd);
  char c = *cursor;

  if ((c >= '0' && c <= '9') || c == notation.decimalSeparator) {
    double value = 0;
    size_t used =
        ScanNumber(std::string_view(cursor, end - cursor), notation.decimalSeparator, false, value);
    if (used == 0) return sink.Kind(kind::kInvalid);
    cursor += used;
    return sink.Number(value, IsBadNumber(value) ? ferr::kNum : uint8_t{0});
  }

  if (c == '"' || c == '\'') {
    const char* start = cursor + 1;
    const char* close = static_cast<const char*>(std::memchr(start, c, end - start));
    const char* stop = close != nullptr ? close : end;
    cursor = close != nullptr ? close + 1 : end;
    return sink.String(start, static_cast<size_t>(stop - start), false);
  }

  if (c == '{') {
    ++cursor;
    return sink.Array(cursor, end);
  }

  if (c == notation.listSeparator) {
    ++cursor;
    return sink.Kind(kind::kListSeparator);
  }

  if (text::IsCharAlpha(c) || c == '$' || c == '#' || c == '\\') {
    std::string_view rest(cursor, end - cursor);
    // Fields first, in field order: the first whose name matches and is not followed by more
    // of a word.
    uint16_t searched = fieldCount_ < kMaxFields ? fieldCount_ : kMaxFields;
    for (uint16_t i = 0; i < searched; ++i) {
      const FormulaField& field = fields_[i];
      if ((field.type != kFieldText && field.type != kFieldNumber) || field.name.empty()) continue;
      size_t n = field.name.size();
      if (n > rest.size() || !text::EqualNoCase(rest.substr(0, n), field.name)) continue;
      if (n < rest.size() && text::IsCharAlphaNumeric(rest[n])) continue;
      cursor += n;
      return sink.Reference(i);
    }
    size_t length = 0;
    int function = LookupFunction(rest, length);
    if (function >= 0) {
      cursor += length;
      return sink.Function(static_cast<uint16_t>(function));
    }
    double value = 0;
    if (MatchBoolean(cursor, end, value, length)) {
      cursor += length;
      return sink.Number(value, 0);
    }
    if (c == '#') {
      uint8_t code = MatchErrorLiteral(cursor, end, length);
      if (code != 0) {
        cursor += length;
        return sink.Number(0, code);
      }
    }
    // An unknown name: a string that is "#NAME?" when used as a value, and a path before "!".
    const char* stop = cursor;
    while (stop < end && (text::IsCharAlphaNumeric(*stop) || *stop == '_' || *stop == '\\')) {
      ++stop;
    }
    if (stop == cursor) ++stop;
    const char* start = cursor;
    cursor = stop;
    return sink.String(start, static_cast<size_t>(stop - start), true);
  }

  uint16_t op = kind::kInvalid;
  switch (c) {
    case '=':
      op = kind::kEqual;
      break;
    case '<':
      op = kind::kLess;
      if (cursor + 1 < end && cursor[1] == '=') {
        op = kind::kLessEqual;
        ++cursor;
      } else if (cursor + 1 < end && cursor[1] == '>') {
        op = kind::kNotEqual;
        ++cursor;
      }
      break;
    case '>':
      op = kind::kGreater;
      if (cursor + 1 < end && cursor[1] == '=') {
        op = kind::kGreaterEqual;
        ++cursor;
      }
      break;
    case '+':
      op = kind::kAdd;
      break;
    case '-':
      op = kind::kSubtract;
      break;
    case '&':
      op = kind::kConcatenate;
      break;
    case '*':
      op = kind::kMultiply;
      break;
    case '/':
      op = kind::kDivide;
      break;
    case '^':
      op = kind::kPower;
      break;
    case '%':
      op = kind::kPercent;
      break;
    case '_':
      op = kind::kIntersection;
      break;
    case '!':
      op = kind::kSheet;
      break;
    case ':':
      op = kind::kRange;
      break;
    case '(':
      op = kind::kOpen;
      break;
    case ')':
      op = kind::kClose;
      break;
    default:
      // Tabs and every other character: the cursor stays on it.
      return sink.Kind(kind::kInvalid);
  }
  ++cursor;
  return sink.Kind(op);
}

uint16_t FormulaEngine::NextToken(const char*& cursor, const char* end, FormulaValue& token,
                                  bool fixedNotation) {
  LoadSink sink{*this, token, fixedNotation};
  return ReadToken(cursor, end, fixedNotation, sink);
}

uint16_t FormulaEngine::ScanToken(const char* base, const char*& cursor, const char* end,
                                  FormulaToken& token, bool fixedNotation) const {
  ScanSink sink{base, token};
  return ReadToken(cursor, end, fixedNotation, sink);
}

uint16_t FormulaEngine::LoadToken(const FormulaToken& scanned, const char* base,
                                  const char*& cursor, const char* end, FormulaValue& token,
                                  bool fixedNotation) {
  LoadSink sink{*this, token, fixedNotation};
  sink.Begin();
  switch (scanned.kind) {
    case kind::kNumber:
      return sink.Number(scanned.number, scanned.errorCode);
    case kind::kString:
      return sink.String(base + scanned.offset, scanned.length, scanned.errorCode == ferr::kName);
    case kind::kArray:
      cursor = base + scanned.offset;
      return sink.Array(cursor, end);
    case kind::kReference:
      return sink.Reference(scanned.index);
    case kind::kFunction:
      return sink.Function(scanned.index);
    default:
      return sink.Kind(scanned.kind);
  }
}

bool FormulaEngine::ParseArrayLiteral(const char*& cursor, const char* end, bool fixedNotation,
                                      FormulaValue& token, CellStore* cells) {
  const LocaleSettings& notation = fixedNotation ? genericLocale : currentLocale;
  token.kind = kind::kArray;
  token.flags1 = token.flags2 = rflag::kAbsolute;
  CellCursor write;
  uint32_t row = 0;
  uint16_t column = 0;
  uint16_t widest = 0;
  uint8_t record[kBlockPayload];
  for (;;) {
    while (cursor < end && IsBlank(*cursor)) ++cursor;
    if (cursor == end) return true;  // the end of the text after a separator
    char c = *cursor;
    uint32_t size = 0;
    if ((c >= '0' && c <= '9') || c == '-' || c == notation.decimalSeparator) {
      const char* p = cursor;
      bool negative = false;
      if (*p == '-') {
        negative = true;
        ++p;
        while (p < end && *p == ' ') ++p;
      }
      double value = 0;
      size_t used =
          ScanNumber(std::string_view(p, end - p), notation.decimalSeparator, false, value);
      if (used == 0) return false;
      cursor = p + used;
      if (negative) value = -value;
      size = cell::EncodeNumber(record, row, column, value,
                                IsBadNumber(value) ? ferr::kNum : uint8_t{0});
    } else if (c == '#') {
      size_t length = 0;
      uint8_t code = MatchErrorLiteral(cursor, end, length);
      if (code == 0) return false;
      cursor += length;
      size = cell::EncodeNumber(record, row, column, 0, code);
    } else if (c == '"' || c == '\'') {
      const char* start = cursor + 1;
      const char* close = static_cast<const char*>(std::memchr(start, c, end - start));
      const char* stop = close != nullptr ? close : end;
      cursor = close != nullptr ? close + 1 : end;
      size_t length = static_cast<size_t>(stop - start);
      if (length > kBlockPayload - cell::kTextHeader) length = kBlockPayload - cell::kTextHeader;
      size = cell::EncodeText(record, row, column, std::string_view(start, length));
    } else if (c != notation.listSeparator && c != notation.rowSeparator && c != '}') {
      double value = 0;
      size_t length = 0;
      if (MatchBoolean(cursor, end, value, length)) {
        cursor += length;
        size = cell::EncodeNumber(record, row, column, value);
      } else {
        const char* stop = cursor;
        while (stop < end && std::strchr(".,;()+-*:/!&=$#%{}", *stop) == nullptr) ++stop;
        const char* last = stop;
        while (last > cursor && IsBlank(last[-1])) --last;
        size_t length = static_cast<size_t>(last - cursor);
        if (length > kBlockPayload - cell::kTextHeader) length = kBlockPayload - cell::kTextHeader;
        if (length > 0) {
          size =
              cell::EncodeText(record, row, column, std::string_view(cursor, length), ferr::kName);
        }
        cursor = stop;
      }
    }
    if (size > 0) {
      if (cells != nullptr && !cells->PutCell(record, &write)) token.errorCode = ferr::kMemory;
      if (column > widest) widest = column;
    }
    while (cursor < end && IsBlank(*cursor)) ++cursor;
    if (cursor == end) return false;
    c = *cursor++;
    if (c == notation.listSeparator) {
      if (column >= kLastColumn) return false;
      ++column;
    } else if (c == notation.rowSeparator) {
      if (row >= kLastRow) return false;
      column = 0;
      ++row;
    } else if (c == '}') {
      break;
    } else {
      return false;
    }
    token.column2 = widest;
    token.row2 = row;
  }
  token.column2 = widest;
  token.row2 = row;
  return true;
}

}  // namespace kelpdex
