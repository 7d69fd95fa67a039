// The Cells element of a sheet: one line per cell, read back in one forward pass with a fast path
// for the common plain forms and packed straight into fresh blocks.
#include <charconv>
#include <cmath>
#include <cstring>
#include <string>
#include <vector>

#include "persist/xml_sections.h"
#include "store/block_chain.h"
#include "store/cell_appender.h"
#include "store/cell_error.h"
#include "text/code_page.h"

namespace kelpdex::native_xml {

namespace {

// The longest formula text the reader takes; the writer refuses a longer one rather than write a
// file that would not open again.
constexpr size_t kFormulaTextMax = 1024;

// A few bytes against a constant: a loop in place, cheaper than the library call per cell.
inline bool SameBytes(const uint8_t* p, const char* text, size_t size) {
  for (size_t i = 0; i < size; ++i) {
    if (p[i] != static_cast<uint8_t>(text[i])) return false;
  }
  return true;
}

// The value of an N, T or Error element (told by its first letter). False for a number that does
// not read whole and finite, or an unknown error name.
bool ParseValue(char kind, std::string_view body, double& number, bool& haveNumber, bool& haveText,
                uint8_t& error) {
  if (kind == 'N') {
    auto r = std::from_chars(body.data(), body.data() + body.size(), number);
    haveNumber = !body.empty() && r.ec == std::errc() && r.ptr == body.data() + body.size() &&
                 std::isfinite(number);
    return haveNumber;
  }
  if (kind == 'T') {
    haveText = true;
    return true;
  }
  for (uint8_t code = 0x10; code <= 0xC0; code = static_cast<uint8_t>(code + 0x10)) {
    if (text::EqualNoCase(body, ErrorLiteral(code))) error = code;
  }
  return error != 0;
}

// A value the general path would take as it stands: no byte above 0x7F or below 0x20, no "&" or
// ">", no leading blank and no two blanks in a row. Eight bytes at a time, since every value of a
// document passes through here.
bool PlainValue(const uint8_t* p, size_t size) {
  if (size > 0 && p[0] == ' ') return false;
  constexpr uint64_t kOnes = 0x0101010101010101ull;
  constexpr uint64_t kHigh = 0x8080808080808080ull;
  auto zeroBytes = [&](uint64_t x) { return (x - kOnes) & ~x & kHigh; };
  size_t i = 0;
  bool lastBlank = false;
  for (; i + 8 <= size; i += 8) {
    uint64_t w;
    std::memcpy(&w, p + i, 8);
    if (w & kHigh) return false;
    // Bytes below 0x20: subtracting 0x20 borrows into their high bit.
    if ((w - 0x2020202020202020ull) & ~w & kHigh) return false;
    if (zeroBytes(w ^ 0x2626262626262626ull) || zeroBytes(w ^ 0x3E3E3E3E3E3E3E3Eull)) return false;
    uint64_t blanks = zeroBytes(w ^ 0x2020202020202020ull);
    // Two blanks side by side within the word (little-endian: the next byte is 8 bits up), or
    // one across the boundary with the word before.
    if ((blanks & (blanks << 8)) != 0 || (lastBlank && (blanks & 0x80))) return false;
    lastBlank = (blanks >> 63) != 0;
  }
  for (; i < size; ++i) {
    uint8_t c = p[i];
    if (c >= 0x80 || c < 0x20 || c == '&' || c == '>') return false;
    bool blank = c == ' ';
    if (blank && lastBlank) return false;
    lastBlank = blank;
  }
  return true;
}

class CellReader {
 public:
  explicit CellReader(XmlScanner& x) : x_(x) {}

  // The cells behind the opening tag of a Cells element that is not empty, through its closing
  // tag.
  bool Read(CellStore& cells);

 private:
  bool Fail(ErrorCode code) { return x_.Fail(code); }
  bool ReadCell(Address& last, bool& any, CellAppender& cursor);
  // The common cell forms parsed in place: false when the next element is not one of them, with
  // nothing consumed, so that ReadCell() takes it.
  bool FastCell(Address& last, bool& any, CellAppender& cursor, bool& failed);
  bool StoreCell(const Address& at, uint8_t extra, bool formula, int width, int height,
                 bool haveNumber, double number, bool haveText, std::string_view text,
                 uint8_t error, CellAppender& cursor);

  XmlScanner& x_;
  // Reused for every cell, so that a load allocates per block, not per cell.
  std::vector<uint8_t> record_ = std::vector<uint8_t>(kBlockPayload);
  std::string formulaText_;
};

bool CellReader::ReadCell(Address& last, bool& any, CellAppender& cursor) {
  Address at;
  if (!ReadRc(x_, at, last)) return false;
  if (!at.hasColumn) return Fail(err::kXmlMissingAttribute);
  uint64_t key = (static_cast<uint64_t>(at.row) << 16) | at.column;
  uint64_t lastKey = (static_cast<uint64_t>(last.row) << 16) | last.column;
  if (any && key <= lastKey) return Fail(err::kXmlInvalidAttribute);  // cells come in order
  last = at;
  any = true;
  bool automatic = false;
  if (!x_.BoolAttr("Auto", automatic)) return false;
  uint8_t extra = automatic ? cell::kAuto : 0;
  if (x_.isClose()) return true;  // an empty cell element stores nothing
  bool formula = false;
  std::string& formulaText = formulaText_;
  formulaText.clear();
  int width = 0, height = 0;
  uint8_t error = 0;
  bool haveNumber = false, haveText = false;
  double number = 0;
  std::string_view text;
  // Each child tag is scanned once and dispatched by its name: an optional F followed by one of
  // N, T or Error.
  while (x_.Tag("", scan::kOpen | scan::kAttributes | scan::kOptional)) {
    std::string_view child = x_.name();
    bool value = haveNumber || haveText || error != 0;
    if (child == "F" && !formula && !value) {
      int w = 1, h = 1;
      if (!x_.IntAttr("Width", w, 1, kColumnLimit) || !x_.IntAttr("Height", h, 1, kRowLimit)) {
        return false;
      }
      if (x_.Attr("Width") != nullptr || x_.Attr("Height") != nullptr) {
        width = w;
        height = h;
      }
      if (!x_.isClose()) {
        if (!x_.TextBody(kFormulaTextMax) || !x_.Tag("F", scan::kClose)) return false;
        formulaText.assign(x_.text());
      }
      formula = true;
      continue;
    }
    if (value || (child != "N" && child != "T" && child != "Error")) {
      return Fail(err::kXmlUnexpectedElement);
    }
    std::string name(child);
    size_t limit = child == "T" ? XmlScanner::kTextBufferSize : 64;
    if (!x_.isClose()) {
      if (!x_.TextBody(limit) || !x_.Tag(name, scan::kClose)) return false;
    }
    std::string_view body = x_.isClose() && !x_.isOpen() ? x_.text() : std::string_view();
    if (!ParseValue(name[0], body, number, haveNumber, haveText, error)) {
      return Fail(err::kXmlInvalidData);
    }
    if (haveText) text = body;  // valid until the next value is read
  }
  if (!x_.ok() || !x_.Tag("Cell", scan::kClose)) return false;
  return StoreCell(at, extra, formula, width, height, haveNumber, number, haveText, text, error,
                   cursor);
}

bool CellReader::StoreCell(const Address& at, uint8_t extra, bool formula, int width, int height,
                           bool haveNumber, double number, bool haveText, std::string_view text,
                           uint8_t error, CellAppender& cursor) {
  std::vector<uint8_t>& record = record_;
  const std::string& formulaText = formulaText_;
  uint32_t row = at.row;
  uint16_t column = at.column;
  extra = static_cast<uint8_t>(extra | error);
  if (formula) {
    if (cell::FormulaSize(formulaText.size(), haveText, text.size()) > kBlockPayload) {
      return Fail(err::kXmlInvalidData);
    }
    if (haveText) {
      cell::EncodeFormulaWithString(record.data(), row, column, formulaText, text, extra);
    } else {
      cell::EncodeFormula(record.data(), row, column, formulaText, extra);
      if (haveNumber) cell::SetCachedNumber(record.data(), number);
    }
    if (width > 0)
      cell::SetArray(record.data(), static_cast<uint16_t>(width), static_cast<uint32_t>(height));
  } else if (haveText) {
    cell::EncodeText(record.data(), row, column, text, extra);
  } else if (haveNumber || error != 0) {
    cell::EncodeNumber(record.data(), row, column, number, extra);
  } else {
    return true;
  }
  if (!cursor.Append(record.data())) return Fail(err::kXmlOutOfMemory);
  return true;
}

bool CellReader::FastCell(Address& last, bool& any, CellAppender& cursor, bool& failed) {
  size_t size = 0;
  const uint8_t* p = x_.PeekRaw(size);
  // <Cell rc="...">, with Auto="1" allowed behind the address.
  static constexpr char kOpen[] = "<Cell rc=\"";
  constexpr size_t kOpenSize = sizeof kOpen - 1;
  if (size < kOpenSize + 20 || !SameBytes(p, kOpen, kOpenSize)) return false;
  size_t i = kOpenSize;
  size_t rcStart = i;
  while (i < size && p[i] != '"') {
    uint8_t c = p[i];
    if (!((c >= '0' && c <= '9') || c == 'r' || c == 'c')) return false;
    ++i;
  }
  if (i >= size) return false;
  std::string_view rc(reinterpret_cast<const char*>(p + rcStart), i - rcStart);
  ++i;
  bool automatic = false;
  static constexpr char kAuto[] = " Auto=\"1\"";
  constexpr size_t kAutoSize = sizeof kAuto - 1;
  if (i + kAutoSize <= size && SameBytes(p + i, kAuto, kAutoSize)) {
    automatic = true;
    i += kAutoSize;
  }
  if (i + 3 > size || p[i] != '>' || p[i + 1] != '<') return false;
  i += 2;
  // The value element: N, T or Error, with plain text that needs no decoding.
  const char* name;
  size_t nameSize;
  if (p[i] == 'N' && i + 1 < size && p[i + 1] == '>') {
    name = "N";
    nameSize = 1;
  } else if (p[i] == 'T' && i + 1 < size && p[i + 1] == '>') {
    name = "T";
    nameSize = 1;
  } else if (i + 6 <= size && SameBytes(p + i, "Error>", 6)) {
    name = "Error";
    nameSize = 5;
  } else {
    return false;
  }
  i += nameSize + 1;
  size_t bodyStart = i;
  const void* lt = std::memchr(p + i, '<', size - i);
  if (lt == nullptr) return false;
  i = static_cast<size_t>(static_cast<const uint8_t*>(lt) - p);
  size_t bodySize = i - bodyStart;
  // Anything that whitespace collapsing or decoding would change goes the general way.
  if (!PlainValue(p + bodyStart, bodySize)) return false;
  if (bodySize > XmlScanner::kTextBufferSize) return false;
  // </name></Cell>
  if (i + 2 + nameSize + 1 + 7 > size || p[i + 1] != '/' || !SameBytes(p + i + 2, name, nameSize) ||
      p[i + 2 + nameSize] != '>' || !SameBytes(p + i + 3 + nameSize, "</Cell>", 7)) {
    return false;
  }
  size_t end = i + 3 + nameSize + 7;
  std::string_view body(reinterpret_cast<const char*>(p + bodyStart), bodySize);

  Address at;
  std::string_view rcText = rc;
  if (!ParseAddress(rcText, last, at) || !rcText.empty() || !at.hasColumn) return false;
  uint64_t key = (static_cast<uint64_t>(at.row) << 16) | at.column;
  uint64_t lastKey = (static_cast<uint64_t>(last.row) << 16) | last.column;
  if (any && key <= lastKey) return false;  // the general path reports it with its line
  bool haveNumber = false, haveText = false;
  double number = 0;
  uint8_t error = 0;
  // A value the general path would refuse is left to it, to be reported with its line.
  if (!ParseValue(name[0], body, number, haveNumber, haveText, error)) return false;
  last = at;
  any = true;
  formulaText_.clear();
  // The text is stored before the bytes it lives in are consumed.
  failed = !StoreCell(at, automatic ? cell::kAuto : 0, false, 0, 0, haveNumber, number, haveText,
                      body, error, cursor);
  x_.Consume(end);
  return true;
}

bool CellReader::Read(CellStore& cells) {
  Address last;
  bool any = false;
  CellAppender cursor(cells);
  for (;;) {
    bool failed = false;
    if (FastCell(last, any, cursor, failed)) {
      if (failed) return false;
      continue;
    }
    if (!x_.ok() || !x_.Tag("Cell", kOptionalOpen)) break;
    if (!ReadCell(last, any, cursor)) return false;
  }
  return x_.ok() && x_.Tag("Cells", scan::kClose);
}

class CellWriter {
 public:
  explicit CellWriter(XmlWriter& w) : w_(w) {}

  void Write(const CellStore& cells, CellAt& tooLong) {
    w_.Tag("Cells", TagMode::kOpen, 2, 1);
    CellCursor cursor;
    uint32_t lastRow = kRowLimit;
    while (const CellRecord* r = const_cast<CellStore&>(cells).NextCell(cursor)) {
      if (!w_.ok()) break;
      bool sameRow = cell::Row(r) == lastRow;
      lastRow = cell::Row(r);
      if (!WriteCellLine(r, sameRow)) {
        tooLong = {cell::Row(r), cell::Column(r), true};
        w_.FailTooLong();
        break;
      }
    }
    w_.Tag("Cells", TagMode::kClose, 2, 1);
  }

 private:
  // One line per cell, put together in place: the document's bulk, so no attribute objects.
  bool WriteCellLine(const CellRecord* r, bool sameRow) {
    std::string& line = cellLine_;
    line.assign("\t\t\t<Cell rc=\"");
    char number[kXmlNumberMax];
    auto put = [&](uint32_t v) {
      auto res = std::to_chars(number, number + sizeof number, v);
      line.append(number, static_cast<size_t>(res.ptr - number));
    };
    if (!sameRow) {
      line += 'r';
      put(cell::Row(r) + 1);
      line += 'c';
    } else {
      line += "rc";
    }
    put(cell::Column(r) + 1u);
    line += '"';
    if (cell::IsAuto(r)) line += " Auto=\"1\"";
    line += '>';
    if (cell::IsFormula(r)) {
      line += "<F";
      if (cell::FormulaFlags(r) & cell::kArrayHead) {
        line += " Width=\"";
        put(cell::ArrayColumns(r));
        line += "\" Height=\"";
        put(cell::ArrayRows(r));
        line += '"';
      }
      line += '>';
      const std::string_view formula = cell::FormulaText(r);
      if (formula.size() > kFormulaTextMax || !EscapeXml(formula, line)) return false;
      line += "</F>";
    }
    auto element = [&](const char* name, std::string_view value) {
      line += '<';
      line += name;
      line += '>';
      bool fits = EscapeXml(value, line);
      line += "</";
      line += name;
      line += '>';
      return fits;
    };
    bool fits = true;
    uint8_t error = cell::ErrorNibble(r);
    if (error != 0) {
      fits = element("Error", ErrorLiteral(error));
    } else if (cell::IsText(r)) {
      fits = element("T", cell::Text(r));
    } else if (cell::IsNumber(r)) {
      fits = element("N", std::string_view(number, XmlNumberText(cell::Number(r), number)));
    } else if (cell::FormulaFlags(r) & cell::kCachedString) {
      fits = element("T", cell::CachedString(r));
    } else if (cell::FormulaFlags(r) & cell::kCachedNumber) {
      fits = element("N", std::string_view(number, XmlNumberText(cell::CachedNumber(r), number)));
    }
    if (!fits) return false;
    line += "</Cell>\r\n";
    return w_.RawLine(line);
  }

  XmlWriter& w_;
  std::string cellLine_;
};

}  // namespace

bool ReadCells(XmlScanner& x, CellStore& cells) {
  if (!x.Tag("Cells", scan::kOpen | scan::kOptional)) return x.ok();
  if (x.isClose()) return true;
  CellReader reader(x);
  return reader.Read(cells);
}

void WriteCells(XmlWriter& w, const CellStore& cells, CellAt& tooLong) {
  CellWriter writer(w);
  writer.Write(cells, tooLong);
}

}  // namespace kelpdex::native_xml
