// Formula text between the stored notation ("." decimal, "," list, ";" rows) and the notation of
// the regional settings in force.
#include <cstring>

#include "core/locale_settings.h"
#include "format/number_text.h"
#include "formula/formula_engine.h"

namespace kelpdex {

namespace {

constexpr size_t kMaxRewrite = 1024;

// A string literal again, in double quotes unless it holds one.
void AppendQuoted(std::string& out, std::string_view text) {
  char quote = text.find('"') == std::string_view::npos ? '"' : '\'';
  out += quote;
  out.append(text);
  out += quote;
}

// A numeric literal keeps its digits; only its decimal character changes.
void AppendNumberLiteral(std::string& out, std::string_view literal, char from, char to) {
  for (char c : literal) out += c == from ? to : c;
}

}  // namespace

bool FormulaEngine::RewriteFormula(std::string& text, bool toStored) {
  if (text.empty() || (text[0] != '=' && text[0] != '+')) return false;
  const LocaleSettings& source = toStored ? currentLocale : genericLocale;
  const LocaleSettings& target = toStored ? genericLocale : currentLocale;
  bool fixedSource = !toStored;
  Reset(currentField_, currentRow_);
  std::string out = "=";
  const char* cursor = text.data() + 1;
  const char* end = text.data() + text.size();
  FormulaValue token;
  bool ok = true;
  while (ok && out.size() <= kMaxRewrite) {
    const char* before = cursor;
    while (cursor < end && (*cursor == ' ' || *cursor == '\r' || *cursor == '\n')) ++cursor;
    out.append(before, cursor);
    const char* start = cursor;
    uint16_t t = NextToken(cursor, end, token, fixedSource);
    std::string_view typed(start, cursor - start);
    if (t == kind::kEnd) break;
    if (t == kind::kInvalid) {
      if (syntax_) {
        // A broken array literal: the rest stays as typed.
        out.append(start, end);
        break;
      }
      if (cursor == end) break;
      out += *cursor++;  // a character no token starts with is kept
      continue;
    }
    char first = *start;
    switch (t) {
      case kind::kNumber:
        if ((first >= '0' && first <= '9') || first == source.decimalSeparator) {
          AppendNumberLiteral(out, typed, source.decimalSeparator, target.decimalSeparator);
        } else {
          out.append(typed);  // TRUE, FALSE and error literals read the same everywhere
        }
        break;
      case kind::kString:
      case kind::kEmpty:
        if (first == '"' || first == '\'') {
          std::string_view inside = typed.substr(1);
          if (!inside.empty() && inside.back() == first) inside.remove_suffix(1);
          AppendQuoted(out, inside);
        } else {
          out.append(typed);
        }
        if (t == kind::kString) PopString();
        break;
      case kind::kListSeparator:
        out += target.listSeparator;
        break;
      case kind::kArray: {
        // Element by element, with the target's separators.
        CellStore& cells = TopArray();
        out += '{';
        for (uint32_t row = 0; row <= token.row2; ++row) {
          if (row > 0) out += target.rowSeparator;
          for (uint32_t column = 0; column <= token.column2; ++column) {
            if (column > 0) out += target.listSeparator;
            CellRecord* r = cells.GetCell(row, static_cast<uint16_t>(column));
            if (r == nullptr) continue;
            uint8_t error = cell::ErrorNibble(r);
            if (cell::IsText(r)) {
              if (error == ferr::kName) {
                out.append(cell::Text(r));
              } else {
                AppendQuoted(out, cell::Text(r));
              }
            } else if (error != 0) {
              out.append(ErrorLiteral(error));
            } else {
              char number[32];
              out.append(number, NumberToGeneral(cell::Number(r), number, &target));
            }
          }
        }
        out += '}';
        PopArray();
        break;
      }
      default:
        out.append(typed);  // names, functions, operators and parentheses as typed
        break;
    }
  }
  Reset(currentField_, currentRow_);
  if (out.size() > kMaxRewrite) return false;
  text = out;
  return true;
}

}  // namespace kelpdex
