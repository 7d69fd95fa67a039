// The Styles section of an Excel 2003 XML file: each style of the table as a Style element with
// its alignment, borders, font, interior, number format and protection, and the way back.
#include <charconv>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <string>

#include "core/locale_settings.h"
#include "exchange/excel_xml_parts.h"
#include "format/number_style.h"
#include "persist/native_xml.h"
#include "store/bytes.h"

namespace kelpdex::excel_xml {

namespace {

// Stored alignment values (the native form's) and the words of this form.
struct Word {
  uint8_t value;
  const char* word;
};
constexpr Word kHorizontal[] = {{1, "Left"}, {2, "Center"}, {3, "Right"}};
constexpr Word kVertical[] = {{4, "Top"}, {5, "Center"}, {7, "Bottom"}};
// Border sides by their bit in the style's mask, in the order they are written.
constexpr Word kSides[] = {{4, "Left"},   {8, "Right"},         {1, "Top"},
                           {2, "Bottom"}, {16, "DiagonalLeft"}, {32, "DiagonalRight"}};
// The stored line styles and how each is spelt here; the pixel widths become a weight.
struct Line {
  const char* style;
  int weight;
};
constexpr Line kLines[10] = {
    {"None", 0},       {"Continuous", 0}, {"Dot", 0},        {"Dash", 0},       {"DashDot", 0},
    {"DashDotDot", 0}, {"Continuous", 1}, {"Continuous", 2}, {"Continuous", 3}, {"Double", 0}};
constexpr uint8_t kWeightBold = 2;  // "Bold" among the font weights
// The font record's name field keeps its last byte zero.
constexpr size_t kFontNameMax = 127;

// The words of ss:Format that stand for a category rather than a format string.
bool CategoryOfWord(std::string_view word, NumberStyle& s) {
  if (word == "General") return true;  // the default kind
  if (word == "Fixed") {
    s.kind = format_kind::kGeneral;
    s.fixedDecimals = true;
    s.decimalDigits = 2;
  } else if (word == "Currency") {
    s.kind = format_kind::kCurrency;
    s.fixedDecimals = true;
    s.decimalDigits = 2;
    std::strncpy(s.symbol, currentLocale.currencySymbol, sizeof s.symbol - 1);
  } else if (word == "Accounting") {
    s.kind = format_kind::kAccounting;
    s.decimalDigits = 2;
    std::strncpy(s.symbol, currentLocale.currencySymbol, sizeof s.symbol - 1);
  } else if (word == "Short Date") {
    s.kind = format_kind::kDate;
  } else if (word == "Time") {
    s.kind = format_kind::kTime;
  } else if (word == "Percent") {
    s.kind = format_kind::kPercentage;
    s.decimalDigits = 2;
  } else if (word == "Fraction") {
    s.kind = format_kind::kFraction;
    s.denominatorDigits = 1;
  } else if (word == "Scientific") {
    s.kind = format_kind::kScientific;
    s.decimalDigits = 2;
  } else {
    return false;
  }
  return true;
}

// The format string of a style's number format; percentages are spelt with the locale's
// separators and an escaped sign, so that the value shows as it is stored.
std::string FormatText(const NumberStyle& s) {
  if (s.kind != format_kind::kPercentage) return BuildFormatString(s);
  char text[64];
  const char group = currentLocale.thousandSeparator;
  const char point = currentLocale.decimalSeparator;
  if (s.decimalDigits > 0) {
    std::snprintf(text, sizeof text, "#%c##0%c%0*d\\%%", group, point, s.decimalDigits, 0);
  } else if (s.fixedDecimals) {
    std::snprintf(text, sizeof text, "#%c##0\\%%", group);
  } else {
    std::snprintf(text, sizeof text, "#%c##0%c#\\%%", group, point);
  }
  return text;
}

void WriteFont(XmlWriter& w, const uint8_t* style, const FontRecord& font, bool withColour) {
  const uint8_t* f = font.bytes;
  XmlAttributes a;
  std::string_view name(reinterpret_cast<const char*>(f + font::kNameAt),
                        strnlen(reinterpret_cast<const char*>(f + font::kNameAt), 127));
  if (!name.empty()) a.Text("ss:FontName", name);
  uint8_t family = f[font::kFamilyAt];
  if (family > 0 && family < 6) a.Text("x:Family", xml_words::kFamilies[family]);
  if (f[font::kSizeAt] != 0) a.Int("ss:Size", f[font::kSizeAt]);
  if (f[font::kWeightAt] >= kWeightBold) a.Text("ss:Bold", "1");
  if (f[font::kItalicAt]) a.Text("ss:Italic", "1");
  if (f[font::kUnderlineAt]) a.Text("ss:Underline", "Single");
  if (withColour && style[style::kFontColourSetAt]) {
    a.Colour("ss:Color", LoadU32(style + style::kFontColourAt), HexCase::kLower);
  }
  if (!a.str().empty()) w.Tag("Font", a, TagMode::kEmpty, 3, 1);
}

void WriteStyle(XmlWriter& w, const StyleTable& table, uint16_t id) {
  const uint8_t* b = table.Style(id).bytes;
  XmlAttributes head;
  if (id == 0) {
    head.Text("ss:ID", "Default").Text("ss:Name", "Normal");
  } else {
    head.Text("ss:ID", "s" + std::to_string(id));
  }
  w.Tag("Style", head, TagMode::kOpen, 2, 1);

  XmlAttributes align;
  for (const Word& h : kHorizontal) {
    if (b[style::kHorizontalAt] == h.value) align.Text("ss:Horizontal", h.word);
  }
  for (const Word& v : kVertical) {
    if (b[style::kVerticalAt] == v.value) align.Text("ss:Vertical", v.word);
  }
  if (b[style::kIndentAt]) align.Int("ss:Indent", b[style::kIndentAt]);
  if (b[style::kWrapAt]) align.Text("ss:WrapText", "1");
  if (b[style::kFitAt]) align.Text("ss:ShrinkToFit", "1");
  if (int16_t rotation = static_cast<int16_t>(LoadU16(b + style::kRotationAt))) {
    align.Int("ss:Rotate", rotation);
  }
  if (!align.str().empty()) w.Tag("Alignment", align, TagMode::kEmpty, 3, 1);

  if (b[style::kBordersAt]) {
    w.Tag("Borders", TagMode::kOpen, 3, 1);
    const Line& line = kLines[b[style::kBorderLineAt] < 10 ? b[style::kBorderLineAt] : 1];
    for (const Word& side : kSides) {
      if (!(b[style::kBordersAt] & side.value)) continue;
      XmlAttributes a;
      a.Text("ss:Position", side.word).Text("ss:LineStyle", line.style);
      if (line.weight != 0) a.Int("ss:Weight", line.weight);
      if (b[style::kBorderColourSetAt]) {
        a.Colour("ss:Color", LoadU32(b + style::kBorderColourAt), HexCase::kLower);
      }
      w.Tag("Border", a, TagMode::kEmpty, 4, 1);
    }
    w.Tag("Borders", TagMode::kClose, 3, 1);
  }

  // The default style carries the document's default font, so that other readers show it.
  if (id == 0) {
    WriteFont(w, b, table.Font(0), b[style::kFontColourSetAt] != 0);
  } else if (b[style::kFontSetAt] || b[style::kFontColourSetAt]) {
    WriteFont(w, b, table.Font(b[style::kFontSetAt] ? b[style::kFontIndexAt] : 0), true);
  }

  if (uint8_t pattern = b[style::kFillAt]; pattern != 0 && pattern < 23) {
    // A solid fill shows its pattern colour here, and a spreadsheet shows ss:Color for a solid
    // interior; the other patterns keep the two colours apart.
    XmlAttributes a;
    const bool solid = pattern == style::kSolidFill;
    const uint8_t flags = b[style::kFillColourFlagsAt];
    if (solid && (flags & 1)) {
      a.Colour("ss:Color", LoadU32(b + style::kFillColourAt), HexCase::kUpper);
    } else if (!solid && (flags & 2)) {
      a.Colour("ss:Color", LoadU32(b + style::kFillBackgroundAt), HexCase::kUpper);
    }
    a.Text("ss:Pattern", xml_words::kPatterns[pattern]);
    if (!solid && (flags & 1)) {
      a.Colour("ss:PatternColor", LoadU32(b + style::kFillColourAt), HexCase::kUpper);
    }
    w.Tag("Interior", a, TagMode::kEmpty, 3, 1);
  }

  NumberStyle number = ReadNumberStyle(table.Style(id));
  if (number.kind != format_kind::kDefault) {
    std::string format = FormatText(number);
    if (!format.empty()) {
      XmlAttributes a;
      a.Text("ss:Format", format);
      w.Tag("NumberFormat", a, TagMode::kEmpty, 3, 1);
    }
  }
  if (b[style::kProtectedAt] || b[style::kHiddenAt]) {
    XmlAttributes a;
    a.Text("ss:Protected", b[style::kProtectedAt] ? "1" : "0");
    if (b[style::kHiddenAt]) a.Text("ss:HideFormula", "1");
    w.Tag("Protection", a, TagMode::kEmpty, 3, 1);
  }
  w.Tag("Style", TagMode::kClose, 2, 1);
}

// "1" or "0" (and the words the native form takes); 92 for anything else.
bool SsBool(XmlScanner& x, std::string_view name, bool& value) {
  const char* text = SsAttr(x, name);
  if (text == nullptr) return true;
  std::string_view v(text);
  if (v == "1" || v == "true" || v == "True") {
    value = true;
  } else if (v == "0" || v == "false" || v == "False") {
    value = false;
  } else {
    return x.Fail(err::kXmlInvalidAttribute);
  }
  return true;
}

bool SsReal(XmlScanner& x, std::string_view name, double& value) {
  const char* text = SsAttr(x, name);
  if (text == nullptr) return true;
  std::string_view v(text);
  auto [end, ec] = std::from_chars(v.data(), v.data() + v.size(), value);
  if (ec != std::errc() || end != v.data() + v.size() || !std::isfinite(value)) {
    return x.Fail(err::kXmlInvalidData);
  }
  return true;
}

// "#rrggbb" in either case; 92 for anything else.
bool SsColour(XmlScanner& x, std::string_view name, uint32_t& colour, bool& present) {
  const char* text = SsAttr(x, name);
  present = text != nullptr;
  if (text == nullptr) return true;
  std::string_view v(text);
  uint32_t rgb = 0;
  if (v.size() != 7 || v[0] != '#') return x.Fail(err::kXmlInvalidAttribute);
  auto [end, ec] = std::from_chars(v.data() + 1, v.data() + 7, rgb, 16);
  if (ec != std::errc() || end != v.data() + 7) return x.Fail(err::kXmlInvalidAttribute);
  colour = (rgb >> 16) | (rgb & 0xFF00) | ((rgb & 0xFF) << 16);
  return true;
}

bool ReadAlignment(XmlScanner& x, uint8_t* b) {
  if (const char* h = SsAttr(x, "Horizontal")) {
    for (const Word& word : kHorizontal) {
      if (std::strcmp(h, word.word) == 0) b[style::kHorizontalAt] = word.value;
    }
  }
  if (const char* v = SsAttr(x, "Vertical")) {
    for (const Word& word : kVertical) {
      if (std::strcmp(v, word.word) == 0) b[style::kVerticalAt] = word.value;
    }
  }
  double indent = 0, rotation = 0;
  bool wrap = false, fit = false;
  if (!SsReal(x, "Indent", indent) || !SsReal(x, "Rotate", rotation) ||
      !SsBool(x, "WrapText", wrap) || !SsBool(x, "ShrinkToFit", fit)) {
    return false;
  }
  if (indent < 0 || indent > 255 || rotation < -360 || rotation > 360) {
    return x.Fail(err::kXmlInvalidAttribute);
  }
  b[style::kIndentAt] = static_cast<uint8_t>(indent);
  b[style::kWrapAt] = wrap;
  b[style::kFitAt] = fit;
  StoreU16(b + style::kRotationAt, static_cast<uint16_t>(static_cast<int16_t>(rotation)));
  return true;
}

bool ReadBorder(XmlScanner& x, uint8_t* b) {
  const char* position = SsAttr(x, "Position");
  const char* lineStyle = SsAttr(x, "LineStyle");
  double weight = 0;
  uint32_t colour = 0;
  bool hasColour = false;
  if (!SsReal(x, "Weight", weight) || !SsColour(x, "Color", colour, hasColour)) return false;
  if (position == nullptr || lineStyle == nullptr || std::strcmp(lineStyle, "None") == 0) {
    return true;
  }
  uint8_t bit = 0;
  for (const Word& side : kSides) {
    if (std::strcmp(position, side.word) == 0) bit = side.value;
  }
  if (bit == 0) return true;  // a position of another spreadsheet's, such as the slanted lines
  uint8_t line = 1;
  for (uint8_t i = 1; i < 10; ++i) {
    if (std::strcmp(lineStyle, kLines[i].style) == 0 && kLines[i].weight == 0) line = i;
  }
  if (line == 1 && weight >= 1 && weight <= 3) line = static_cast<uint8_t>(5 + weight);
  b[style::kBordersAt] |= bit;
  b[style::kBorderLineAt] = line;
  if (hasColour) {
    b[style::kBorderColourSetAt] = 1;
    StoreU32(b + style::kBorderColourAt, colour);
  }
  return true;
}

bool ReadFont(XmlScanner& x, uint8_t* b, std::vector<FontRecord>& fonts, bool isDefault) {
  FontRecord font = StyleTable().Font(0);
  uint8_t* f = font.bytes;
  if (const char* name = SsAttr(x, "FontName")) {
    size_t length = std::strlen(name);
    if (length > kFontNameMax) return x.Fail(err::kXmlInvalidAttribute);
    std::memset(f + font::kNameAt, 0, 128);
    std::memcpy(f + font::kNameAt, name, length);
  }
  if (const char* family = x.Attr("Family", "x")) {
    for (uint8_t i = 1; i < 6; ++i) {
      if (std::strcmp(family, xml_words::kFamilies[i]) == 0) f[font::kFamilyAt] = i;
    }
  }
  double size = f[font::kSizeAt];
  bool bold = false, italic = false;
  uint32_t colour = 0;
  bool hasColour = false;
  if (!SsReal(x, "Size", size) || !SsBool(x, "Bold", bold) || !SsBool(x, "Italic", italic) ||
      !SsColour(x, "Color", colour, hasColour)) {
    return false;
  }
  if (size < 0 || size > 255) return x.Fail(err::kXmlInvalidAttribute);
  f[font::kSizeAt] = static_cast<uint8_t>(size + 0.5);
  if (bold) f[font::kWeightAt] = kWeightBold;
  f[font::kItalicAt] = italic;
  const char* underline = SsAttr(x, "Underline");
  f[font::kUnderlineAt] = underline != nullptr && std::strcmp(underline, "None") != 0;
  if (hasColour) {
    b[style::kFontColourSetAt] = 1;
    StoreU32(b + style::kFontColourAt, colour);
  }
  if (isDefault) {
    fonts[0] = font;
    return true;
  }
  size_t index = 0;
  while (index < fonts.size() && std::memcmp(fonts[index].bytes, f, kFontRecordSize) != 0) ++index;
  if (index == fonts.size()) {
    if (fonts.size() == kMaxFonts) return x.Fail(err::kXmlUnexpectedElement);
    fonts.push_back(font);
  }
  b[style::kFontSetAt] = 1;
  b[style::kFontIndexAt] = static_cast<uint8_t>(index);
  return true;
}

bool ReadInterior(XmlScanner& x, uint8_t* b) {
  uint32_t colour = 0, patternColour = 0;
  bool hasColour = false, hasPatternColour = false;
  if (!SsColour(x, "Color", colour, hasColour) ||
      !SsColour(x, "PatternColor", patternColour, hasPatternColour)) {
    return false;
  }
  uint8_t pattern = hasColour ? style::kSolidFill : 0;
  if (const char* word = SsAttr(x, "Pattern")) {
    pattern = 0;
    for (uint8_t i = 1; i < 23; ++i) {
      if (std::strcmp(word, xml_words::kPatterns[i]) == 0) pattern = i;
    }
  }
  b[style::kFillAt] = pattern;
  if (pattern == style::kSolidFill) {
    if (hasColour) {
      b[style::kFillColourFlagsAt] |= 1;
      StoreU32(b + style::kFillColourAt, colour);
    }
  } else if (pattern != 0) {
    if (hasColour) {
      b[style::kFillColourFlagsAt] |= 2;
      StoreU32(b + style::kFillBackgroundAt, colour);
    }
    if (hasPatternColour) {
      b[style::kFillColourFlagsAt] |= 1;
      StoreU32(b + style::kFillColourAt, patternColour);
    }
  }
  return true;
}

bool ReadNumberFormat(XmlScanner& x, StyleRecord& record) {
  const char* format = SsAttr(x, "Format");
  if (format == nullptr) return true;
  NumberStyle s;
  if (!CategoryOfWord(format, s)) {
    size_t length = std::strlen(format);
    if (length > kFormatTextMax) return x.Fail(err::kXmlInvalidData);
    s.kind = format_kind::kUserDefined;
    std::memcpy(s.userFormat, format, length + 1);
  }
  WriteNumberStyle(s, record);
  return true;
}

bool ReadStyle(XmlScanner& x, StyleRecord& record, std::vector<FontRecord>& fonts, bool isDefault) {
  uint8_t* b = record.bytes;
  for (;;) {
    if (!x.Tag("", scan::kOpen | scan::kClose | scan::kAttributes)) return false;
    std::string_view name = x.name();
    if (!x.isOpen()) return name == "Style" || x.Fail(err::kXmlUnexpectedElement);
    bool ok = true;
    if (name == "Alignment") {
      ok = ReadAlignment(x, b);
    } else if (name == "Borders") {
      if (x.isClose()) continue;
      while (ok && x.Tag("", scan::kOpen | scan::kClose | scan::kAttributes)) {
        if (!x.isOpen()) break;  // </Borders>
        ok = x.name() == "Border" ? ReadBorder(x, b) : true;
        if (ok && !x.isClose()) ok = SkipElement(x);
      }
      if (!x.ok()) return false;
      continue;
    } else if (name == "Font") {
      ok = ReadFont(x, b, fonts, isDefault);
    } else if (name == "Interior") {
      ok = ReadInterior(x, b);
    } else if (name == "NumberFormat") {
      ok = ReadNumberFormat(x, record);
    } else if (name == "Protection") {
      bool protect = false, hide = false;
      ok = SsBool(x, "Protected", protect) && SsBool(x, "HideFormula", hide);
      b[style::kProtectedAt] = protect;
      b[style::kHiddenAt] = hide;
    }
    if (!ok || (!x.isClose() && !SkipElement(x))) return false;
  }
}

}  // namespace

void WriteStyles(XmlWriter& w, const StyleTable& table) {
  w.Tag("Styles", TagMode::kOpen, 1, 1);
  for (uint16_t id = 0; id < table.styleCount() && w.ok(); ++id) WriteStyle(w, table, id);
  w.Tag("Styles", TagMode::kClose, 1, 1);
}

// "s" and digits only: a numbered id.
bool IsNumberedId(std::string_view id) {
  if (id.size() < 2 || id[0] != 's') return false;
  for (size_t i = 1; i < id.size(); ++i) {
    if (id[i] < '0' || id[i] > '9') return false;
  }
  return true;
}

// The number of a numbered id, 0 when it lies outside 1..512.
int IdNumber(std::string_view id) {
  int number = 0;
  auto [end, ec] = std::from_chars(id.data() + 1, id.data() + id.size(), number);
  return ec == std::errc() && number >= 1 && number <= kMaxStyleId ? number : 0;
}

bool StyleSlot(XmlScanner& x, const char* value, const StyleIds& ids, uint16_t& slot) {
  std::string_view v(value);
  if (v == "Default") {
    slot = 0;
    return true;
  }
  if (IsNumberedId(v)) {
    const int id = IdNumber(v);
    if (id == 0 || ids.slot[id] < 0) return x.Fail(err::kXmlInvalidAttribute);
    slot = static_cast<uint16_t>(ids.slot[id]);
    return true;
  }
  auto named = ids.named.find(std::string(v));
  if (named == ids.named.end()) return x.Fail(err::kXmlInvalidAttribute);
  slot = named->second;
  return true;
}

bool ReadStyles(XmlScanner& x, std::vector<StyleRecord>& styles, std::vector<FontRecord>& fonts,
                StyleIds& ids) {
  bool haveDefault = false;
  for (;;) {
    if (!x.Tag("", scan::kOpen | scan::kClose | scan::kAttributes)) return false;
    if (!x.isOpen()) return x.name() == "Styles" || x.Fail(err::kXmlUnexpectedElement);
    if (x.name() != "Style") {
      if (!x.isClose() && !SkipElement(x)) return false;
      continue;
    }
    const char* id = SsAttr(x, "ID");
    if (id == nullptr) return x.Fail(err::kXmlMissingAttribute);
    std::string_view text(id);
    size_t slot;
    if (text == "Default") {
      if (haveDefault) return x.Fail(err::kXmlInvalidAttribute);
      haveDefault = true;
      slot = 0;
    } else {
      // Another spreadsheet's own ids ("s21", "ce1") keep their names in the file only: the
      // styles take the slots in the order they come.
      const bool numbered = IsNumberedId(text);
      const int number = numbered ? IdNumber(text) : 0;
      if (numbered ? number == 0 || ids.slot[number] >= 0
                   : ids.named.count(std::string(text)) != 0) {
        return x.Fail(err::kXmlInvalidAttribute);
      }
      if (styles.size() == kMaxStyles) return x.Fail(err::kXmlUnexpectedElement);
      slot = styles.size();
      styles.push_back(StyleTable().Style(0));
      if (numbered) {
        ids.slot[number] = static_cast<int16_t>(slot);
      } else {
        ids.named.emplace(text, static_cast<uint16_t>(slot));
      }
    }
    if (x.isClose()) continue;
    if (!ReadStyle(x, styles[slot], fonts, slot == 0)) return false;
  }
}

bool SkipElement(XmlScanner& x) {
  int depth = 1;
  while (depth > 0) {
    if (!x.Tag("", scan::kOpen | scan::kClose | scan::kOptional)) {
      if (!x.ok() || !x.TextBody(XmlScanner::kTextBufferSize) ||
          !x.Tag("", scan::kOpen | scan::kClose)) {
        return false;
      }
    }
    if (x.isOpen() && !x.isClose()) ++depth;
    if (x.isClose() && !x.isOpen()) --depth;
  }
  return true;
}

}  // namespace kelpdex::excel_xml
