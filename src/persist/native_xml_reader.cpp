#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstring>
#include <memory>
#include <string>
#include <vector>

#include "format/format_string.h"
#include "format/number_style.h"
#include "persist/native_xml.h"
#include "persist/xml_charts.h"
#include "persist/xml_scanner.h"
#include "store/bytes.h"
#include "store/catalogue.h"
#include "store/cell_error.h"
#include "text/code_page.h"

namespace kelpdex {

namespace {

constexpr ScanFlags kOpenAttributes = scan::kOpen | scan::kAttributes;
constexpr ScanFlags kOptionalOpen = scan::kOpen | scan::kAttributes | scan::kOptional;

// "r<row>c<col>" and its parts, 1-based in the text; an absent number takes the base's.
struct Address {
  uint32_t row = 0;
  uint16_t column = 0;
  bool hasRow = false;
  bool hasColumn = false;
};

bool ParseNumber(std::string_view& text, uint32_t& value) {
  size_t n = 0;
  uint64_t v = 0;
  while (n < text.size() && text[n] >= '0' && text[n] <= '9' && v <= 0xFFFFFFFFull) {
    v = v * 10 + static_cast<uint64_t>(text[n] - '0');
    ++n;
  }
  if (n == 0 || v > 0xFFFFFFFFull) return false;
  value = static_cast<uint32_t>(v);
  text.remove_prefix(n);
  return true;
}

// One address, moving `text` past it. Rows 1..2097152, columns 1..2047.
bool ParseAddress(std::string_view& text, const Address& base, Address& out) {
  out = base;
  out.hasRow = out.hasColumn = false;
  if (!text.empty() && (text[0] == 'r' || text[0] == 'R')) {
    text.remove_prefix(1);
    uint32_t row = 0;
    if (!text.empty() && text[0] >= '0' && text[0] <= '9') {
      if (!ParseNumber(text, row) || row < 1 || row > kRowLimit) return false;
      out.row = row - 1;
    }
    out.hasRow = true;
  }
  if (!text.empty() && (text[0] == 'c' || text[0] == 'C')) {
    text.remove_prefix(1);
    uint32_t column = 0;
    if (!ParseNumber(text, column) || column < 1 || column > kColumnLimit) return false;
    out.column = static_cast<uint16_t>(column - 1);
    out.hasColumn = true;
  }
  return out.hasRow || out.hasColumn;
}

template <size_t N>
bool FindWord(const char* const (&words)[N], std::string_view text, uint8_t& value) {
  for (size_t i = 0; i < N; ++i) {
    if (text == words[i]) {
      value = static_cast<uint8_t>(i);
      return true;
    }
  }
  return false;
}

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

// Cells come in strictly ascending order, so they are packed straight into fresh blocks, as a
// binary load does, and the sheet takes the chain once at the end, whatever happened.
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

class CellAppender {
 public:
  explicit CellAppender(CellStore& cells) : cells_(cells) {}
  ~CellAppender() { cells_.AdoptChain(head_); }
  CellAppender(const CellAppender&) = delete;
  CellAppender& operator=(const CellAppender&) = delete;

  bool Append(const uint8_t* record) {
    uint32_t size = cell::Size(record);
    if (tail_ == nullptr || tail_->used + size > kBlockPayload) {
      RowBlock* b = cells_.TakeSpareBlock();
      if (b == nullptr) return false;
      b->next = nullptr;
      b->prev = tail_;
      if (tail_ != nullptr) {
        tail_->next = b;
      } else {
        head_ = b;
      }
      tail_ = b;
    }
    std::memcpy(tail_->data + tail_->used, record, size);
    tail_->used = static_cast<uint16_t>(tail_->used + size);
    return true;
  }

 private:
  CellStore& cells_;
  RowBlock* head_ = nullptr;
  RowBlock* tail_ = nullptr;
};

class DocumentReader {
 public:
  DocumentReader(FileStream& stream, Workbook& book) : x_(stream), book_(book) {}

  bool Read();
  int line() const { return x_.errorLine() != 0 ? x_.errorLine() : x_.line(); }
  const XmlScanner& scanner() const { return x_; }

 private:
  bool Fail(ErrorCode code) { return x_.Fail(code); }
  // Closes an element opened with attributes, unless it was empty.
  bool CloseIfOpen(std::string_view name) { return x_.isClose() || x_.Tag(name, scan::kClose); }
  bool Word(std::string_view attribute, const char* const* words, size_t count, uint8_t& value) {
    const char* text = x_.Attr(attribute);
    if (text == nullptr) return true;
    for (size_t i = 0; i < count; ++i) {
      if (std::strcmp(text, words[i]) == 0) {
        value = static_cast<uint8_t>(i);
        return true;
      }
    }
    return Fail(err::kXmlInvalidAttribute);
  }
  bool Rc(Address& out, const Address& base) {
    const char* rc = x_.RequiredAttr("rc");
    if (rc == nullptr) return false;
    std::string_view text(rc);
    if (!ParseAddress(text, base, out) || !text.empty()) return Fail(err::kXmlMissingAttribute);
    return true;
  }

  // An "rc" attribute holding two addresses apart by ":".
  bool RcRange(Address& first, Address& last) {
    const char* rc = x_.RequiredAttr("rc");
    if (rc == nullptr) return false;
    std::string_view text(rc);
    if (!ParseAddress(text, Address(), first) || text.empty() || text[0] != ':') {
      return Fail(err::kXmlMissingAttribute);
    }
    text.remove_prefix(1);
    if (!ParseAddress(text, Address(), last) || !text.empty()) {
      return Fail(err::kXmlMissingAttribute);
    }
    return true;
  }

  bool ReadLastModification();
  bool ReadWindow();
  bool ReadDropDownLists();
  bool ReadFontAttributes(uint8_t* font);
  bool ReadStyles(std::vector<StyleRecord>& styles, std::vector<FontRecord>& fonts);
  bool ReadStyle(StyleRecord& record);
  bool ReadNumberFormat(StyleRecord& record);
  bool ReadInspectCells();
  bool ReadWorksheet(Worksheet& sheet);
  bool ReadFormatting(Worksheet& sheet);
  bool ReadCells(Worksheet& sheet);
  bool ReadCell(Address& last, bool& any, CellAppender& cursor);
  // The common cell forms parsed in place: false when the next element is not one of them, with
  // nothing consumed, so that ReadCell() takes it.
  bool FastCell(Address& last, bool& any, CellAppender& cursor, bool& failed);
  bool StoreCell(const Address& at, uint8_t extra, bool formula, int width, int height,
                 bool haveNumber, double number, bool haveText, std::string_view text,
                 uint8_t error, CellAppender& cursor);
  bool ReadGeneralSettings(Worksheet& sheet);
  bool ReadPageSettings(Worksheet& sheet);
  bool ReadBackground(uint8_t* record);
  bool ReadContainer(Worksheet& sheet, std::vector<bool>& seenIds);
  bool ReadLine(uint8_t* style, uint8_t* colourSet, uint8_t* width, uint8_t* colour);

  XmlScanner x_;
  Workbook& book_;
  uint32_t folders_ = 0;
  uint32_t sheets_ = 0;
  // Reused for every cell, so that a load allocates per block, not per cell.
  std::vector<uint8_t> record_ = std::vector<uint8_t>(kBlockPayload);
  std::string formulaText_;
};

bool DocumentReader::ReadLastModification() {
  if (!x_.Tag("LastModification", scan::kOpen | scan::kOptional)) return x_.ok();
  if (!x_.Text("User", 127)) return false;
  book_.lastSavedBy.assign(x_.text());
  if (x_.Text("Date", 49, scan::kOptional)) book_.lastSavedAt.assign(x_.text());
  return x_.ok() && x_.Tag("LastModification", scan::kClose);
}

bool DocumentReader::ReadWindow() {
  if (!x_.Tag("Window", scan::kOpen | scan::kOptional)) return x_.ok();
  if (x_.isClose()) return true;
  int visible = book_.treePaneVisible, size = book_.treePaneWidth;
  if (x_.Tag("TreePane", kOptionalOpen)) {
    if (!x_.IntAttr("Visible", visible, 0, 65534) || !x_.IntAttr("Width", size, 0, 65534) ||
        !CloseIfOpen("TreePane")) {
      return false;
    }
    book_.treePaneVisible = static_cast<uint16_t>(visible);
    book_.treePaneWidth = static_cast<uint16_t>(size);
  }
  visible = book_.inspectPaneVisible;
  size = book_.inspectPaneHeight;
  if (x_.Tag("InspectPane", kOptionalOpen)) {
    if (!x_.IntAttr("Visible", visible, 0, 65534) || !x_.IntAttr("Height", size, 0, 65534) ||
        !CloseIfOpen("InspectPane")) {
      return false;
    }
    book_.inspectPaneVisible = static_cast<uint16_t>(visible);
    book_.inspectPaneHeight = static_cast<uint16_t>(size);
  }
  return x_.ok() && x_.Tag("Window", scan::kClose);
}

bool DocumentReader::ReadDropDownLists() {
  if (!x_.Tag("DropDownLists", scan::kOpen | scan::kOptional)) return x_.ok();
  if (x_.isClose()) return true;
  while (x_.Tag("List", kOptionalOpen)) {
    int id = 0;
    if (x_.RequiredAttr("ID") == nullptr || !x_.IntAttr("ID", id, 1, 100)) return false;
    DropDownList& list = book_.dropDownLists[id - 1];
    if (list.used) return Fail(err::kXmlInvalidAttribute);
    list.used = true;
    list.name = "List " + std::to_string(id) + ".";
    if (x_.isClose()) continue;
    if (x_.Text("Name", 29, scan::kOptional)) list.name.assign(x_.text());
    while (x_.Text("Item", 1024, scan::kOptional)) list.items.emplace_back(x_.text());
    if (!x_.ok() || !x_.Tag("List", scan::kClose)) return false;
  }
  return x_.ok() && x_.Tag("DropDownLists", scan::kClose);
}

bool DocumentReader::ReadFontAttributes(uint8_t* f) {
  if (const char* name = x_.Attr("Name")) {
    size_t n = std::strlen(name);
    if (n > 127) return Fail(err::kXmlInvalidAttribute);
    std::memcpy(f + font::kNameAt, name, n);
  }
  int size = 0;
  if (!x_.IntAttr("Size", size, 0, 255)) return false;
  f[font::kSizeAt] = static_cast<uint8_t>(size);
  if (!Word("Family", xml_words::kFamilies, 6, f[font::kFamilyAt])) return false;
  if (const char* weight = x_.Attr("Weight");
      weight != nullptr && std::strcmp(weight, "Regular") == 0) {
    f[font::kWeightAt] = 0;  // the reader also takes "Regular" for "Normal"
  } else if (!Word("Weight", xml_words::kWeights, 4, f[font::kWeightAt])) {
    return false;
  }
  if (const char* slant = x_.Attr("Slant")) f[font::kItalicAt] = std::strcmp(slant, "Italic") == 0;
  bool underline = false, strikeout = false;
  if (!x_.BoolAttr("Underline", underline) || !x_.BoolAttr("Strikeout", strikeout)) return false;
  f[font::kUnderlineAt] = underline;
  f[font::kStrikeoutAt] = strikeout;
  return Word("CharSet", xml_words::kCharSets, 17, f[font::kCharSetAt]);
}

bool DocumentReader::ReadNumberFormat(StyleRecord& record) {
  if (!x_.Tag("", kOpenAttributes)) return false;
  std::string child(x_.name());
  NumberStyle s;
  static const char* const kChildren[format_kind::kCount] = {
      "General",  "Default",    "Currency", "Accounting", "Date",       "Time",
      "DateTime", "Percentage", "Fraction", "Scientific", "UserDefined"};
  uint8_t kind = 0;
  if (!FindWord(kChildren, child, kind)) return Fail(err::kXmlUnexpectedElement);
  s.kind = kind;
  int v = 0;
  if (x_.Attr("DecimalDigits") != nullptr) {
    if (!x_.IntAttr("DecimalDigits", v, 0, 14)) return false;
    s.decimalDigits = static_cast<uint8_t>(v);
    s.fixedDecimals = true;
  }
  if (x_.Attr("LeadingZeroes") != nullptr) {
    v = 0;
    if (!x_.IntAttr("LeadingZeroes", v, 0, 255)) return false;
    s.leadingZeroes = static_cast<uint8_t>(v);
    s.leadingZeroesSet = true;
  }
  bool flag = false;
  if (!x_.BoolAttr("GroupDigits", flag)) return false;
  s.groupDigits = flag;
  static const char* const kNegative[4] = {"Minus", "Red", "Brackets", "RedAndBrackets"};
  static const char* const kPositions[4] = {"$1.1", "$ 1.1", "1.1$", "1.1 $"};
  if (!Word("Negative", kNegative, 4, s.negative) ||
      !Word("SymbolPosition", kPositions, 4, s.symbolPosition)) {
    return false;
  }
  if (const char* symbol = x_.Attr("Symbol")) {
    std::strncpy(s.symbol, symbol, sizeof s.symbol - 1);
  }
  v = 0;
  if (!x_.IntAttr(kind == format_kind::kDateTime ? "DateIndex" : "Index", v, 0, 255)) return false;
  s.index = static_cast<uint8_t>(v);
  v = 0;
  if (!x_.IntAttr("TimeIndex", v, 0, 255)) return false;
  s.timeIndex = static_cast<uint8_t>(v);
  flag = false;
  if (!x_.BoolAttr("DateAfterTime", flag)) return false;
  s.dateAfterTime = flag;
  flag = false;
  if (!x_.BoolAttr("SystemDateOrder", flag)) return false;
  s.systemDateOrder = flag;
  int64_t denominator = 0;
  if (!x_.IntAttr("Denominator", denominator, 0, INT64_MAX)) return false;
  s.denominator = denominator;
  v = 0;
  if (!x_.IntAttr("DenominatorDigits", v, 0, 9)) return false;
  s.denominatorDigits = static_cast<uint8_t>(v);
  v = 0;
  if (!x_.IntAttr("Exponent", v, 0, 2)) return false;
  s.exponent = static_cast<uint8_t>(v);
  if (kind == format_kind::kUserDefined) {
    if (!x_.isClose()) {
      if (!x_.TextBody(kFormatTextMax)) return false;
      std::memcpy(s.userFormat, x_.text().data(), x_.text().size());
      if (!x_.Tag("UserDefined", scan::kClose)) return false;
    }
  } else if (!CloseIfOpen(child)) {
    return false;
  }
  WriteNumberStyle(s, record);
  return x_.Tag("NumberFormat", scan::kClose);
}

bool DocumentReader::ReadStyle(StyleRecord& record) {
  uint8_t* b = record.bytes;
  if (x_.Tag("FontRef", kOptionalOpen)) {
    int id = 0;
    uint32_t colour = 0;
    if (!x_.IntAttr("FontID", id, 0, 127)) return false;
    b[style::kFontSetAt] = 1;
    b[style::kFontIndexAt] = static_cast<uint8_t>(id);
    if (x_.Attr("Color") != nullptr) {
      if (!x_.ColourAttr("Color", colour)) return false;
      b[style::kFontColourSetAt] = 1;
      StoreU32(b + style::kFontColourAt, colour);
    }
    if (!CloseIfOpen("FontRef")) return false;
  }
  if (x_.Tag("NumberFormat", scan::kOpen | scan::kOptional) && !ReadNumberFormat(record)) {
    return false;
  }
  if (x_.Tag("FillPattern", kOptionalOpen)) {
    if (!Word("PatternType", xml_words::kPatterns, 23, b[style::kFillAt])) return false;
    uint32_t colour = 0;
    if (x_.Attr("PatternColor") != nullptr) {
      if (!x_.ColourAttr("PatternColor", colour)) return false;
      b[style::kFillColourFlagsAt] |= 1;
      StoreU32(b + style::kFillColourAt, colour);
    }
    if (x_.Attr("BackgroundColor") != nullptr) {
      if (!x_.ColourAttr("BackgroundColor", colour)) return false;
      b[style::kFillColourFlagsAt] |= 2;
      StoreU32(b + style::kFillBackgroundAt, colour);
    }
    if (!CloseIfOpen("FillPattern")) return false;
  }
  if (x_.Tag("Alignment", kOptionalOpen)) {
    static const char* const kVertical[] = {"Default", "Top", "Center", "Bottom"};
    static const uint8_t kVerticalValue[] = {2, 4, 5, 7};
    static const char* const kHorizontal[] = {"Default", "Left", "Center", "Right"};
    static const uint8_t kHorizontalValue[] = {4, 1, 2, 3};
    uint8_t v = 0;
    uint8_t h = 0;
    for (int i = 0; i < 4; ++i) {
      if (b[style::kVerticalAt] == kVerticalValue[i]) v = static_cast<uint8_t>(i);
      if (b[style::kHorizontalAt] == kHorizontalValue[i]) h = static_cast<uint8_t>(i);
    }
    if (!Word("VerticalAlignment", kVertical, 4, v) ||
        !Word("HorizontalAlignment", kHorizontal, 4, h)) {
      return false;
    }
    b[style::kVerticalAt] = kVerticalValue[v];
    b[style::kHorizontalAt] = kHorizontalValue[h];
    int hi = 0, vi = 0, rotation = 0;
    bool wrap = false, fit = false;
    if (!x_.IntAttr("HorizontalIndent", hi, 0, 255) || !x_.IntAttr("VerticalIndent", vi, 0, 255) ||
        !x_.BoolAttr("WrapText", wrap) || !x_.BoolAttr("FitToCell", fit) ||
        !x_.IntAttr("Rotation", rotation, -360, 360) || !CloseIfOpen("Alignment")) {
      return false;
    }
    b[style::kIndentAt] = static_cast<uint8_t>(hi);
    b[style::kIndentAt + 1] = static_cast<uint8_t>(vi);
    b[style::kWrapAt] = wrap;
    b[style::kFitAt] = fit;
    StoreU16(b + style::kRotationAt, static_cast<uint16_t>(static_cast<int16_t>(rotation)));
  }
  if (x_.Tag("DropDownListRef", kOptionalOpen)) {
    int id = 0;
    bool sort = false, append = false, complete = false;
    if (!x_.IntAttr("ListID", id, 1, 100) || !x_.BoolAttr("Sort", sort) ||
        !x_.BoolAttr("AutoAppend", append) || !x_.BoolAttr("AutoComplete", complete) ||
        !CloseIfOpen("DropDownListRef")) {
      return false;
    }
    StoreU16(b + style::kDropDownAt, static_cast<uint16_t>(id));
    b[style::kDropDownSortAt] = sort;
    b[style::kDropDownAppendAt] = append;
    b[style::kDropDownCompleteAt] = complete;
  }
  if (x_.Tag("Protection", kOptionalOpen)) {
    // The reader's names, which are not the writer's.
    bool protect = false, hide = false;
    if (!x_.BoolAttr("Protect", protect) || !x_.BoolAttr("HideFormula", hide) ||
        !CloseIfOpen("Protection")) {
      return false;
    }
    b[style::kProtectedAt] = protect;
    b[style::kHiddenAt] = hide;
  }
  if (x_.Tag("Borders", kOptionalOpen)) {
    if (!Word("Style", xml_words::kLineStyles, 10, b[style::kBorderLineAt])) return false;
    uint32_t colour = 0;
    if (x_.Attr("Color") != nullptr) {
      if (!x_.ColourAttr("Color", colour)) return false;
      b[style::kBorderColourSetAt] = 1;
      StoreU32(b + style::kBorderColourAt, colour);
    }
    if (!x_.isClose()) {
      if (!x_.TextBody(1024) || !x_.Tag("Borders", scan::kClose)) return false;
      std::string_view sides = x_.text();
      static const struct {
        uint8_t bit;
        const char* word;
      } kSides[] = {{4, "Left"},   {8, "Right"},         {1, "Top"},
                    {2, "Bottom"}, {16, "DiagonalLeft"}, {32, "DiagonalRight"}};
      // Whole words only: "Left" must not be found inside "DiagonalLeft".
      size_t at = 0;
      while (at < sides.size()) {
        size_t end = sides.find(' ', at);
        if (end == std::string_view::npos) end = sides.size();
        std::string_view word = sides.substr(at, end - at);
        for (const auto& side : kSides) {
          if (word == side.word) b[style::kBordersAt] |= side.bit;
        }
        at = end + 1;
      }
    }
  }
  return x_.ok();
}

bool DocumentReader::ReadStyles(std::vector<StyleRecord>& styles, std::vector<FontRecord>& fonts) {
  if (!x_.Tag("Styles", scan::kOpen | scan::kOptional)) return x_.ok();
  if (x_.isClose()) return true;
  while (x_.Tag("Font", kOptionalOpen)) {
    int id = 0;
    if (x_.RequiredAttr("ID") == nullptr || !x_.IntAttr("ID", id, 1, 127)) return false;
    if (static_cast<size_t>(id) != fonts.size()) return Fail(err::kXmlInvalidAttribute);
    FontRecord f{};
    if (!ReadFontAttributes(f.bytes) || !CloseIfOpen("Font")) return false;
    fonts.push_back(f);
  }
  if (!x_.ok()) return false;
  while (x_.Tag("Style", kOptionalOpen)) {
    if (styles.size() >= kMaxStyles) return Fail(err::kXmlUnexpectedElement);
    // A style starts as the new document's: all zero but for the default alignment.
    StyleRecord record = StyleTable().Style(0);
    if (!x_.isClose() && (!ReadStyle(record) || !x_.Tag("Style", scan::kClose))) return false;
    styles.push_back(record);
  }
  return x_.ok() && x_.Tag("Styles", scan::kClose);
}

bool DocumentReader::ReadInspectCells() {
  if (!x_.Tag("InspectCells", scan::kOpen | scan::kOptional)) return x_.ok();
  if (x_.isClose()) return true;
  while (x_.Tag("Cell", kOptionalOpen)) {
    InspectedCell c;
    uint8_t* b = c.bytes.data();
    Address at;
    if (!Rc(at, Address())) return false;
    StoreU32(b + inspected_cell::kRowAt, at.row);
    StoreU32(b + inspected_cell::kColumnAt, at.column);
    if (const char* path = x_.Attr("Worksheet")) {
      std::strncpy(reinterpret_cast<char*>(b + inspected_cell::kPathAt), path, 255);
    }
    if (const char* name = x_.Attr("Name")) {
      std::strncpy(reinterpret_cast<char*>(b + inspected_cell::kNameAt), name,
                   kInspectedCellSize - inspected_cell::kNameAt - 1);
    }
    if (!CloseIfOpen("Cell")) return false;
    book_.inspectCells.push_back(c);
  }
  return x_.ok() && x_.Tag("InspectCells", scan::kClose);
}

bool DocumentReader::ReadBackground(uint8_t* b) {
  using namespace background;
  if (!x_.Tag("Background", scan::kOpen | scan::kOptional)) return x_.ok();
  if (x_.isClose()) return true;
  if (!x_.Tag("", kOpenAttributes)) return false;
  std::string kind(x_.name());
  std::memset(b, 0, kBackgroundSize);
  if (kind == "FillPattern") {
    b[kKindAt] = background_kind::kFill;
    if (!Word("PatternType", xml_words::kPatterns, 23, b[kPatternAt])) return false;
    uint32_t colour = 0;
    if (x_.Attr("PatternColor") != nullptr) {
      if (!x_.ColourAttr("PatternColor", colour)) return false;
      b[kColourFlagsAt] |= 1;
      StoreU32(b + kPatternColourAt, colour);
    }
    if (x_.Attr("BackgroundColor") != nullptr) {
      if (!x_.ColourAttr("BackgroundColor", colour)) return false;
      b[kColourFlagsAt] |= 2;
      StoreU32(b + kBackgroundColourAt, colour);
    }
    if (!CloseIfOpen("FillPattern")) return false;
  } else if (kind == "Fractal") {
    b[kKindAt] = background_kind::kFractal;
    if (!x_.isClose()) {
      static const char* const kNames[6] = {"Zr", "Zi", "MinX", "MaxX", "MinY", "MaxY"};
      for (int k = 0; k < 6; ++k) {
        if (!x_.Text(kNames[k], 64, scan::kOptional)) {
          if (!x_.ok()) return false;
          continue;
        }
        std::string_view t = x_.text();
        double v = 0;
        auto r = std::from_chars(t.data(), t.data() + t.size(), v);
        if (r.ec != std::errc() || r.ptr != t.data() + t.size() || !std::isfinite(v)) {
          return Fail(err::kXmlInvalidData);
        }
        std::memcpy(b + kFractalAt + 8 * k, &v, 8);
      }
      uint8_t count = 0;
      while (x_.Text("Color", 7, scan::kOptional)) {
        std::string_view t = x_.text();
        uint32_t colour = 0;
        if (count == kMaxColours || t.size() != 7 || !ParseColourName(t, colour)) {
          return Fail(err::kXmlInvalidData);
        }
        StoreU32(b + kColoursAt + 4 * count, colour);
        ++count;
      }
      b[kColourCountAt] = count;
      if (!x_.ok() || !x_.Tag("Fractal", scan::kClose)) return false;
    }
  } else if (kind == "Image") {
    b[kKindAt] = background_kind::kImage;
    static const char* const kViews[3] = {"Default", "FitToWindowSize", "Wallpaper"};
    if (!Word("View", kViews, 3, b[kViewAt])) return false;
    std::string_view path;
    if (!x_.isClose()) {
      if (!x_.TextBody(255)) return false;
      path = x_.text();
    }
    // Only the image kinds the program can draw.
    size_t dot = path.rfind('.');
    std::string_view extension = dot == std::string_view::npos ? "" : path.substr(dot);
    bool known = false;
    for (const char* e : {".bmp", ".jpg", ".jpeg", ".png"})
      known |= text::EqualNoCase(extension, e);
    if (!known) return Fail(err::kXmlInvalidData);
    std::memcpy(b + kImagePathAt, path.data(), path.size());
    if (!x_.isClose() && !x_.Tag("Image", scan::kClose)) return false;
  } else {
    return Fail(err::kXmlUnexpectedElement);
  }
  return x_.Tag("Background", scan::kClose);
}

bool DocumentReader::ReadLine(uint8_t* style, uint8_t* colourSet, uint8_t* width, uint8_t* colour) {
  if (!Word("Style", xml_words::kLineStyles, 10, *style)) return false;
  uint32_t value = 0;
  if (x_.Attr("Color") != nullptr) {
    if (!x_.ColourAttr("Color", value)) return false;
    *colourSet = 1;
    StoreU32(colour, value);
  }
  int w = 0;
  if (!x_.IntAttr("Width", w, 0, 65535)) return false;
  StoreU16(width, static_cast<uint16_t>(w));
  return true;
}

bool DocumentReader::ReadContainer(Worksheet& sheet, std::vector<bool>& seenIds) {
  using namespace container;
  ContainerRecord c;
  uint8_t* b = c.bytes.data();
  int64_t id = 0;
  int columns = 0, rows = 0, horizontal = 0, vertical = 0, opacity = 0;
  if (!x_.IntAttr("ID", id, 0, 0xFFFFFFFFll) || !x_.IntAttr("Columns", columns, 0, 65535) ||
      !x_.IntAttr("Rows", rows, 0, 65535) || !x_.IntAttr("HorzSpacing", horizontal, 0, 65535) ||
      !x_.IntAttr("VertSpacing", vertical, 0, 65535) || !x_.IntAttr("Opacity", opacity, 0, 65535)) {
    return false;
  }
  // An id already used in this sheet gives way to the lowest free one.
  if (id <= 255) {
    if (seenIds[static_cast<size_t>(id)]) {
      id = 1;
      while (id <= 255 && seenIds[static_cast<size_t>(id)]) ++id;
    }
    if (id <= 255) seenIds[static_cast<size_t>(id)] = true;
  }
  StoreU32(b + kIdAt, static_cast<uint32_t>(id));
  StoreU16(b + kColumnsAt, static_cast<uint16_t>(columns));
  StoreU16(b + kRowsAt, static_cast<uint16_t>(rows));
  StoreU16(b + kHorzSpacingAt, static_cast<uint16_t>(horizontal));
  StoreU16(b + kVertSpacingAt, static_cast<uint16_t>(vertical));
  StoreU16(b + kOpacityAt, static_cast<uint16_t>(opacity));
  if (x_.isClose()) {
    sheet.containers.push_back(std::move(c));
    return true;
  }
  if (x_.Tag("Placement", kOptionalOpen)) {
    Address at;
    int left = 0, top = 0, right = 0, bottom = 0;
    if (!Rc(at, Address()) || !x_.IntAttr("Left", left, INT32_MIN, INT32_MAX) ||
        !x_.IntAttr("Top", top, INT32_MIN, INT32_MAX) ||
        !x_.IntAttr("Right", right, INT32_MIN, INT32_MAX) ||
        !x_.IntAttr("Bottom", bottom, INT32_MIN, INT32_MAX) || !CloseIfOpen("Placement")) {
      return false;
    }
    StoreU32(b + kPlacementRowAt, at.row);
    StoreU16(b + kPlacementColumnAt, at.column);
    StoreU32(b + kPlacementLeftAt, static_cast<uint32_t>(left));
    StoreU32(b + kPlacementTopAt, static_cast<uint32_t>(top));
    StoreU32(b + kPlacementRightAt, static_cast<uint32_t>(right));
    StoreU32(b + kPlacementBottomAt, static_cast<uint32_t>(bottom));
  }
  if (x_.Tag("Border", kOptionalOpen)) {
    if (!ReadLine(b + kBorderStyleAt, b + kBorderColourSetAt, b + kBorderWidthAt,
                  b + kBorderColourAt) ||
        !CloseIfOpen("Border")) {
      return false;
    }
  }
  if (!x_.ok() || !ReadBackground(b + kBackgroundAt)) return false;
  if (x_.Tag("Title", scan::kOpen | scan::kOptional) && !x_.isClose()) {
    if (x_.Tag("Font", kOptionalOpen)) {
      if (!ReadFontAttributes(b + kTitleFontAt) || !CloseIfOpen("Font")) return false;
      b[kTitleFontSetAt] = 1;
    }
    if (x_.Text("Text", 127, scan::kOptional)) {
      std::memcpy(b + kTitleTextAt, x_.text().data(), x_.text().size());
    }
    if (!x_.ok() || !x_.Tag("Title", scan::kClose)) return false;
  }
  if (!x_.ok()) return false;
  if (x_.Tag("Objects", scan::kOpen | scan::kOptional) && !x_.isClose()) {
    uint32_t count = 0;
    while (x_.Tag("", kOptionalOpen)) {
      if (count == kMaxObjects) return Fail(err::kXmlUnexpectedElement);
      std::string_view kind = x_.name();
      if (kind == "Image") {
        int image = 0;
        if (x_.RequiredAttr("ID") == nullptr || !x_.IntAttr("ID", image, 1, 255) ||
            !CloseIfOpen("Image")) {
          return false;
        }
        b[kObjectsAt + count++] = static_cast<uint8_t>(image);
      } else if (kind == "Chart2D" || kind == "ChartXY" || kind == "Chart3D") {
        ChartRecord chart;
        if (c.charts.size() == 255 || !ReadChartElement(x_, chart)) {
          return c.charts.size() == 255 ? Fail(err::kXmlUnexpectedElement) : false;
        }
        c.charts.push_back(std::move(chart));
        b[kObjectsAt + count++] = 0;
      } else {
        return Fail(err::kXmlUnexpectedElement);
      }
    }
    if (!x_.ok() || !x_.Tag("Objects", scan::kClose)) return false;
    b[kObjectCountAt] = static_cast<uint8_t>(count);
  }
  if (!x_.ok() || !x_.Tag("Container", scan::kClose)) return false;
  b[kChartCountAt] = static_cast<uint8_t>(c.charts.size());
  sheet.containers.push_back(std::move(c));
  return true;
}

bool DocumentReader::ReadFormatting(Worksheet& sheet) {
  if (!x_.Tag("Formatting", scan::kOpen | scan::kOptional)) return x_.ok();
  if (x_.isClose()) return true;
  FormatStore& f = sheet.formats;
  while (x_.Tag("Column", kOptionalOpen)) {
    Address at;
    if (!Rc(at, Address()) || !at.hasColumn || at.hasRow) return Fail(err::kXmlInvalidAttribute);
    int width = 0, styleId = 0, autoHeight = 0;
    bool fixed = false;
    if (!x_.IntAttr("Width", width, 0, 4095) || !x_.BoolAttr("Fixed", fixed) ||
        !x_.IntAttr("StyleID", styleId, 0, 511) ||
        !x_.IntAttr("AutoRowHeight", autoHeight, 0, 4095) || !CloseIfOpen("Column")) {
      return false;
    }
    ColumnFormat& column = f.Column(at.column);
    column.SetWidth(static_cast<uint16_t>(width), fixed);
    column.SetStyleId(static_cast<uint16_t>(styleId));
    column.SetAutoRowHeight(static_cast<uint16_t>(autoHeight));
  }
  if (!x_.ok()) return false;
  while (x_.Tag("Row", kOptionalOpen)) {
    Address at;
    if (!Rc(at, Address()) || !at.hasRow || at.hasColumn) return Fail(err::kXmlInvalidAttribute);
    int height = 0;
    bool fixed = false;
    if (!x_.IntAttr("Height", height, 0, 4095) || !x_.BoolAttr("Fixed", fixed)) return false;
    if ((height != 0 || fixed) &&
        !f.FillRowWords(at.row, 1, static_cast<uint16_t>((height << 1) | (fixed ? 1 : 0)))) {
      return Fail(err::kXmlOutOfMemory);
    }
    if (x_.isClose()) continue;
    while (x_.Tag("Span", kOptionalOpen)) {
      Address first, last;
      if (!RcRange(first, last)) return false;
      if (last.column < first.column) return Fail(err::kXmlMissingAttribute);
      int styleId = 0;
      if (!x_.IntAttr("StyleID", styleId, 0, 511) || !CloseIfOpen("Span")) return false;
      if (!f.ApplyStyleRun(
              StyleRun{first.column, last.column, at.row, static_cast<uint16_t>(styleId)})) {
        return Fail(err::kXmlOutOfMemory);
      }
    }
    if (!x_.ok() || !x_.Tag("Row", scan::kClose)) return false;
  }
  return x_.ok() && x_.Tag("Formatting", scan::kClose);
}

bool DocumentReader::ReadCell(Address& last, bool& any, CellAppender& cursor) {
  Address at;
  if (!Rc(at, last)) return false;
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
        if (!x_.TextBody(1024) || !x_.Tag("F", scan::kClose)) return false;
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

bool DocumentReader::StoreCell(const Address& at, uint8_t extra, bool formula, int width,
                               int height, bool haveNumber, double number, bool haveText,
                               std::string_view text, uint8_t error, CellAppender& cursor) {
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

bool DocumentReader::FastCell(Address& last, bool& any, CellAppender& cursor, bool& failed) {
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

bool DocumentReader::ReadCells(Worksheet& sheet) {
  if (!x_.Tag("Cells", scan::kOpen | scan::kOptional)) return x_.ok();
  if (x_.isClose()) return true;
  Address last;
  bool any = false;
  CellAppender cursor(sheet.cells);
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

bool DocumentReader::ReadGeneralSettings(Worksheet& sheet) {
  if (!x_.Tag("GeneralSettings", scan::kOpen | scan::kOptional)) return x_.ok();
  if (x_.isClose()) return true;
  uint8_t* s = sheet.sheetSettings.data();
  using namespace sheet_settings;
  if (!ReadBackground(s + kBackgroundAt)) return false;
  if (x_.Tag("Table", kOptionalOpen)) {
    if (const char* scale = x_.Attr("Scale")) {
      std::string_view t(scale);
      if (!t.empty() && t.back() == '%') t.remove_suffix(1);  // the percent sign is dropped
      uint32_t value = 0;
      if (!ParseNumber(t, value) || !t.empty() || value > 1000) {
        return Fail(err::kXmlInvalidAttribute);
      }
      StoreU32(s + kScaleAt, value);
    }
    bool grid = true;
    if (!x_.BoolAttr("ShowGrid", grid)) return false;
    s[kShowGridAt] = grid;
    uint32_t colour = 0;
    if (x_.Attr("GridColor") != nullptr) {
      if (!x_.ColourAttr("GridColor", colour)) return false;
      s[kGridColourSetAt] = 1;
      StoreU32(s + kGridColourAt, colour);
    }
    if (x_.Attr("HeadingsColor") != nullptr) {
      if (!x_.ColourAttr("HeadingsColor", colour)) return false;
      s[kHeadingsColourSetAt] = 1;
      StoreU32(s + kHeadingsColourAt, colour);
    }
    if (!x_.isClose()) {
      Address at;
      if (x_.Tag("TopLeft", kOptionalOpen)) {
        if (!Rc(at, Address()) || !CloseIfOpen("TopLeft")) return false;
        StoreU32(s + kTopLeftRowAt, at.row);
        StoreU32(s + kTopLeftColumnAt, at.column);
      }
      if (x_.Tag("Selection", kOptionalOpen)) {
        Address first, last;
        if (!RcRange(first, last) || !CloseIfOpen("Selection")) return false;
        StoreU32(s + kSelectionFirstRowAt, first.row);
        StoreU32(s + kSelectionFirstColumnAt, first.column);
        StoreU32(s + kSelectionLastRowAt, last.row);
        StoreU32(s + kSelectionLastColumnAt, last.column);
      }
      if (x_.Tag("Freezed", kOptionalOpen)) {
        if (!Rc(at, Address()) || !CloseIfOpen("Freezed")) return false;
        if (at.hasRow) {
          s[kFreezeFlagsAt] = 1;
          StoreU32(s + kFreezeRowAt, at.row);
        } else {
          s[kFreezeFlagsAt] = 8;
          StoreU32(s + kFreezeColumnAt, at.column);
        }
      }
      if (!x_.ok() || !x_.Tag("Table", scan::kClose)) return false;
    }
  }
  return x_.ok() && x_.Tag("GeneralSettings", scan::kClose);
}

bool DocumentReader::ReadPageSettings(Worksheet& sheet) {
  if (!x_.Tag("PageSettings", scan::kOpen | scan::kOptional)) return x_.ok();
  if (x_.isClose()) return true;
  uint8_t* p = sheet.pageSettings.data();
  using namespace page_settings;
  auto putText = [&](uint32_t at, std::string_view text) {
    std::memset(p + at, 0, 128);
    std::memcpy(p + at, text.data(), std::min<size_t>(text.size(), 127));
  };
  auto putReal = [&](const char* name, uint32_t at) {
    double v = 0;
    std::memcpy(&v, p + at, 8);
    if (!x_.RealAttr(name, v)) return false;
    std::memcpy(p + at, &v, 8);
    return true;
  };
  if (x_.Tag("Printer", kOptionalOpen)) {
    if (const char* name = x_.Attr("Name")) putText(kPrinterNameAt, name);
    if (!x_.isClose()) {
      if (x_.Text("SheetSize", 127, scan::kOptional | scan::kAttributes)) {
        putText(kPaperSizeAt, x_.text());
        bool landscape = false;
        if (!x_.BoolAttr("Landscape", landscape)) return false;
        // Only landscape is written; any other orientation reads back as the default.
        if (landscape) {
          p[kOrientationAt] = 2;
        } else if (p[kOrientationAt] == 2) {
          p[kOrientationAt] = 0;
        }
      }
      if (!x_.ok() || !x_.Tag("Printer", scan::kClose)) return false;
    }
  }
  if (x_.Tag("PrintRange", kOptionalOpen)) {
    if (const char* scale = x_.Attr("Scale")) {
      std::string_view t(scale);
      uint32_t value = 0;
      if (t == "FitToSheetSize") {
        value = 0;
      } else {
        if (!t.empty() && t.back() == '%') t.remove_suffix(1);
        if (!ParseNumber(t, value) || !t.empty() || value < 10 || value > 1000) {
          return Fail(err::kXmlInvalidAttribute);
        }
      }
      StoreU16(p + kScaleAt, static_cast<uint16_t>(value));
    }
    int first = LoadU16(p + kFirstPageNumberAt);
    if (!x_.IntAttr("FirstPageNumber", first, 1, 65534)) return false;
    StoreU16(p + kFirstPageNumberAt, static_cast<uint16_t>(first));
    if (!x_.isClose()) {
      if (x_.Tag("All", scan::kOpen | scan::kOptional)) {
        p[kPrintRangeAt] = 0;
        if (!CloseIfOpen("All")) return false;
      } else if (x_.Tag("Selection", scan::kOpen | scan::kOptional)) {
        p[kPrintRangeAt] = 1;
        if (!CloseIfOpen("Selection")) return false;
      } else if (x_.Text("Pages", 127, scan::kOptional)) {
        p[kPrintRangeAt] = 2;
        putText(kPagesAt, x_.text());
      }
      if (!x_.ok() || !x_.Tag("PrintRange", scan::kClose)) return false;
    }
  }
  if (x_.Text("ExcludedRows", 127, scan::kOptional)) putText(kExcludedRowsAt, x_.text());
  if (x_.Text("ExcludedColumns", 127, scan::kOptional)) putText(kExcludedColumnsAt, x_.text());
  if (x_.Text("Copies", 8, scan::kOptional | scan::kAttributes)) {
    std::string_view t = x_.text();
    uint32_t copies = 0;
    if (!ParseNumber(t, copies) || !t.empty() || copies < 1 || copies > 65534) {
      return Fail(err::kXmlInvalidData);
    }
    StoreU16(p + kCopiesAt, static_cast<uint16_t>(copies));
    bool collate = false, backToFront = false;
    if (!x_.BoolAttr("Collate", collate) || !x_.BoolAttr("BackToFrontOrder", backToFront)) {
      return false;
    }
    p[kCollateAt] = collate;
    p[kBackToFrontAt] = backToFront;
  }
  if (!x_.ok()) return false;
  if (x_.Tag("Headers", kOptionalOpen)) {
    bool first = false;
    if (!x_.BoolAttr("OnFirstPage", first)) return false;
    p[kOnFirstPageAt] = first;
    if (!x_.isClose()) {
      if (x_.Tag("Margins", kOptionalOpen)) {
        if (!putReal("Top", kHeaderMarginAt) || !putReal("Bottom", kFooterMarginAt) ||
            !CloseIfOpen("Margins")) {
          return false;
        }
      }
      if (x_.Text("HeaderText", 127, scan::kOptional)) putText(kHeaderTextAt, x_.text());
      if (x_.Text("FooterText", 127, scan::kOptional)) putText(kFooterTextAt, x_.text());
      if (x_.Tag("Font", kOptionalOpen)) {
        std::memset(p + kFontAt, 0, kFontSize);
        if (!ReadFontAttributes(p + kFontAt) || !CloseIfOpen("Font")) return false;
      }
      if (!x_.ok() || !x_.Tag("Headers", scan::kClose)) return false;
    }
  }
  if (x_.Tag("PageLayout", scan::kOpen | scan::kOptional)) {
    if (!x_.isClose()) {
      if (x_.Tag("Margins", kOptionalOpen)) {
        if (!putReal("Left", kLeftMarginAt) || !putReal("Top", kTopMarginAt) ||
            !putReal("Right", kRightMarginAt) || !putReal("Bottom", kBottomMarginAt) ||
            !CloseIfOpen("Margins")) {
          return false;
        }
      }
      if (x_.Tag("PagesPerSheet", kOptionalOpen)) {
        int columns = LoadU16(p + kPagesPerSheetColumnsAt),
            rows = LoadU16(p + kPagesPerSheetRowsAt);
        if (!x_.IntAttr("Columns", columns, 0, 65534) || !x_.IntAttr("Rows", rows, 0, 65534) ||
            !CloseIfOpen("PagesPerSheet")) {
          return false;
        }
        StoreU16(p + kPagesPerSheetColumnsAt, static_cast<uint16_t>(columns));
        StoreU16(p + kPagesPerSheetRowsAt, static_cast<uint16_t>(rows));
      }
      if (x_.Tag("Alignment", kOptionalOpen)) {
        int h = p[kHorizontalAlignmentAt], v = p[kVerticalAlignmentAt];
        if (!x_.IntAttr("HorizontalAlignment", h, 0, 255) ||
            !x_.IntAttr("VerticalAlignment", v, 0, 255) || !CloseIfOpen("Alignment")) {
          return false;
        }
        p[kHorizontalAlignmentAt] = static_cast<uint8_t>(h);
        p[kVerticalAlignmentAt] = static_cast<uint8_t>(v);
      }
      if (!x_.ok() || !x_.Tag("PageLayout", scan::kClose)) return false;
    }
  }
  for (auto [name, at] : {std::pair<const char*, uint32_t>{"RowHeadings", kRowHeadingsAt},
                          std::pair<const char*, uint32_t>{"ColumnHeadings", kColumnHeadingsAt}}) {
    if (x_.Tag(name, kOptionalOpen)) {
      bool visible = p[at] != 0;
      if (!x_.BoolAttr("Visible", visible) || !CloseIfOpen(name)) return false;
      p[at] = visible;
    }
  }
  return x_.ok() && x_.Tag("PageSettings", scan::kClose);
}

bool DocumentReader::ReadWorksheet(Worksheet& sheet) {
  std::vector<bool> seenIds(256);
  while (x_.Tag("Container", kOptionalOpen)) {
    if (!ReadContainer(sheet, seenIds)) return false;
  }
  return x_.ok() && ReadFormatting(sheet) && ReadCells(sheet) && ReadGeneralSettings(sheet) &&
         ReadPageSettings(sheet) && x_.Tag("Worksheet", scan::kClose);
}

bool DocumentReader::Read() {
  if (!x_.ok() || !x_.Prolog() || !x_.Tag("Workbook", scan::kOpen)) return false;
  std::vector<StyleRecord> styles;
  std::vector<FontRecord> fonts(1, StyleTable().Font(0));
  if (!ReadLastModification() || !ReadWindow() || !ReadDropDownLists() ||
      !ReadStyles(styles, fonts) || !ReadInspectCells()) {
    return false;
  }
  if (styles.empty()) styles.push_back(StyleTable().Style(0));
  book_.styles.LoadFonts(fonts.data(), static_cast<uint8_t>(fonts.size()));
  book_.styles.LoadStyles(styles.data(), static_cast<uint16_t>(styles.size()));
  WorkbookNode* last = nullptr;
  Worksheet* firstSheet = nullptr;
  while (x_.Tag("", kOptionalOpen | scan::kPeek)) {
    std::string kind(x_.name());
    if (kind != "Folder" && kind != "Worksheet") break;
    x_.Tag(kind, kOpenAttributes);
    bool folder = kind == "Folder";
    std::string name;
    if (const char* text = x_.Attr("Name")) {
      name = text;
      if (name.size() >= kNodeNameSize) return Fail(err::kXmlInvalidAttribute);
    } else {
      name = (folder ? "Folder" : "Worksheet") + std::to_string((folder ? folders_ : sheets_) + 1);
    }
    int level = 1;
    if (!x_.IntAttr("TreeLevel", level, 1, 65534, err::kXmlInvalidData)) return false;
    WorkbookNode* node;
    if (folder) {
      auto* f = new (std::nothrow) Folder(name);
      if (f == nullptr) return Fail(err::kXmlOutOfMemory);
      bool expanded = false;
      if (!x_.BoolAttr("Expanded", expanded)) {
        delete f;
        return false;
      }
      f->open = expanded;
      node = f;
      ++folders_;
      ++book_.folderCount;
    } else {
      auto* w = new (std::nothrow) Worksheet(name);
      if (w == nullptr) return Fail(err::kXmlOutOfMemory);
      bool selected = false;
      if (!x_.BoolAttr("Selected", selected)) {
        delete w;
        return false;
      }
      if (selected && book_.currentSheet == nullptr) book_.currentSheet = w;
      if (firstSheet == nullptr) firstSheet = w;
      node = w;
      ++sheets_;
      ++book_.worksheetCount;
    }
    node->level = static_cast<uint16_t>(level);
    node->previous = last;
    if (last != nullptr) {
      last->next = node;
    } else {
      book_.firstNode = node;
    }
    last = node;
    if (folder) {
      if (!CloseIfOpen("Folder")) return false;
    } else if (!x_.isClose() && !ReadWorksheet(*static_cast<Worksheet*>(node))) {
      return false;
    }
  }
  if (!x_.ok() || !x_.Tag("Workbook", scan::kClose)) return false;
  // Without a selected worksheet the first table is current: a catalogue cannot be.
  if (book_.currentSheet == nullptr) book_.currentSheet = book_.TableByIndex(0);
  if (book_.currentSheet == nullptr) book_.currentSheet = firstSheet;
  return true;
}

// After the closing tag: a current table, every catalogue compiled, the record set and fields.
bool CheckDocument(Workbook& book) {
  if (book.currentSheet == nullptr) {
    book.errorCode = err::kNeedsOneTable;
    return false;
  }
  TableSpec current;
  if (!MakeTableSpec(book, book.currentSheet->Name(), current)) {
    book.errorCode = err::kInvalidDatabase;
    return false;
  }
  WorkbookNode* system = book.FindNode("\\system");
  if (system != nullptr && system->IsFolder()) {
    for (WorkbookNode* n = system->next; n != nullptr && n->level > system->level; n = n->next) {
      TableSpec compiled;
      if (n->IsWorksheet() && !MakeTableSpec(book, n->Name(), compiled)) {
        book.errorCode = err::kInvalidDatabase;
        return false;
      }
    }
  }
  return true;
}

}  // namespace

bool ReadXmlDocument(FileStream& stream, Workbook& book, int* line) {
  if (line != nullptr) *line = 0;
  if (!stream.Rewind()) {
    book.errorCode = stream.error();
    return false;
  }
  auto fresh = std::make_unique<Workbook>();
  DocumentReader reader(stream, *fresh);
  bool ok = reader.Read();
  if (!ok || !stream.ok()) {
    book.errorCode = stream.error() != err::kNone ? stream.error() : err::kXmlUnexpectedElement;
    if (line != nullptr) *line = reader.line();
    return false;
  }
  if (!CheckDocument(*fresh)) {
    book.errorCode = fresh->errorCode;
    return false;
  }
  UndoRecorder* undo = book.undo;
  book.SwapContents(*fresh);
  book.undo = undo;
  book.errorCode = err::kNone;
  return true;
}

}  // namespace kelpdex
