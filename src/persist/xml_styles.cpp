// The styles of the native XML document and the pieces other sections spell the same way: the
// Styles element with its fonts and styles (number format, fill, alignment, drop-down reference,
// protection, borders), a font given inline, and a background.
#include <charconv>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <string>
#include <vector>

#include "format/format_string.h"
#include "format/number_style.h"
#include "persist/native_xml.h"
#include "persist/xml_sections.h"
#include "store/bytes.h"
#include "text/code_page.h"

namespace kelpdex {

namespace xml_words {
const char* const kLineStyles[10] = {
    "None",       "Continuous",    "Dot",           "Dash",          "DashDot",
    "DashDotDot", "Continuous1px", "Continuous2px", "Continuous3px", "Double"};
const char* const kPatterns[23] = {"None",           "Solid",
                                   "Gray125",        "Gray75",
                                   "Gray50",         "Gray25",
                                   "Gray0625",       "HorzStripe",
                                   "VertStripe",     "ReverseDiagStripe",
                                   "DiagStripe",     "DiagCross",
                                   "ThickDiagCross", "ThinHorzStripe",
                                   "ThinVertStripe", "ThinReverseDiagStripe",
                                   "ThinDiagStripe", "ThinHorzCross",
                                   "ThinDiagCross",  "VertGradient",
                                   "HorzGradient",   "VertSymGradient",
                                   "HorzSymGradient"};
const char* const kFamilies[6] = {"Any", "Swiss", "Modern", "Roman", "Script", "Decorative"};
const char* const kWeights[4] = {"Normal", "Thin", "Bold", "Heavy"};
const char* const kCharSets[17] = {
    "Default", "Ansi",    "Baltic",   "Chineese", "EastEurope", "GB2312", "Greek",  "Hangul", "Mac",
    "OEM",     "Russian", "ShiftJIS", "Symbol",   "Turkish",    "Hebrew", "Arabic", "Thai"};
}  // namespace xml_words

namespace native_xml {

namespace {

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

bool ReadNumberFormat(XmlScanner& x, StyleRecord& record) {
  if (!x.Tag("", kOpenAttributes)) return false;
  std::string child(x.name());
  NumberStyle s;
  static const char* const kChildren[format_kind::kCount] = {
      "General",  "Default",    "Currency", "Accounting", "Date",       "Time",
      "DateTime", "Percentage", "Fraction", "Scientific", "UserDefined"};
  uint8_t kind = 0;
  if (!FindWord(kChildren, child, kind)) return x.Fail(err::kXmlUnexpectedElement);
  s.kind = kind;
  int v = 0;
  if (x.Attr("DecimalDigits") != nullptr) {
    if (!x.IntAttr("DecimalDigits", v, 0, 14)) return false;
    s.decimalDigits = static_cast<uint8_t>(v);
    s.fixedDecimals = true;
  }
  if (x.Attr("LeadingZeroes") != nullptr) {
    v = 0;
    if (!x.IntAttr("LeadingZeroes", v, 0, 255)) return false;
    s.leadingZeroes = static_cast<uint8_t>(v);
    s.leadingZeroesSet = true;
  }
  bool flag = false;
  if (!x.BoolAttr("GroupDigits", flag)) return false;
  s.groupDigits = flag;
  static const char* const kNegative[4] = {"Minus", "Red", "Brackets", "RedAndBrackets"};
  static const char* const kPositions[4] = {"$1.1", "$ 1.1", "1.1$", "1.1 $"};
  if (!ReadWord(x, "Negative", kNegative, s.negative) ||
      !ReadWord(x, "SymbolPosition", kPositions, s.symbolPosition)) {
    return false;
  }
  if (const char* symbol = x.Attr("Symbol")) {
    std::strncpy(s.symbol, symbol, sizeof s.symbol - 1);
  }
  v = 0;
  if (!x.IntAttr(kind == format_kind::kDateTime ? "DateIndex" : "Index", v, 0, 255)) return false;
  s.index = static_cast<uint8_t>(v);
  v = 0;
  if (!x.IntAttr("TimeIndex", v, 0, 255)) return false;
  s.timeIndex = static_cast<uint8_t>(v);
  flag = false;
  if (!x.BoolAttr("DateAfterTime", flag)) return false;
  s.dateAfterTime = flag;
  flag = false;
  if (!x.BoolAttr("SystemDateOrder", flag)) return false;
  s.systemDateOrder = flag;
  int64_t denominator = 0;
  if (!x.IntAttr("Denominator", denominator, 0, INT64_MAX)) return false;
  s.denominator = denominator;
  v = 0;
  if (!x.IntAttr("DenominatorDigits", v, 0, 9)) return false;
  s.denominatorDigits = static_cast<uint8_t>(v);
  v = 0;
  if (!x.IntAttr("Exponent", v, 0, 2)) return false;
  s.exponent = static_cast<uint8_t>(v);
  if (kind == format_kind::kUserDefined) {
    if (!x.isClose()) {
      if (!x.TextBody(kFormatTextMax)) return false;
      std::memcpy(s.userFormat, x.text().data(), x.text().size());
      if (!x.Tag("UserDefined", scan::kClose)) return false;
    }
  } else if (!CloseIfOpen(x, child)) {
    return false;
  }
  WriteNumberStyle(s, record);
  return x.Tag("NumberFormat", scan::kClose);
}

bool ReadStyle(XmlScanner& x, StyleRecord& record) {
  uint8_t* b = record.bytes;
  if (x.Tag("FontRef", kOptionalOpen)) {
    int id = 0;
    uint32_t colour = 0;
    if (!x.IntAttr("FontID", id, 0, 127)) return false;
    b[style::kFontSetAt] = 1;
    b[style::kFontIndexAt] = static_cast<uint8_t>(id);
    if (x.Attr("Color") != nullptr) {
      if (!x.ColourAttr("Color", colour)) return false;
      b[style::kFontColourSetAt] = 1;
      StoreU32(b + style::kFontColourAt, colour);
    }
    if (!CloseIfOpen(x, "FontRef")) return false;
  }
  if (x.Tag("NumberFormat", scan::kOpen | scan::kOptional) && !ReadNumberFormat(x, record)) {
    return false;
  }
  if (x.Tag("FillPattern", kOptionalOpen)) {
    if (!ReadWord(x, "PatternType", xml_words::kPatterns, b[style::kFillAt])) return false;
    uint32_t colour = 0;
    if (x.Attr("PatternColor") != nullptr) {
      if (!x.ColourAttr("PatternColor", colour)) return false;
      b[style::kFillColourFlagsAt] |= 1;
      StoreU32(b + style::kFillColourAt, colour);
    }
    if (x.Attr("BackgroundColor") != nullptr) {
      if (!x.ColourAttr("BackgroundColor", colour)) return false;
      b[style::kFillColourFlagsAt] |= 2;
      StoreU32(b + style::kFillBackgroundAt, colour);
    }
    if (!CloseIfOpen(x, "FillPattern")) return false;
  }
  if (x.Tag("Alignment", kOptionalOpen)) {
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
    if (!ReadWord(x, "VerticalAlignment", kVertical, v) ||
        !ReadWord(x, "HorizontalAlignment", kHorizontal, h)) {
      return false;
    }
    b[style::kVerticalAt] = kVerticalValue[v];
    b[style::kHorizontalAt] = kHorizontalValue[h];
    int hi = 0, vi = 0, rotation = 0;
    bool wrap = false, fit = false;
    if (!x.IntAttr("HorizontalIndent", hi, 0, 255) || !x.IntAttr("VerticalIndent", vi, 0, 255) ||
        !x.BoolAttr("WrapText", wrap) || !x.BoolAttr("FitToCell", fit) ||
        !x.IntAttr("Rotation", rotation, -360, 360) || !CloseIfOpen(x, "Alignment")) {
      return false;
    }
    b[style::kIndentAt] = static_cast<uint8_t>(hi);
    b[style::kIndentAt + 1] = static_cast<uint8_t>(vi);
    b[style::kWrapAt] = wrap;
    b[style::kFitAt] = fit;
    StoreU16(b + style::kRotationAt, static_cast<uint16_t>(static_cast<int16_t>(rotation)));
  }
  if (x.Tag("DropDownListRef", kOptionalOpen)) {
    int id = 0;
    bool sort = false, append = false, complete = false;
    if (!x.IntAttr("ListID", id, 1, 100) || !x.BoolAttr("Sort", sort) ||
        !x.BoolAttr("AutoAppend", append) || !x.BoolAttr("AutoComplete", complete) ||
        !CloseIfOpen(x, "DropDownListRef")) {
      return false;
    }
    StoreU16(b + style::kDropDownAt, static_cast<uint16_t>(id));
    b[style::kDropDownSortAt] = sort;
    b[style::kDropDownAppendAt] = append;
    b[style::kDropDownCompleteAt] = complete;
  }
  if (x.Tag("Protection", kOptionalOpen)) {
    // The reader's names, which are not the writer's.
    bool protect = false, hide = false;
    if (!x.BoolAttr("Protect", protect) || !x.BoolAttr("HideFormula", hide) ||
        !CloseIfOpen(x, "Protection")) {
      return false;
    }
    b[style::kProtectedAt] = protect;
    b[style::kHiddenAt] = hide;
  }
  if (x.Tag("Borders", kOptionalOpen)) {
    if (!ReadWord(x, "Style", xml_words::kLineStyles, b[style::kBorderLineAt])) return false;
    uint32_t colour = 0;
    if (x.Attr("Color") != nullptr) {
      if (!x.ColourAttr("Color", colour)) return false;
      b[style::kBorderColourSetAt] = 1;
      StoreU32(b + style::kBorderColourAt, colour);
    }
    if (!x.isClose()) {
      if (!x.TextBody(1024) || !x.Tag("Borders", scan::kClose)) return false;
      std::string_view sides = x.text();
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
  return x.ok();
}

void WriteNumberFormat(XmlWriter& w, const StyleRecord& record, int indent) {
  NumberStyle s = ReadNumberStyle(record);
  XmlAttributes a;
  // The form's child names: kind 0 shows "General", kind 1 carries the fields as "Default".
  static const char* const kChildren[format_kind::kCount] = {
      "General",  "Default",    "Currency", "Accounting", "Date",       "Time",
      "DateTime", "Percentage", "Fraction", "Scientific", "UserDefined"};
  uint8_t kind = s.kind < format_kind::kCount ? s.kind : 0;
  auto decimals = [&] {
    // A fixed count of decimals is written even when it is 0, which "0" and "0.#" tell apart.
    if (s.fixedDecimals) a.Int("DecimalDigits", s.decimalDigits);
  };
  switch (kind) {
    case format_kind::kGeneral:
      decimals();
      if (s.leadingZeroesSet) a.Int("LeadingZeroes", s.leadingZeroes);
      if (s.groupDigits) a.Bool("GroupDigits", true);
      if (s.negative) a.Text("Negative", NegativeName(s.negative));
      break;
    case format_kind::kCurrency:
      if (s.decimalDigits) a.Int("DecimalDigits", s.decimalDigits);
      if (s.negative) a.Text("Negative", NegativeName(s.negative));
      if (s.symbol[0]) a.Text("Symbol", FieldText(reinterpret_cast<const uint8_t*>(s.symbol), 16));
      if (s.symbolPosition) a.Text("SymbolPosition", SymbolPositionName(s.symbolPosition));
      break;
    case format_kind::kAccounting:
      if (s.decimalDigits) a.Int("DecimalDigits", s.decimalDigits);
      if (s.symbol[0]) a.Text("Symbol", FieldText(reinterpret_cast<const uint8_t*>(s.symbol), 16));
      break;
    case format_kind::kDate:
      if (s.index) a.Int("Index", s.index);
      if (s.systemDateOrder) a.Bool("SystemDateOrder", true);
      break;
    case format_kind::kTime:
      if (s.index) a.Int("Index", s.index);
      break;
    case format_kind::kDateTime:
      if (s.index) a.Int("DateIndex", s.index);
      if (s.timeIndex) a.Int("TimeIndex", s.timeIndex);
      if (s.dateAfterTime) a.Bool("DateAfterTime", true);
      if (s.systemDateOrder) a.Bool("SystemDateOrder", true);
      break;
    case format_kind::kPercentage:
      decimals();
      break;
    case format_kind::kFraction:
      if (s.denominator) {
        a.Int("Denominator", s.denominator);
      } else if (s.denominatorDigits) {
        a.Int("DenominatorDigits", s.denominatorDigits);
      }
      break;
    case format_kind::kScientific:
      decimals();
      if (s.exponent) a.Int("Exponent", s.exponent);
      break;
    default:
      break;
  }
  w.Tag("NumberFormat", TagMode::kOpen, indent, 1);
  if (kind == format_kind::kUserDefined) {
    w.TextElement("UserDefined",
                  FieldText(reinterpret_cast<const uint8_t*>(s.userFormat), kFormatTextMax),
                  indent + 1, 1);
  } else {
    w.Tag(kChildren[kind], a, TagMode::kEmpty, indent + 1, 1);
  }
  w.Tag("NumberFormat", TagMode::kClose, indent, 1);
}

void WriteAlignment(XmlWriter& w, const uint8_t* b) {
  static const struct {
    uint8_t value;
    const char* word;
  } kVertical[] = {{4, "Top"}, {5, "Center"}, {7, "Bottom"}},
    kHorizontal[] = {{1, "Left"}, {2, "Center"}, {3, "Right"}};
  XmlAttributes a;
  for (const auto& v : kVertical) {
    if (b[style::kVerticalAt] == v.value) a.Text("VerticalAlignment", v.word);
  }
  for (const auto& h : kHorizontal) {
    if (b[style::kHorizontalAt] == h.value) a.Text("HorizontalAlignment", h.word);
  }
  bool rest = b[style::kIndentAt] || b[style::kIndentAt + 1] || b[style::kWrapAt] ||
              b[style::kFitAt] || LoadU16(b + style::kRotationAt);
  if (rest) {
    a.Int("HorizontalIndent", b[style::kIndentAt])
        .Int("VerticalIndent", b[style::kIndentAt + 1])
        .Bool("WrapText", b[style::kWrapAt] != 0)
        .Bool("FitToCell", b[style::kFitAt] != 0)
        .Int("Rotation", static_cast<int16_t>(LoadU16(b + style::kRotationAt)));
  }
  if (!a.str().empty()) w.Tag("Alignment", a, TagMode::kEmpty, 3, 1);
}

void WriteStyle(XmlWriter& w, const StyleTable& table, uint16_t id) {
  const uint8_t* b = table.Style(id).bytes;
  XmlAttributes head;
  head.Int("ID", id);
  w.Tag("Style", head, TagMode::kOpen, 2, 1);
  if (b[style::kFontSetAt]) {
    XmlAttributes a;
    a.Int("FontID", b[style::kFontIndexAt]);
    if (b[style::kFontColourSetAt]) {
      a.Colour("Color", LoadU32(b + style::kFontColourAt), HexCase::kLower);
    }
    w.Tag("FontRef", a, TagMode::kEmpty, 3, 1);
  }
  if (b[style::kFormatKindAt] != 0 || b[style::kUserFormatAt] != 0) {
    WriteNumberFormat(w, table.Style(id), 3);
  }
  if (b[style::kFillAt]) {
    XmlAttributes a;
    a.Text("PatternType", WordOf(xml_words::kPatterns, b[style::kFillAt]));
    if (b[style::kFillColourFlagsAt] & 1) {
      a.Colour("PatternColor", LoadU32(b + style::kFillColourAt), HexCase::kUpper);
    }
    if (b[style::kFillColourFlagsAt] & 2) {
      a.Colour("BackgroundColor", LoadU32(b + style::kFillBackgroundAt), HexCase::kUpper);
    }
    w.Tag("FillPattern", a, TagMode::kEmpty, 3, 1);
  }
  WriteAlignment(w, b);
  if (LoadU16(b + style::kDropDownAt)) {
    XmlAttributes a;
    a.Int("ListID", LoadU16(b + style::kDropDownAt));
    if (b[style::kDropDownSortAt]) a.Bool("Sort", true);
    if (b[style::kDropDownAppendAt]) a.Bool("AutoAppend", true);
    if (b[style::kDropDownCompleteAt]) a.Bool("AutoComplete", true);
    w.Tag("DropDownListRef", a, TagMode::kEmpty, 3, 1);
  }
  if (b[style::kProtectedAt] || b[style::kHiddenAt]) {
    // The writer's names: the reader looks for others, so protection does not come back.
    XmlAttributes a;
    a.Bool("Protected", b[style::kProtectedAt] != 0).Bool("Hidden", b[style::kHiddenAt] != 0);
    w.Tag("Protection", a, TagMode::kEmpty, 3, 1);
  }
  if (b[style::kBordersAt]) {
    XmlAttributes a;
    a.Text("Style", WordOf(xml_words::kLineStyles, b[style::kBorderLineAt]));
    if (b[style::kBorderColourSetAt]) {
      a.Colour("Color", LoadU32(b + style::kBorderColourAt), HexCase::kLower);
    }
    // Sides in the form's word order; the mask counts top, bottom, left, right, diagonals.
    static const struct {
      uint8_t bit;
      const char* word;
    } kSides[] = {{4, "Left"},   {8, "Right"},         {1, "Top"},
                  {2, "Bottom"}, {16, "DiagonalLeft"}, {32, "DiagonalRight"}};
    std::string sides;
    for (const auto& side : kSides) {
      if (!(b[style::kBordersAt] & side.bit)) continue;
      if (!sides.empty()) sides += ' ';
      sides += side.word;
    }
    w.TextElement("Borders", a, sides, 3, 1);
  }
  w.Tag("Style", TagMode::kClose, 2, 1);
}

// A fractal colour as its element's text: "#rrggbb" in lower case.
std::string ColourText(uint32_t colour) {
  char text[8];
  std::snprintf(text, sizeof text, "#%02x%02x%02x", colour & 0xFF, (colour >> 8) & 0xFF,
                (colour >> 16) & 0xFF);
  return text;
}

}  // namespace

bool ReadStyles(XmlScanner& x, std::vector<StyleRecord>& styles, std::vector<FontRecord>& fonts) {
  if (!x.Tag("Styles", scan::kOpen | scan::kOptional)) return x.ok();
  if (x.isClose()) return true;
  while (x.Tag("Font", kOptionalOpen)) {
    int id = 0;
    if (x.RequiredAttr("ID") == nullptr || !x.IntAttr("ID", id, 1, 127)) return false;
    if (static_cast<size_t>(id) != fonts.size()) return x.Fail(err::kXmlInvalidAttribute);
    FontRecord f{};
    if (!ReadFontAttributes(x, f.bytes) || !CloseIfOpen(x, "Font")) return false;
    fonts.push_back(f);
  }
  if (!x.ok()) return false;
  while (x.Tag("Style", kOptionalOpen)) {
    if (styles.size() >= kMaxStyles) return x.Fail(err::kXmlUnexpectedElement);
    // A style starts as the new document's: all zero but for the default alignment.
    StyleRecord record = StyleTable().Style(0);
    if (!x.isClose() && (!ReadStyle(x, record) || !x.Tag("Style", scan::kClose))) return false;
    styles.push_back(record);
  }
  return x.ok() && x.Tag("Styles", scan::kClose);
}

void WriteStyles(XmlWriter& w, const StyleTable& table) {
  if (table.fontCount() <= 1 && table.styleCount() == 0) {
    w.Tag("Styles", TagMode::kEmpty, 1, 1);
    return;
  }
  w.Tag("Styles", TagMode::kOpen, 1, 1);
  for (uint8_t id = 1; id < table.fontCount(); ++id) {
    XmlAttributes a;
    a.Int("ID", id);
    WriteFontAttributes(table.Font(id).bytes, a);
    w.Tag("Font", a, TagMode::kEmpty, 2, 1);
  }
  for (uint16_t id = 0; id < table.styleCount(); ++id) WriteStyle(w, table, id);
  w.Tag("Styles", TagMode::kClose, 1, 1);
}

bool ReadFontAttributes(XmlScanner& x, uint8_t* f) {
  if (const char* name = x.Attr("Name")) {
    size_t n = std::strlen(name);
    if (n > kFontNameMax) return x.Fail(err::kXmlInvalidAttribute);
    std::memcpy(f + font::kNameAt, name, n);
  }
  int size = 0;
  if (!x.IntAttr("Size", size, 0, 255)) return false;
  f[font::kSizeAt] = static_cast<uint8_t>(size);
  if (!ReadWord(x, "Family", xml_words::kFamilies, f[font::kFamilyAt])) return false;
  if (const char* weight = x.Attr("Weight");
      weight != nullptr && std::strcmp(weight, "Regular") == 0) {
    f[font::kWeightAt] = 0;  // the reader also takes "Regular" for "Normal"
  } else if (!ReadWord(x, "Weight", xml_words::kWeights, f[font::kWeightAt])) {
    return false;
  }
  if (const char* slant = x.Attr("Slant")) f[font::kItalicAt] = std::strcmp(slant, "Italic") == 0;
  bool underline = false, strikeout = false;
  if (!x.BoolAttr("Underline", underline) || !x.BoolAttr("Strikeout", strikeout)) return false;
  f[font::kUnderlineAt] = underline;
  f[font::kStrikeoutAt] = strikeout;
  return ReadWord(x, "CharSet", xml_words::kCharSets, f[font::kCharSetAt]);
}

void WriteFontAttributes(const uint8_t* f, XmlAttributes& a) {
  std::string_view name = FieldText(f + font::kNameAt, kFontNameMax);
  if (!name.empty()) a.Text("Name", name);
  if (f[font::kFamilyAt]) a.Text("Family", WordOf(xml_words::kFamilies, f[font::kFamilyAt]));
  if (f[font::kSizeAt]) a.Int("Size", f[font::kSizeAt]);
  if (f[font::kWeightAt]) a.Text("Weight", WordOf(xml_words::kWeights, f[font::kWeightAt]));
  if (f[font::kItalicAt]) a.Text("Slant", "Italic");
  if (f[font::kUnderlineAt]) a.Bool("Underline", true);
  if (f[font::kStrikeoutAt]) a.Bool("Strikeout", true);
  if (f[font::kCharSetAt]) a.Text("CharSet", WordOf(xml_words::kCharSets, f[font::kCharSetAt]));
}

bool ReadBackground(XmlScanner& x, uint8_t* b) {
  using namespace background;
  if (!x.Tag("Background", scan::kOpen | scan::kOptional)) return x.ok();
  if (x.isClose()) return true;
  if (!x.Tag("", kOpenAttributes)) return false;
  std::string kind(x.name());
  std::memset(b, 0, kBackgroundSize);
  if (kind == "FillPattern") {
    b[kKindAt] = background_kind::kFill;
    if (!ReadWord(x, "PatternType", xml_words::kPatterns, b[kPatternAt])) return false;
    uint32_t colour = 0;
    if (x.Attr("PatternColor") != nullptr) {
      if (!x.ColourAttr("PatternColor", colour)) return false;
      b[kColourFlagsAt] |= 1;
      StoreU32(b + kPatternColourAt, colour);
    }
    if (x.Attr("BackgroundColor") != nullptr) {
      if (!x.ColourAttr("BackgroundColor", colour)) return false;
      b[kColourFlagsAt] |= 2;
      StoreU32(b + kBackgroundColourAt, colour);
    }
    if (!CloseIfOpen(x, "FillPattern")) return false;
  } else if (kind == "Fractal") {
    b[kKindAt] = background_kind::kFractal;
    if (!x.isClose()) {
      static const char* const kNames[6] = {"Zr", "Zi", "MinX", "MaxX", "MinY", "MaxY"};
      for (int k = 0; k < 6; ++k) {
        if (!x.Text(kNames[k], 64, scan::kOptional)) {
          if (!x.ok()) return false;
          continue;
        }
        std::string_view t = x.text();
        double v = 0;
        auto r = std::from_chars(t.data(), t.data() + t.size(), v);
        if (r.ec != std::errc() || r.ptr != t.data() + t.size() || !std::isfinite(v)) {
          return x.Fail(err::kXmlInvalidData);
        }
        std::memcpy(b + kFractalAt + 8 * k, &v, 8);
      }
      uint8_t count = 0;
      while (x.Text("Color", 7, scan::kOptional)) {
        std::string_view t = x.text();
        uint32_t colour = 0;
        if (count == kMaxColours || t.size() != 7 || !ParseColourName(t, colour)) {
          return x.Fail(err::kXmlInvalidData);
        }
        StoreU32(b + kColoursAt + 4 * count, colour);
        ++count;
      }
      b[kColourCountAt] = count;
      if (!x.ok() || !x.Tag("Fractal", scan::kClose)) return false;
    }
  } else if (kind == "Image") {
    b[kKindAt] = background_kind::kImage;
    static const char* const kViews[3] = {"Default", "FitToWindowSize", "Wallpaper"};
    if (!ReadWord(x, "View", kViews, b[kViewAt])) return false;
    std::string_view path;
    if (!x.isClose()) {
      if (!x.TextBody(255)) return false;
      path = x.text();
    }
    // Only the image kinds the program can draw.
    size_t dot = path.rfind('.');
    std::string_view extension = dot == std::string_view::npos ? "" : path.substr(dot);
    bool known = false;
    for (const char* e : {".bmp", ".jpg", ".jpeg", ".png"})
      known |= text::EqualNoCase(extension, e);
    if (!known) return x.Fail(err::kXmlInvalidData);
    std::memcpy(b + kImagePathAt, path.data(), path.size());
    if (!x.isClose() && !x.Tag("Image", scan::kClose)) return false;
  } else {
    return x.Fail(err::kXmlUnexpectedElement);
  }
  return x.Tag("Background", scan::kClose);
}

void WriteBackground(XmlWriter& w, const uint8_t* b, int indent) {
  using namespace background;
  uint8_t kind = b[kKindAt];
  if (kind == background_kind::kNone || kind > background_kind::kImage) return;
  w.Tag("Background", TagMode::kOpen, indent, 1);
  if (kind == background_kind::kFill) {
    XmlAttributes a;
    a.Text("PatternType", WordOf(xml_words::kPatterns, b[kPatternAt]));
    if (b[kColourFlagsAt] & 1)
      a.Colour("PatternColor", LoadU32(b + kPatternColourAt), HexCase::kUpper);
    if (b[kColourFlagsAt] & 2) {
      a.Colour("BackgroundColor", LoadU32(b + kBackgroundColourAt), HexCase::kUpper);
    }
    w.Tag("FillPattern", a, TagMode::kEmpty, indent + 1, 1);
  } else if (kind == background_kind::kFractal) {
    w.Tag("Fractal", TagMode::kOpen, indent + 1, 1);
    static const char* const kNames[6] = {"Zr", "Zi", "MinX", "MaxX", "MinY", "MaxY"};
    char number[kXmlNumberMax];
    for (int k = 0; k < 6; ++k) {
      double v;
      std::memcpy(&v, b + kFractalAt + 8 * k, 8);
      w.TextElement(kNames[k], std::string_view(number, XmlNumberText(v, number)), indent + 2, 1);
    }
    uint8_t count = std::min<uint8_t>(b[kColourCountAt], kMaxColours);
    for (uint8_t k = 0; k < count; ++k) {
      w.TextElement("Color", ColourText(LoadU32(b + kColoursAt + 4 * k)), indent + 2, 1);
    }
    w.Tag("Fractal", TagMode::kClose, indent + 1, 1);
  } else {
    static const char* const kViews[3] = {"Default", "FitToWindowSize", "Wallpaper"};
    XmlAttributes a;
    a.Text("View", WordOf(kViews, b[kViewAt]));
    w.TextElement("Image", a, FieldText(b + kImagePathAt, 255), indent + 1, 1);
  }
  w.Tag("Background", TagMode::kClose, indent, 1);
}

}  // namespace native_xml
}  // namespace kelpdex
