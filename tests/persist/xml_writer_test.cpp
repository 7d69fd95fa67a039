#include "persist/xml_writer.h"

#include <gtest/gtest.h>

#include <fstream>
#include <sstream>
#include <string>
#include <utility>

#include "persist/xml_scanner.h"
#include "support/temp_dir.h"

namespace kelpdex {
namespace {

using namespace scan;

std::string ReadAll(const std::string& path) {
  std::ifstream in(path, std::ios::binary);
  std::ostringstream s;
  s << in.rdbuf();
  return s.str();
}

class XmlWriterTest : public ::testing::Test {
 protected:
  void SetUp() override { ASSERT_TRUE(out.Open(path, StreamMode::kWrite, false)); }
  // Closes the written file and returns its bytes.
  std::string Written() {
    EXPECT_TRUE(out.Close());
    return ReadAll(path);
  }

  testing::TempDir dir;
  std::string path = dir.Path("out.xml");
  FileStream out;
  XmlWriter writer{out};
};

TEST(XmlEscape, MarkupControlBytesAndUnsafeBlanksBecomeReferences) {
  std::string out = "[";
  EXPECT_TRUE(EscapeXml("a\"b&c'd<e>f \t\r\n\x01\x1F\x7F\x80\xE9\xFF", out));
  EXPECT_EQ(out, "[a&quot;b&amp;c&apos;d&lt;e&gt;f &#09;&#13;&#10;&#01;&#31;\x7F\x80\xE9\xFF");
  // A blank the reader would drop (leading, trailing) or merge (after whitespace) is a reference;
  // a single blank between words stays readable.
  const std::pair<const char*, const char*> blanks[] = {
      {"a b c", "a b c"},
      {" a", "&#32;a"},
      {"a ", "a&#32;"},
      {" ", "&#32;"},
      {"   ", "&#32;&#32;&#32;"},
      {"a  b", "a &#32;b"},
      {"a   b", "a &#32;&#32;b"},
      {"a\t b", "a&#09;&#32;b"},
      {"a \tb", "a &#09;b"},
      {"a\r\n b", "a&#13;&#10;&#32;b"},
      {"", ""},
  };
  for (const auto& [text, escaped] : blanks) {
    out.clear();
    EXPECT_TRUE(EscapeXml(text, out));
    EXPECT_EQ(out, escaped) << '"' << text << '"';
  }
}

TEST(XmlEscape, TheLimitCountsTheFilesUtf8BytesAndHoldsAnyCellAtItsLongestEscape) {
  std::string out;
  EXPECT_EQ(kXmlEscapeLimit, 6 * 1024u);
  EXPECT_TRUE(EscapeXml(std::string(1024, '"'), out));
  EXPECT_EQ(out.size(), kXmlEscapeLimit);
  EXPECT_TRUE(EscapeXml(std::string(6144, 'x'), out));
  EXPECT_FALSE(EscapeXml(std::string(6145, 'x'), out));
  EXPECT_TRUE(EscapeXml(std::string(1228, '\t'), out));  // five bytes each
  EXPECT_FALSE(EscapeXml(std::string(1229, '\t'), out));
  // A byte above 0x7F takes two or three bytes in the file.
  EXPECT_TRUE(EscapeXml(std::string(3072, '\xE9'), out));
  EXPECT_FALSE(EscapeXml(std::string(3073, '\xE9'), out));
  EXPECT_TRUE(EscapeXml(std::string(2048, '\x80'), out));
  EXPECT_FALSE(EscapeXml(std::string(2049, '\x80'), out));
}

TEST(XmlNumber, ShortestTextThatReadsBackToTheSameDouble) {
  const std::pair<double, const char*> cases[] = {
      {0, "0"},
      {-0.0, "-0"},
      {0.1 + 0.2, "0.30000000000000004"},
      {1.5, "1.5"},
      {-2.5, "-2.5"},
      {123456789012345.0, "123456789012345"},
      {1e15, "1e+15"},
      {123456789012345678.0, "1.2345678901234568e+17"},
      {9007199254740992.0, "9.007199254740992e+15"},
      {1e-14, "0.00000000000001"},
      {1e-15, "1e-15"},
      {1e-320, "1e-320"},
      {1.7976931348623157e308, "1.7976931348623157e+308"},
      {-1.7976931348623157e308, "-1.7976931348623157e+308"},
  };
  for (const auto& [value, text] : cases) {
    char buffer[kXmlNumberMax];
    EXPECT_EQ(std::string(buffer, XmlNumberText(value, buffer)), text) << text;
  }
}

TEST_F(XmlWriterTest, TagsIndentWithTabsAndEndLinesWithCrLf) {
  XmlAttributes a;
  a.Text("Name", "Caf\xE9 \x80").Int("Level", -3).Bool("On", true).Bool("Off", false);
  XmlAttributes n;
  n.Real("R", 0.1).Real("Big", 1e20).Real("Neg", -2.5).Real("Third", 1.0 / 3);
  XmlAttributes c;
  c.Colour("Color", 0x336699, HexCase::kUpper).Colour("Font", 0x0A0BFC, HexCase::kLower);
  EXPECT_TRUE(writer.Prolog());
  EXPECT_TRUE(writer.Tag("Workbook", a, TagMode::kOpen, 0, 1));
  EXPECT_TRUE(writer.Tag("N", n, TagMode::kEmpty, 1, 1));
  EXPECT_TRUE(writer.Tag("C", c, TagMode::kEmpty, 2, 0));
  EXPECT_TRUE(writer.TextElement("User", "a<b", 1, 2));
  EXPECT_TRUE(writer.TextElement("Item", XmlAttributes().Int("ID", 5), "", 0, 1));
  EXPECT_TRUE(writer.Tag("Workbook", TagMode::kClose, 0, 1));
  EXPECT_EQ(Written(),
            "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\r\n\r\n"
            "<Workbook Name=\"Caf\xC3\xA9 \xE2\x82\xAC\" Level=\"-3\" On=\"1\" Off=\"0\">\r\n"
            "\t<N R=\"0.1\" Big=\"1e+20\" Neg=\"-2.5\" Third=\"0.3333333333333333\"/>\r\n"
            "\t\t<C Color=\"#996633\" Font=\"#fc0b0a\"/>"
            "\t<User>a&lt;b</User>\r\n\r\n"
            "<Item ID=\"5\"></Item>\r\n"
            "</Workbook>\r\n");
}

TEST_F(XmlWriterTest, AnOverlongValueFailsTheSaveWith94) {
  EXPECT_TRUE(writer.TextElement("T", std::string(kXmlEscapeLimit, 'x'), 0, 1));
  EXPECT_FALSE(writer.Tag("A", XmlAttributes().Text("V", std::string(kXmlEscapeLimit + 1, 'x')),
                          TagMode::kEmpty, 0, 1));
  EXPECT_EQ(writer.error(), err::kXmlInvalidData);
  EXPECT_FALSE(writer.Tag("B", TagMode::kEmpty, 0, 1));  // the error stays
}

TEST_F(XmlWriterTest, EveryByteTheRulesAllowComesBackThroughTheScanner) {
  std::string all;
  for (int c = 1; c < 256; ++c) all.push_back(static_cast<char>(c));
  const std::string name = "Name_09_azAZ";
  const double reals[] = {0.1, -2.5e-7, 1e300, 123456.789, 4.9406564584124654e-324};
  XmlAttributes a;
  a.Text("All", all).Text("Spaces", "  two  ").Colour("C", 0xABCDEF, HexCase::kLower);
  for (size_t i = 0; i < std::size(reals); ++i) a.Real("R" + std::to_string(i), reals[i]);
  EXPECT_TRUE(writer.Prolog());
  EXPECT_TRUE(writer.TextElement(name, a, all, 1, 1));
  EXPECT_TRUE(writer.TextElement("Blanks", " a  b ", 1, 1));
  ASSERT_TRUE(out.Close());

  FileStream in;
  ASSERT_TRUE(in.Open(path, StreamMode::kRead, true));
  XmlScanner x(in);
  ASSERT_TRUE(x.Prolog());
  ASSERT_TRUE(x.Text(name, 1024, kAttributes)) << x.ErrorMessage();
  EXPECT_EQ(x.text(), all);
  EXPECT_EQ(std::string(x.Attr("All")), all);
  EXPECT_STREQ(x.Attr("Spaces"), "  two  ");  // attribute values are not collapsed
  uint32_t colour = 0;
  EXPECT_TRUE(x.ColourAttr("C", colour));
  EXPECT_EQ(colour, 0xABCDEFu);
  for (size_t i = 0; i < std::size(reals); ++i) {
    double r = 1;
    EXPECT_TRUE(x.RealAttr("R" + std::to_string(i), r));
    EXPECT_EQ(r, reals[i]) << i;
  }
  ASSERT_TRUE(x.Text("Blanks", 10));
  EXPECT_EQ(x.text(), " a  b ");
}

}  // namespace
}  // namespace kelpdex
