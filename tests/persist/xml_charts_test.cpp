#include "persist/xml_charts.h"

#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <cstring>
#include <string>

#include "persist/chart_layout.h"
#include "store/bytes.h"
#include "support/file_bytes.h"
#include "support/temp_dir.h"

namespace kelpdex {
namespace {

void PutText(uint8_t* field, const char* text) {
  std::memcpy(field, text, std::strlen(text));
}

void PutFont(uint8_t* f, const char* name, uint8_t size) {
  PutText(f + font::kNameAt, name);
  f[font::kFamilyAt] = 2;
  f[font::kSizeAt] = size;
  f[font::kWeightAt] = 2;
  f[font::kItalicAt] = 1;
  f[font::kUnderlineAt] = 1;
  f[font::kStrikeoutAt] = 1;
  f[font::kCharSetAt] = 4;
}

void PutLine(uint8_t* line, uint8_t style, uint32_t colour, uint8_t width) {
  line[chart_line::kStyleAt] = style;
  StoreU32(line + chart_line::kColourAt, colour);
  line[chart_line::kWidthAt] = width;
}

void PutPlane(uint8_t* plane, uint8_t pattern, uint32_t seed) {
  plane[chart::kPlaneFillAt + chart_fill::kPatternAt] = pattern;
  StoreU32(plane + chart::kPlaneFillAt + chart_fill::kColourAt, 0x00ABCDEF ^ seed);
  StoreU32(plane + chart::kPlaneFillAt + chart_fill::kBackgroundAt, 0x00102030 + seed);
  PutLine(plane + chart::kPlaneBorderAt, 3, 0x00FF8000 | seed, 2);
}

float MatrixAt(const ChartRecord& c, int k) {
  uint32_t bits = LoadU32(c.matrix.data() + 4 * k);
  float v;
  std::memcpy(&v, &bits, 4);
  return v;
}

void SetMatrix(ChartRecord& c, const float (&values)[16]) {
  for (int k = 0; k < 16; ++k) {
    uint32_t bits;
    std::memcpy(&bits, &values[k], 4);
    StoreU32(c.matrix.data() + 4 * k, bits);
  }
}

// A chart with every group of the record and of its series set to something other than zero.
ChartRecord FullChart(uint8_t type) {
  ChartRecord c;
  uint8_t* b = c.bytes.data();
  b[chart::kTypeAt] = type;
  StoreU16(b + chart::kViewWidthAt, 640);
  StoreU16(b + chart::kViewHeightAt, 480);
  StoreU16(b + chart::kBarSizeAt, 70);
  StoreU16(b + chart::kStackBarSizeAt, 55);
  StoreU16(b + chart::kLineWidth3DAt, 3);
  StoreU16(b + chart::kPieThickness3DAt, 12);
  StoreU16(b + chart::kPieSplitAt, 65535);
  PutFont(b + chart::kTitleFontAt, "Title Face", 14);
  PutText(b + chart::kTitleTextAt, "Sales <2024> & \"more\"");
  b[chart::kLegendPositionAt] = 3;
  b[chart::kLegendLayoutAt] = 1;
  PutFont(b + chart::kLegendFontAt, "Legend Face", 9);
  b[chart::kLightDirectionXAt] = 180;
  b[chart::kLightDirectionYAt] = 45;
  b[chart::kPerspectiveAt] = 100;
  // Values six digits would round, beside ones any form keeps.
  SetMatrix(
      c, {0.5f, -0.25f, 0, 0, 1.5f, 2, 0.1f, 0, -3, 0, 1, 0, 123456.789f, -0.0625f, 1.0f / 3, 1});
  PutPlane(b + chart::kPlaneXYAt, 4, 1);
  PutPlane(b + chart::kPlaneXZAt, 22, 2);
  PutPlane(b + chart::kPlaneYZAt, 1, 3);

  const uint8_t scales[3] = {0, 1, 3};  // the natural log does not load back
  for (uint8_t i = 0; i < 3; ++i) {
    std::array<uint8_t, kSeriesSize> s{};
    uint8_t* p = s.data();
    p[series::kScaleAt] = scales[i];
    p[series::kRelatedKindAt] = i == 0 ? series::kRelatedSigma : series::kRelatedX;
    p[series::kRelatedAt] = static_cast<uint8_t>(16 - i);
    PutText(p + series::kNameAt, i == 1 ? "Costs" : "Revenue");
    StoreF64(p + series::kFromValueAt, -1.5 * (i + 1));
    StoreF64(p + series::kToValueAt, 1e20);
    StoreU16(p + series::kPeriodsAt, 12);
    StoreU16(p + series::kSubperiodsAt, static_cast<uint16_t>(4 + i));
    StoreF64(p + series::kDivisorAt, 0.001);
    const uint32_t views[4] = {series::kColumnViewAt, series::kLineViewAt, series::kAreaViewAt,
                               series::kScatterViewAt};
    for (uint8_t v = 0; v < 4; ++v) {
      p[views[v] + series::kViewStackedAt] = static_cast<uint8_t>((v + i) % 3);
      p[views[v] + series::kViewLabelsAt] = v % 2;
      p[views[v] + series::kViewVisibleAt] = 1;
    }
    p[series::kScatterViewAt + series::kViewSymbolAt] = static_cast<uint8_t>(14 - i);
    p[series::kAxisTypeAt] = 3;
    p[series::kAxisLabelsAt] = 1;
    p[series::kAxisTitleAt] = 1;
    StoreU16(p + series::kAxisTicksAt, 10);
    StoreU16(p + series::kAxisSubticksAt, 65535);
    PutText(p + series::kAxisTitleTextAt, "Euro 'k'");
    PutLine(p + series::kAxisLineAt, 1, 0x000000FF, 1);
    PutLine(p + series::kMajorGridAt, 6, 0x0000FF00, 0);
    PutLine(p + series::kMinorGridAt, 9, 0x00FF0000, 255);
    p[series::kUserGridCountAt] = 8;
    for (uint32_t u = 0; u < 8; ++u) {
      uint8_t* line = p + series::kUserGridAt + u * series::kUserGridSize;
      PutLine(line, static_cast<uint8_t>(u + 1), 0x00123456 + u, static_cast<uint8_t>(u));
      StoreF64(line + series::kUserGridValueAt, 0.25 * u - 0.5);
    }
    c.series.push_back(s);
  }
  b[chart::kSeriesCountAt] = 3;
  return c;
}

class XmlChartsTest : public ::testing::Test {
 protected:
  // The chart's element inside a root element, as the document writer would place it.
  std::string Save(const ChartRecord& chart) {
    std::string path = dir.Path("chart.xml");
    FileStream out;
    EXPECT_TRUE(out.Open(path, StreamMode::kWrite, false));
    XmlWriter w(out);
    w.Prolog();
    w.Tag("Root", TagMode::kOpen, 0, 1);
    EXPECT_TRUE(WriteChartElement(w, chart, 1));
    w.Tag("Root", TagMode::kClose, 0, 1);
    EXPECT_TRUE(out.Close());
    return testing::ReadFileBytes(path);
  }

  // Reads the one chart element inside the root of `document`; the error code, 0 on success.
  ErrorCode Load(const std::string& document, ChartRecord& chart) {
    std::string path = dir.Write("in.xml", document);
    FileStream in;
    EXPECT_TRUE(in.Open(path, StreamMode::kRead, false));
    XmlScanner x(in);
    if (x.Prolog() && x.Tag("Root", scan::kOpen) && x.Tag("", scan::kOpen | scan::kAttributes) &&
        ReadChartElement(x, chart)) {
      x.Tag("Root", scan::kClose);
    }
    return x.error();
  }

  // A document around one chart element written by hand.
  static std::string Doc(const std::string& chart) {
    return "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\r\n<Root>" + chart + "</Root>\r\n";
  }
  static std::string InSigma(const std::string& sigma) {
    return Doc("<ChartXY><DataSeries>" + sigma + "</DataSeries></ChartXY>");
  }

  // Compared byte by byte so that a failure names the first field that did not come back.
  template <size_t N>
  static void ExpectSameBytes(const std::array<uint8_t, N>& a, const std::array<uint8_t, N>& b,
                              const char* what) {
    for (size_t i = 0; i < N; ++i) {
      if (a[i] != b[i]) {
        ADD_FAILURE() << what << " differs first at offset " << i << ": " << int(a[i]) << " vs "
                      << int(b[i]);
        return;
      }
    }
  }
  static void ExpectSame(const ChartRecord& a, const ChartRecord& b) {
    ExpectSameBytes(a.bytes, b.bytes, "chart record");
    ExpectSameBytes(a.matrix, b.matrix, "matrix");
    ASSERT_EQ(a.series.size(), b.series.size());
    for (size_t i = 0; i < a.series.size(); ++i)
      ExpectSameBytes(a.series[i], b.series[i], "series");
  }

  testing::TempDir dir;
};

TEST_F(XmlChartsTest, EveryGroupRoundTripsToTheSameRecords) {
  for (uint8_t type : {chart::kChart2D, chart::kChartXY, chart::kChart3D}) {
    ChartRecord chart = FullChart(type);
    if (type != chart::kChart3D) {
      // Only a 3D chart carries the other two planes.
      std::memset(chart.bytes.data() + chart::kPlaneXZAt, 0, 2 * chart::kPlaneSize);
    }
    std::string text = Save(chart);
    ChartRecord back;
    ASSERT_EQ(Load(text, back), err::kNone) << text;
    ExpectSame(chart, back);
    EXPECT_EQ(text.find("PlaneXZ") != std::string::npos, type == chart::kChart3D);
  }
}

TEST_F(XmlChartsTest, PlanesOutsideTheXYPlaneBelongToThreeDimensionalChartsOnly) {
  ChartRecord chart = FullChart(chart::kChart2D);
  std::string text = Save(chart);
  EXPECT_EQ(text.find("PlaneYZ"), std::string::npos);
  ChartRecord back;
  ASSERT_EQ(Load(text, back), err::kNone);
  EXPECT_EQ(back.bytes[chart::kPlaneXZAt], 0);
  EXPECT_EQ(back.bytes[chart::kPlaneXYAt], 4);

  const std::string plane = "<ChartPlane><PlaneXY/><PlaneXZ><Border Style=\"Dot\"/></PlaneXZ>";
  ASSERT_EQ(Load(Doc("<Chart3D>" + plane + "</ChartPlane></Chart3D>"), back), err::kNone);
  EXPECT_EQ(back.bytes[chart::kPlaneXZAt + chart::kPlaneBorderAt], 2);
  EXPECT_EQ(Load(Doc("<Chart2D>" + plane + "</ChartPlane></Chart2D>"), back),
            err::kXmlUnexpectedElement);
}

TEST_F(XmlChartsTest, AnEmptyRecordWritesOnlyTheFixedPartsAndAbsentPartsReadAsDefaults) {
  ChartRecord chart;
  chart.bytes[chart::kTypeAt] = chart::kChart2D;
  std::string text = Save(chart);
  EXPECT_NE(text.find("<DataSeries/>"), std::string::npos);
  for (const char* absent : {"<Title", "<Legend", "<Perspective", "<FillPattern"}) {
    EXPECT_EQ(text.find(absent), std::string::npos) << absent;
  }
  ChartRecord back = FullChart(chart::kChart3D);
  ASSERT_EQ(Load(text, back), err::kNone);
  ExpectSame(chart, back);

  // A bare element: the type from its name, an identity matrix, nothing else.
  ASSERT_EQ(Load(Doc("<Chart3D/>"), back), err::kNone);
  EXPECT_EQ(back.bytes[chart::kTypeAt], chart::kChart3D);
  EXPECT_TRUE(back.series.empty());
  for (int k = 0; k < 16; ++k) EXPECT_EQ(MatrixAt(back, k), k % 5 == 0 ? 1.0f : 0.0f) << k;
  EXPECT_EQ(Load(Doc("<Chart4D/>"), back), err::kXmlUnexpectedElement);
}

TEST_F(XmlChartsTest, ANaturalLogScaleIsWrittenAsLogEAndRefusedOnReading) {
  ChartRecord chart = FullChart(chart::kChartXY);
  chart.series[1][series::kScaleAt] = 2;
  std::string text = Save(chart);
  EXPECT_NE(text.find("Scale=\"LogE\""), std::string::npos);
  ChartRecord back;
  EXPECT_EQ(Load(text, back), err::kXmlInvalidAttribute);
  EXPECT_TRUE(back.series.empty());  // a failed read leaves the caller's record alone

  ASSERT_EQ(Load(InSigma("<Sigma Scale=\"Log\"/><Sigma Scale=\"Log10\"/>"), back), err::kNone);
  ASSERT_EQ(back.series.size(), 2u);
  EXPECT_EQ(back.series[0][series::kScaleAt], 2);
  EXPECT_EQ(back.series[1][series::kScaleAt], 3);
  EXPECT_EQ(back.bytes[chart::kSeriesCountAt], 2);
}

TEST_F(XmlChartsTest, RotationAnglesBecomeTheMatrixOfOlderFiles) {
  ChartRecord back;
  // X then Z by a quarter turn; a Matrix before them is replaced.
  ASSERT_EQ(Load(Doc("<Chart3D><Transformation><Matrix m11=\"5\" m44=\"9\"/>"
                     "<RotationX>90</RotationX><RotationZ>90</RotationZ>"
                     "<Perspective>30</Perspective></Transformation></Chart3D>"),
                 back),
            err::kNone);
  const float quarter[16] = {0, -1, 0, 0, 0, 0, -1, 0, 1, 0, 0, 0, 0, 0, 0, 1};
  for (int k = 0; k < 16; ++k) EXPECT_NEAR(MatrixAt(back, k), quarter[k], 1e-6) << k;
  EXPECT_EQ(back.bytes[chart::kPerspectiveAt], 30);

  ASSERT_EQ(Load(Doc("<Chart3D><Transformation><RotationY>30</RotationY>"
                     "</Transformation></Chart3D>"),
                 back),
            err::kNone);
  EXPECT_NEAR(MatrixAt(back, 0), std::sqrt(3.0) / 2, 1e-6);
  EXPECT_NEAR(MatrixAt(back, 2), 0.5, 1e-6);
  EXPECT_NEAR(MatrixAt(back, 8), -0.5, 1e-6);
  EXPECT_NEAR(MatrixAt(back, 5), 1, 1e-6);
  // The rotation angles' old place in the record stays untouched.
  for (uint32_t i = 0; i < 12; ++i) EXPECT_EQ(back.bytes[chart::kRotationAt + i], 0);
}

TEST_F(XmlChartsTest, SixteenSeriesAreTheMost) {
  std::string sixteen;
  for (int i = 1; i <= 16; ++i) sixteen += "<Sigma RelatedSigma=\"" + std::to_string(i) + "\"/>";
  ChartRecord back;
  ASSERT_EQ(Load(InSigma(sixteen), back), err::kNone);
  ASSERT_EQ(back.series.size(), 16u);
  EXPECT_EQ(back.series[15][series::kRelatedAt], 16);
  EXPECT_EQ(back.bytes[chart::kSeriesCountAt], 16);
  EXPECT_EQ(Load(InSigma(sixteen + "<Sigma/>"), back), err::kXmlUnexpectedElement);
}

TEST_F(XmlChartsTest, MalformedValuesAreRefusedWithTheirCodes) {
  const std::string longName(128, 'n');
  const std::string nineUserLines = [] {
    std::string s;
    for (int i = 0; i < 9; ++i) s += "<UserGridLine Value=\"1\"/>";
    return s;
  }();
  const struct {
    std::string document;
    ErrorCode code;
  } cases[] = {
      {Doc("<Chart2D><Options><ViewWidth>12px</ViewWidth></Options></Chart2D>"),
       err::kXmlInvalidData},
      {Doc("<Chart2D><Options><PieSplit>65536</PieSplit></Options></Chart2D>"),
       err::kXmlInvalidData},
      {Doc("<Chart2D><Transformation><LightDirectionY>181</LightDirectionY>"
           "</Transformation></Chart2D>"),
       err::kXmlInvalidData},
      {Doc("<Chart2D><Transformation><Perspective>0</Perspective></Transformation></Chart2D>"),
       err::kXmlInvalidData},
      {Doc("<Chart2D><Transformation><Matrix m23=\"x\"/></Transformation></Chart2D>"),
       err::kXmlInvalidData},
      {Doc("<Chart2D><Transformation><RotationZ>1e999</RotationZ></Transformation></Chart2D>"),
       err::kXmlInvalidData},
      {Doc("<Chart2D><Legend Position=\"Top\"/></Chart2D>"), err::kXmlInvalidAttribute},
      {Doc("<Chart2D><Title><Font Weight=\"Light\"/></Title></Chart2D>"),
       err::kXmlInvalidAttribute},
      {Doc("<Chart2D><Title><Text>" + longName + "</Text></Title></Chart2D>"),
       err::kXmlInvalidData},
      {Doc("<Chart2D><ChartPlane><PlaneXY><FillPattern PatternColor=\"#12345\"/>"
           "</PlaneXY></ChartPlane></Chart2D>"),
       err::kXmlInvalidAttribute},
      {InSigma("<Sigma Name=\"" + longName + "\"/>"), err::kXmlInvalidAttribute},
      {InSigma("<Sigma RelatedSigma=\"17\"/>"), err::kXmlInvalidAttribute},
      {InSigma("<Sigma RelatedSigma=\"1\" RelatedX=\"2\"/>"), err::kXmlInvalidAttribute},
      {InSigma("<Sigma><DataArray FromValue=\"1e999\"/></Sigma>"), err::kXmlInvalidData},
      {InSigma("<Sigma><Column Stacked=\"Yes\"/></Sigma>"), err::kXmlInvalidAttribute},
      {InSigma("<Sigma><Scatter Symbol=\"Circle6\"/></Sigma>"), err::kXmlInvalidAttribute},
      {InSigma("<Sigma><Axis Ticks=\"-1\"/></Sigma>"), err::kXmlInvalidAttribute},
      {InSigma("<Sigma><Axis><Line Width=\"256\"/></Axis></Sigma>"), err::kXmlInvalidAttribute},
      {InSigma("<Sigma><Axis><GridLines>" + nineUserLines + "</GridLines></Axis></Sigma>"),
       err::kXmlUnexpectedElement},
      {InSigma("<Sigma><Axis/><Column/></Sigma>"), err::kXmlUnexpectedElement},
  };
  for (const auto& c : cases) {
    ChartRecord back;
    EXPECT_EQ(Load(c.document, back), c.code) << c.document;
  }
}

}  // namespace
}  // namespace kelpdex
