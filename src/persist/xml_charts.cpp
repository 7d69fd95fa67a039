#include "persist/xml_charts.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstring>
#include <string>
#include <string_view>

#include "persist/chart_layout.h"
#include "persist/chart_matrix.h"
#include "persist/native_xml.h"
#include "persist/xml_sections.h"
#include "store/bytes.h"

namespace kelpdex {

namespace {

using native_xml::FieldText;
using native_xml::WordOf;

// The writer's scale words. The reader's third word is "Log", so a natural-log scale does not load
// back: files written that way exist and must keep failing the same way.
const char* const kScalesWritten[4] = {"Linear", "Log2", "LogE", "Log10"};
const char* const kScalesRead[4] = {"Linear", "Log2", "Log", "Log10"};
const char* const kLegendPositions[4] = {"None", "Bottom", "Right", "Left"};
const char* const kLegendLayouts[2] = {"Horizontal", "Vertical"};
const char* const kStacking[3] = {"None", "Normal", "Relative"};
const char* const kSymbols[15] = {"None",       "Rectangle3", "Rectangle5", "Rectangle7",
                                  "Rectangle9", "Diamond5",   "Diamond7",   "Diamond9",
                                  "Circle5",    "Circle7",    "Circle9",    "Asterisk7",
                                  "Asterisk9",  "Cross7",     "Cross9"};
const char* const kAxisTypes[4] = {"Automatic", "Category", "Value", "Time"};

struct Option {
  const char* name;
  uint32_t at;
};
const Option kOptions[7] = {
    {"ViewWidth", chart::kViewWidthAt},     {"ViewHeight", chart::kViewHeightAt},
    {"BarSize", chart::kBarSizeAt},         {"StackBarSize", chart::kStackBarSizeAt},
    {"LineWidth3D", chart::kLineWidth3DAt}, {"PieTickness3D", chart::kPieThickness3DAt},
    {"PieSplit", chart::kPieSplitAt}};

struct View {
  const char* name;
  uint32_t at;
};
const View kViews[4] = {{"Column", series::kColumnViewAt},
                        {"Line", series::kLineViewAt},
                        {"Area", series::kAreaViewAt},
                        {"Scatter", series::kScatterViewAt}};

const char* const kPlanes[3] = {"PlaneXY", "PlaneXZ", "PlaneYZ"};
const uint32_t kPlaneOffsets[3] = {chart::kPlaneXYAt, chart::kPlaneXZAt, chart::kPlaneYZAt};

const char* const kMatrixNames[16] = {"m11", "m12", "m13", "m14", "m21", "m22", "m23", "m24",
                                      "m31", "m32", "m33", "m34", "m41", "m42", "m43", "m44"};

bool AnySet(const uint8_t* p, size_t size) {
  for (size_t i = 0; i < size; ++i) {
    if (p[i] != 0) return true;
  }
  return false;
}

float LoadFloat(const uint8_t* p) {
  uint32_t bits = LoadU32(p);
  float value;
  std::memcpy(&value, &bits, sizeof value);
  return value;
}

void StoreFloat(uint8_t* p, float value) {
  uint32_t bits;
  std::memcpy(&bits, &value, sizeof bits);
  StoreU32(p, bits);
}

void StoreIdentity(uint8_t* matrix) {
  for (int k = 0; k < 16; ++k) StoreFloat(matrix + 4 * k, k % 5 == 0 ? 1.0f : 0.0f);
}

class ChartWriter {
 public:
  explicit ChartWriter(XmlWriter& w) : w_(w) {}

  void Write(const ChartRecord& chart, int indent) {
    const uint8_t* b = chart.bytes.data();
    const uint8_t type = b[chart::kTypeAt];
    const char* name = type == chart::kChartXY   ? "ChartXY"
                       : type == chart::kChart3D ? "Chart3D"
                                                 : "Chart2D";
    w_.Tag(name, TagMode::kOpen, indent, 1);
    const int in = indent + 1;

    w_.Tag("Options", TagMode::kOpen, in, 1);
    for (const Option& o : kOptions) {
      w_.TextElement(o.name, std::to_string(LoadU16(b + o.at)), in + 1, 1);
    }
    w_.Tag("Options", TagMode::kClose, in, 1);

    const uint8_t* titleFont = b + chart::kTitleFontAt;
    std::string_view title = FieldText(b + chart::kTitleTextAt, kChartTextSize - 1);
    if (AnySet(titleFont, kFontRecordSize) || !title.empty()) {
      w_.Tag("Title", TagMode::kOpen, in, 1);
      if (AnySet(titleFont, kFontRecordSize)) Font(titleFont, in + 1);
      if (!title.empty()) w_.TextElement("Text", title, in + 1, 1);
      w_.Tag("Title", TagMode::kClose, in, 1);
    }

    if (AnySet(b + chart::kLegendPositionAt,
               chart::kLightDirectionXAt - chart::kLegendPositionAt)) {
      XmlAttributes a;
      a.Text("Position", WordOf(kLegendPositions, b[chart::kLegendPositionAt]))
          .Text("Layout", WordOf(kLegendLayouts, b[chart::kLegendLayoutAt]));
      const uint8_t* font = b + chart::kLegendFontAt;
      if (AnySet(font, kFontRecordSize)) {
        w_.Tag("Legend", a, TagMode::kOpen, in, 1);
        Font(font, in + 1);
        w_.Tag("Legend", TagMode::kClose, in, 1);
      } else {
        w_.Tag("Legend", a, TagMode::kEmpty, in, 1);
      }
    }

    w_.Tag("Transformation", TagMode::kOpen, in, 1);
    XmlAttributes m;
    for (int k = 0; k < 16; ++k) {
      // The float's exact value as a double: the reader takes a double and narrows it, and the
      // shortest float text could round differently on that way.
      m.Real(kMatrixNames[k], static_cast<double>(LoadFloat(chart.matrix.data() + 4 * k)));
    }
    w_.Tag("Matrix", m, TagMode::kEmpty, in + 1, 1);
    w_.TextElement("LightDirectionX", std::to_string(b[chart::kLightDirectionXAt]), in + 1, 1);
    w_.TextElement("LightDirectionY", std::to_string(b[chart::kLightDirectionYAt]), in + 1, 1);
    if (b[chart::kPerspectiveAt] != 0) {
      w_.TextElement("Perspective", std::to_string(b[chart::kPerspectiveAt]), in + 1, 1);
    }
    w_.Tag("Transformation", TagMode::kClose, in, 1);

    size_t count = std::min<size_t>(chart.series.size(), kMaxChartSeries);
    if (count == 0) {
      w_.Tag("DataSeries", TagMode::kEmpty, in, 1);
    } else {
      w_.Tag("DataSeries", TagMode::kOpen, in, 1);
      for (size_t i = 0; i < count && w_.ok(); ++i) Sigma(chart.series[i].data(), in + 1);
      w_.Tag("DataSeries", TagMode::kClose, in, 1);
    }

    w_.Tag("ChartPlane", TagMode::kOpen, in, 1);
    for (int p = 0; p < (type == chart::kChart3D ? 3 : 1); ++p) {
      Plane(kPlanes[p], b + kPlaneOffsets[p], in + 1);
    }
    w_.Tag("ChartPlane", TagMode::kClose, in, 1);
    w_.Tag(name, TagMode::kClose, indent, 1);
  }

 private:
  void Font(const uint8_t* f, int indent) {
    XmlAttributes a;
    native_xml::WriteFontAttributes(f, a);
    w_.Tag("Font", a, TagMode::kEmpty, indent, 1);
  }

  static void LineAttributes(const uint8_t* line, XmlAttributes& a) {
    a.Text("Style", WordOf(xml_words::kLineStyles, line[chart_line::kStyleAt]))
        .Colour("Color", LoadU32(line + chart_line::kColourAt), HexCase::kLower)
        .Int("Width", line[chart_line::kWidthAt]);
  }

  void Line(const char* name, const uint8_t* line, int indent) {
    XmlAttributes a;
    LineAttributes(line, a);
    w_.Tag(name, a, TagMode::kEmpty, indent, 1);
  }

  void Plane(const char* name, const uint8_t* p, int indent) {
    const uint8_t* fill = p + chart::kPlaneFillAt;
    const uint8_t* border = p + chart::kPlaneBorderAt;
    bool hasFill = AnySet(fill, chart_fill::kSize);
    bool hasBorder = AnySet(border, chart_line::kSize);
    if (!hasFill && !hasBorder) {
      w_.Tag(name, TagMode::kEmpty, indent, 1);
      return;
    }
    w_.Tag(name, TagMode::kOpen, indent, 1);
    if (hasFill) {
      XmlAttributes a;
      a.Text("PatternType", WordOf(xml_words::kPatterns, fill[chart_fill::kPatternAt]))
          .Colour("PatternColor", LoadU32(fill + chart_fill::kColourAt), HexCase::kUpper)
          .Colour("BackgroundColor", LoadU32(fill + chart_fill::kBackgroundAt), HexCase::kUpper);
      w_.Tag("FillPattern", a, TagMode::kEmpty, indent + 1, 1);
    }
    if (hasBorder) Line("Border", border, indent + 1);
    w_.Tag(name, TagMode::kClose, indent, 1);
  }

  void Sigma(const uint8_t* s, int indent) {
    XmlAttributes a;
    a.Text("Scale", WordOf(kScalesWritten, s[series::kScaleAt]));
    std::string_view name = FieldText(s + series::kNameAt, kChartTextSize - 1);
    if (!name.empty()) a.Text("Name", name);
    if (s[series::kRelatedKindAt] == series::kRelatedSigma) {
      a.Int("RelatedSigma", s[series::kRelatedAt]);
    } else if (s[series::kRelatedKindAt] == series::kRelatedX) {
      a.Int("RelatedX", s[series::kRelatedAt]);
    }
    if (!AnySet(s + series::kFromValueAt, series::kAxisEnd - series::kFromValueAt)) {
      w_.Tag("Sigma", a, TagMode::kEmpty, indent, 1);
      return;
    }
    w_.Tag("Sigma", a, TagMode::kOpen, indent, 1);
    const int in = indent + 1;
    if (AnySet(s + series::kFromValueAt, series::kPeriodsAt - series::kFromValueAt)) {
      XmlAttributes d;
      d.Real("FromValue", LoadF64(s + series::kFromValueAt))
          .Real("ToValue", LoadF64(s + series::kToValueAt));
      w_.Tag("DataArray", d, TagMode::kEmpty, in, 1);
    }
    if (AnySet(s + series::kPeriodsAt, series::kColumnViewAt - series::kPeriodsAt)) {
      XmlAttributes d;
      d.Int("Periods", LoadU16(s + series::kPeriodsAt))
          .Int("Subperiods", LoadU16(s + series::kSubperiodsAt))
          .Real("Divisor", LoadF64(s + series::kDivisorAt));
      w_.Tag("DataPeriods", d, TagMode::kEmpty, in, 1);
    }
    for (const View& view : kViews) {
      const uint8_t* v = s + view.at;
      if (!AnySet(v, series::kViewSize)) continue;
      XmlAttributes d;
      d.Text("Stacked", WordOf(kStacking, v[series::kViewStackedAt]))
          .Bool("Labels", v[series::kViewLabelsAt] != 0)
          .Bool("Visible", v[series::kViewVisibleAt] != 0);
      if (view.at == series::kScatterViewAt) {
        d.Text("Symbol", WordOf(kSymbols, v[series::kViewSymbolAt]));
      }
      w_.Tag(view.name, d, TagMode::kEmpty, in, 1);
    }
    if (AnySet(s + series::kAxisAt, series::kAxisEnd - series::kAxisAt)) Axis(s, in);
    w_.Tag("Sigma", TagMode::kClose, indent, 1);
  }

  void Axis(const uint8_t* s, int indent) {
    XmlAttributes a;
    a.Text("Type", WordOf(kAxisTypes, s[series::kAxisTypeAt]))
        .Bool("Labels", s[series::kAxisLabelsAt] != 0)
        .Bool("Title", s[series::kAxisTitleAt] != 0)
        .Int("Ticks", LoadU16(s + series::kAxisTicksAt))
        .Int("Subticks", LoadU16(s + series::kAxisSubticksAt));
    std::string_view title = FieldText(s + series::kAxisTitleTextAt, kChartTextSize - 1);
    bool hasLine = AnySet(s + series::kAxisLineAt, chart_line::kSize);
    bool hasGrid = AnySet(s + series::kMajorGridAt, series::kAxisEnd - series::kMajorGridAt);
    if (title.empty() && !hasLine && !hasGrid) {
      w_.Tag("Axis", a, TagMode::kEmpty, indent, 1);
      return;
    }
    w_.Tag("Axis", a, TagMode::kOpen, indent, 1);
    const int in = indent + 1;
    if (!title.empty()) w_.TextElement("TitleText", title, in, 1);
    if (hasLine) Line("Line", s + series::kAxisLineAt, in);
    if (hasGrid) {
      w_.Tag("GridLines", TagMode::kOpen, in, 1);
      if (AnySet(s + series::kMajorGridAt, chart_line::kSize)) {
        Line("MajorGridLines", s + series::kMajorGridAt, in + 1);
      }
      if (AnySet(s + series::kMinorGridAt, chart_line::kSize)) {
        Line("MinorGridLines", s + series::kMinorGridAt, in + 1);
      }
      uint32_t users = std::min<uint32_t>(s[series::kUserGridCountAt], series::kMaxUserGridLines);
      for (uint32_t i = 0; i < users; ++i) {
        const uint8_t* u = s + series::kUserGridAt + i * series::kUserGridSize;
        XmlAttributes d;
        LineAttributes(u, d);
        d.Real("Value", LoadF64(u + series::kUserGridValueAt));
        w_.Tag("UserGridLine", d, TagMode::kEmpty, in + 1, 1);
      }
      w_.Tag("GridLines", TagMode::kClose, in, 1);
    }
    w_.Tag("Axis", TagMode::kClose, indent, 1);
  }

  XmlWriter& w_;
};

class ChartReader {
 public:
  ChartReader(XmlScanner& x, ChartRecord& c) : x_(x), c_(c), b_(c.bytes.data()) {}

  bool Read() {
    std::string name(x_.name());
    if (name == "Chart2D") {
      b_[chart::kTypeAt] = chart::kChart2D;
    } else if (name == "ChartXY") {
      b_[chart::kTypeAt] = chart::kChartXY;
    } else if (name == "Chart3D") {
      b_[chart::kTypeAt] = chart::kChart3D;
    } else {
      return Fail(err::kXmlUnexpectedElement);
    }
    StoreIdentity(c_.matrix.data());
    if (x_.isClose()) return true;
    if (!ReadOptions() || !ReadTitle() || !ReadLegend() || !ReadTransformation() ||
        !ReadDataSeries() || !ReadChartPlane()) {
      return false;
    }
    b_[chart::kSeriesCountAt] = static_cast<uint8_t>(c_.series.size());
    return x_.Tag(name, scan::kClose);
  }

 private:
  static constexpr ScanFlags kOptionalOpen = scan::kOpen | scan::kAttributes | scan::kOptional;
  static constexpr ScanFlags kOptionalBare = scan::kOpen | scan::kOptional;

  bool Fail(ErrorCode code) { return x_.Fail(code); }
  // An optional tag that was not there is fine unless the scanner failed looking for it.
  bool Missed() const { return x_.ok(); }
  bool CloseIfOpen(std::string_view name) { return x_.isClose() || x_.Tag(name, scan::kClose); }

  template <size_t N>
  bool Word(std::string_view attribute, const char* const (&words)[N], uint8_t& value) {
    const char* text = x_.Attr(attribute);
    if (text == nullptr) return x_.ok();
    for (size_t i = 0; i < N; ++i) {
      if (std::strcmp(text, words[i]) == 0) {
        value = static_cast<uint8_t>(i);
        return true;
      }
    }
    return Fail(err::kXmlInvalidAttribute);
  }

  bool TextAttr(std::string_view attribute, uint8_t* field) {
    const char* text = x_.Attr(attribute);
    if (text == nullptr) return true;
    size_t n = std::strlen(text);
    if (n >= kChartTextSize) return Fail(err::kXmlInvalidAttribute);
    std::memcpy(field, text, n);
    return true;
  }

  // An optional element with a whole number as its text; 94 for anything else or out of range.
  bool IntText(std::string_view name, int64_t min, int64_t max, int64_t& value, bool& present) {
    present = x_.Text(name, 32, scan::kOptional);
    if (!present) return Missed();
    std::string_view t = x_.text();
    int64_t v = 0;
    auto r = std::from_chars(t.data(), t.data() + t.size(), v);
    if (t.empty() || r.ec != std::errc() || r.ptr != t.data() + t.size() || v < min || v > max) {
      return Fail(err::kXmlInvalidData);
    }
    value = v;
    return true;
  }

  bool ByteText(std::string_view name, int64_t min, int64_t max, uint32_t at) {
    int64_t v = 0;
    bool present = false;
    if (!IntText(name, min, max, v, present)) return false;
    if (present) b_[at] = static_cast<uint8_t>(v);
    return true;
  }

  bool RealText(std::string_view name, double& value, bool& present) {
    present = x_.Text(name, 64, scan::kOptional);
    if (!present) return Missed();
    std::string_view t = x_.text();
    auto r = std::from_chars(t.data(), t.data() + t.size(), value);
    if (t.empty() || r.ec != std::errc() || r.ptr != t.data() + t.size() || !std::isfinite(value)) {
      return Fail(err::kXmlInvalidData);
    }
    return true;
  }

  bool OptionalFont(uint8_t* f) {
    if (!x_.Tag("Font", kOptionalOpen)) return Missed();
    return native_xml::ReadFontAttributes(x_, f) && CloseIfOpen("Font");
  }

  bool ReadLine(uint8_t* line) {
    uint32_t colour = 0;
    int width = 0;
    if (!Word("Style", xml_words::kLineStyles, line[chart_line::kStyleAt]) ||
        !x_.ColourAttr("Color", colour) || !x_.IntAttr("Width", width, 0, 255)) {
      return false;
    }
    StoreU32(line + chart_line::kColourAt, colour);
    line[chart_line::kWidthAt] = static_cast<uint8_t>(width);
    return true;
  }

  bool OptionalLine(std::string_view name, uint8_t* line) {
    if (!x_.Tag(name, kOptionalOpen)) return Missed();
    return ReadLine(line) && CloseIfOpen(name);
  }

  bool ReadOptions() {
    if (!x_.Tag("Options", kOptionalBare)) return Missed();
    if (x_.isClose()) return true;
    for (const Option& o : kOptions) {
      int64_t v = 0;
      bool present = false;
      if (!IntText(o.name, 0, 65535, v, present)) return false;
      if (present) StoreU16(b_ + o.at, static_cast<uint16_t>(v));
    }
    return x_.Tag("Options", scan::kClose);
  }

  bool ReadTitle() {
    if (!x_.Tag("Title", kOptionalBare)) return Missed();
    if (x_.isClose()) return true;
    if (!OptionalFont(b_ + chart::kTitleFontAt)) return false;
    if (x_.Text("Text", kChartTextSize - 1, scan::kOptional)) {
      std::memcpy(b_ + chart::kTitleTextAt, x_.text().data(), x_.text().size());
    } else if (!Missed()) {
      return false;
    }
    return x_.Tag("Title", scan::kClose);
  }

  bool ReadLegend() {
    if (!x_.Tag("Legend", kOptionalOpen)) return Missed();
    if (!Word("Position", kLegendPositions, b_[chart::kLegendPositionAt]) ||
        !Word("Layout", kLegendLayouts, b_[chart::kLegendLayoutAt])) {
      return false;
    }
    if (x_.isClose()) return true;
    return OptionalFont(b_ + chart::kLegendFontAt) && x_.Tag("Legend", scan::kClose);
  }

  bool ReadTransformation() {
    if (!x_.Tag("Transformation", kOptionalBare)) return Missed();
    if (x_.isClose()) return true;
    if (x_.Tag("Matrix", kOptionalOpen)) {
      for (int k = 0; k < 16; ++k) {
        double v = LoadFloat(c_.matrix.data() + 4 * k);
        if (!x_.RealAttr(kMatrixNames[k], v)) return false;
        StoreFloat(c_.matrix.data() + 4 * k, static_cast<float>(v));
      }
      if (!CloseIfOpen("Matrix")) return false;
    } else if (!Missed()) {
      return false;
    }
    // Angles in degrees, as older documents gave the view; any of them replaces the matrix with
    // the one older binary files get from theirs.
    static const char* const kRotations[3] = {"RotationX", "RotationY", "RotationZ"};
    double degrees[3] = {};
    bool rotated = false;
    for (int axis = 0; axis < 3; ++axis) {
      bool present = false;
      if (!RealText(kRotations[axis], degrees[axis], present)) return false;
      rotated |= present;
    }
    if (rotated) StoreRotationMatrix(degrees, c_.matrix.data());
    if (!ByteText("LightDirectionX", 0, 180, chart::kLightDirectionXAt) ||
        !ByteText("LightDirectionY", 0, 180, chart::kLightDirectionYAt) ||
        !ByteText("Perspective", 1, 100, chart::kPerspectiveAt)) {
      return false;
    }
    return x_.Tag("Transformation", scan::kClose);
  }

  bool ReadDataSeries() {
    if (!x_.Tag("DataSeries", kOptionalBare)) return Missed();
    if (x_.isClose()) return true;
    while (x_.Tag("Sigma", kOptionalOpen)) {
      if (c_.series.size() == kMaxChartSeries) return Fail(err::kXmlUnexpectedElement);
      c_.series.emplace_back();
      if (!ReadSigma(c_.series.back().data())) return false;
    }
    return Missed() && x_.Tag("DataSeries", scan::kClose);
  }

  bool ReadSigma(uint8_t* s) {
    if (!Word("Scale", kScalesRead, s[series::kScaleAt]) ||
        !TextAttr("Name", s + series::kNameAt)) {
      return false;
    }
    int related = 0;
    if (x_.Attr("RelatedSigma") != nullptr) {
      if (x_.Attr("RelatedX") != nullptr) return Fail(err::kXmlInvalidAttribute);
      if (!x_.IntAttr("RelatedSigma", related, 1, int{kMaxChartSeries})) return false;
      s[series::kRelatedKindAt] = series::kRelatedSigma;
    } else if (x_.Attr("RelatedX") != nullptr) {
      if (!x_.IntAttr("RelatedX", related, 1, int{kMaxChartSeries})) return false;
      s[series::kRelatedKindAt] = series::kRelatedX;
    }
    s[series::kRelatedAt] = static_cast<uint8_t>(related);
    if (x_.isClose()) return true;

    if (x_.Tag("DataArray", kOptionalOpen)) {
      double from = 0, to = 0;
      if (!x_.RealAttr("FromValue", from) || !x_.RealAttr("ToValue", to) ||
          !CloseIfOpen("DataArray")) {
        return false;
      }
      StoreF64(s + series::kFromValueAt, from);
      StoreF64(s + series::kToValueAt, to);
    } else if (!Missed()) {
      return false;
    }
    if (x_.Tag("DataPeriods", kOptionalOpen)) {
      int periods = 0, subperiods = 0;
      double divisor = 0;
      if (!x_.IntAttr("Periods", periods, 0, 65535) ||
          !x_.IntAttr("Subperiods", subperiods, 0, 65535) || !x_.RealAttr("Divisor", divisor) ||
          !CloseIfOpen("DataPeriods")) {
        return false;
      }
      StoreU16(s + series::kPeriodsAt, static_cast<uint16_t>(periods));
      StoreU16(s + series::kSubperiodsAt, static_cast<uint16_t>(subperiods));
      StoreF64(s + series::kDivisorAt, divisor);
    } else if (!Missed()) {
      return false;
    }
    for (const View& view : kViews) {
      if (!x_.Tag(view.name, kOptionalOpen)) {
        if (!Missed()) return false;
        continue;
      }
      uint8_t* v = s + view.at;
      bool labels = false, visible = false;
      if (!Word("Stacked", kStacking, v[series::kViewStackedAt]) ||
          !x_.BoolAttr("Labels", labels) || !x_.BoolAttr("Visible", visible)) {
        return false;
      }
      if (view.at == series::kScatterViewAt &&
          !Word("Symbol", kSymbols, v[series::kViewSymbolAt])) {
        return false;
      }
      v[series::kViewLabelsAt] = labels;
      v[series::kViewVisibleAt] = visible;
      if (!CloseIfOpen(view.name)) return false;
    }
    return ReadAxis(s) && x_.Tag("Sigma", scan::kClose);
  }

  bool ReadAxis(uint8_t* s) {
    if (!x_.Tag("Axis", kOptionalOpen)) return Missed();
    bool labels = false, title = false;
    int ticks = 0, subticks = 0;
    if (!Word("Type", kAxisTypes, s[series::kAxisTypeAt]) || !x_.BoolAttr("Labels", labels) ||
        !x_.BoolAttr("Title", title) || !x_.IntAttr("Ticks", ticks, 0, 65535) ||
        !x_.IntAttr("Subticks", subticks, 0, 65535)) {
      return false;
    }
    s[series::kAxisLabelsAt] = labels;
    s[series::kAxisTitleAt] = title;
    StoreU16(s + series::kAxisTicksAt, static_cast<uint16_t>(ticks));
    StoreU16(s + series::kAxisSubticksAt, static_cast<uint16_t>(subticks));
    if (x_.isClose()) return true;
    if (x_.Text("TitleText", kChartTextSize - 1, scan::kOptional)) {
      std::memcpy(s + series::kAxisTitleTextAt, x_.text().data(), x_.text().size());
    } else if (!Missed()) {
      return false;
    }
    if (!OptionalLine("Line", s + series::kAxisLineAt)) return false;
    if (x_.Tag("GridLines", kOptionalBare)) {
      if (!x_.isClose()) {
        if (!OptionalLine("MajorGridLines", s + series::kMajorGridAt) ||
            !OptionalLine("MinorGridLines", s + series::kMinorGridAt)) {
          return false;
        }
        uint8_t& count = s[series::kUserGridCountAt];
        while (x_.Tag("UserGridLine", kOptionalOpen)) {
          if (count == series::kMaxUserGridLines) return Fail(err::kXmlUnexpectedElement);
          uint8_t* u = s + series::kUserGridAt + count * series::kUserGridSize;
          double value = 0;
          if (!ReadLine(u) || !x_.RealAttr("Value", value) || !CloseIfOpen("UserGridLine")) {
            return false;
          }
          StoreF64(u + series::kUserGridValueAt, value);
          ++count;
        }
        if (!Missed() || !x_.Tag("GridLines", scan::kClose)) return false;
      }
    } else if (!Missed()) {
      return false;
    }
    return x_.Tag("Axis", scan::kClose);
  }

  bool ReadChartPlane() {
    if (!x_.Tag("ChartPlane", kOptionalBare)) return Missed();
    if (x_.isClose()) return true;
    for (int p = 0; p < (b_[chart::kTypeAt] == chart::kChart3D ? 3 : 1); ++p) {
      if (!x_.Tag(kPlanes[p], kOptionalBare)) {
        if (!Missed()) return false;
        continue;
      }
      if (x_.isClose()) continue;
      uint8_t* plane = b_ + kPlaneOffsets[p];
      if (x_.Tag("FillPattern", kOptionalOpen)) {
        uint8_t* fill = plane + chart::kPlaneFillAt;
        uint32_t colour = 0, background = 0;
        if (!Word("PatternType", xml_words::kPatterns, fill[chart_fill::kPatternAt]) ||
            !x_.ColourAttr("PatternColor", colour) ||
            !x_.ColourAttr("BackgroundColor", background) || !CloseIfOpen("FillPattern")) {
          return false;
        }
        StoreU32(fill + chart_fill::kColourAt, colour);
        StoreU32(fill + chart_fill::kBackgroundAt, background);
      } else if (!Missed()) {
        return false;
      }
      if (!OptionalLine("Border", plane + chart::kPlaneBorderAt) ||
          !x_.Tag(kPlanes[p], scan::kClose)) {
        return false;
      }
    }
    return x_.Tag("ChartPlane", scan::kClose);
  }

  XmlScanner& x_;
  ChartRecord& c_;
  uint8_t* b_;
};

}  // namespace

bool WriteChartElement(XmlWriter& writer, const ChartRecord& chart, int indent) {
  ChartWriter(writer).Write(chart, indent);
  return writer.ok();
}

bool ReadChartElement(XmlScanner& scanner, ChartRecord& chart) {
  // Read into a fresh record, so that a failed load leaves the caller's untouched and the fields
  // a document leaves out stay zero.
  ChartRecord fresh;
  if (!ChartReader(scanner, fresh).Read()) return false;
  chart = std::move(fresh);
  return true;
}

}  // namespace kelpdex
