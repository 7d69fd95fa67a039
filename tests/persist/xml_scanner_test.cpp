#include "persist/xml_scanner.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>

#include "support/temp_dir.h"

namespace kelpdex {
namespace {

using namespace scan;

std::string Doc(std::string_view body, std::string_view encoding = "UTF-8") {
  return "<?xml version=\"1.0\" encoding=\"" + std::string(encoding) + "\"?>\r\n" +
         std::string(body);
}

class XmlScannerTest : public ::testing::Test {
 protected:
  // A scanner over `xml`, its prolog already read when `prolog` is set.
  XmlScanner& Open(std::string_view xml, bool prolog = true) {
    scanner_.reset();
    stream_ = std::make_unique<FileStream>();
    const std::string path = dir_.Write("f" + std::to_string(++files_) + ".xml", xml);
    EXPECT_TRUE(stream_->Open(path, StreamMode::kRead, true));
    scanner_ = std::make_unique<XmlScanner>(*stream_);
    if (prolog) {
      EXPECT_TRUE(scanner_->Prolog()) << scanner_->ErrorMessage();
    }
    return *scanner_;
  }
  // The text of the element `<T>` in a document of `encoding`, or the error code as text.
  std::string TextOf(std::string_view content, std::string_view encoding = "UTF-8",
                     size_t maxLength = 4096) {
    XmlScanner& x = Open(Doc("<T>" + std::string(content) + "</T>", encoding));
    if (!x.Text("T", maxLength)) return "error " + std::to_string(x.error());
    return std::string(x.text());
  }

 private:
  testing::TempDir dir_;
  std::unique_ptr<FileStream> stream_;
  std::unique_ptr<XmlScanner> scanner_;
  int files_ = 0;
};

TEST_F(XmlScannerTest, TheDeclaredEncodingDecidesWhetherTextIsDecoded) {
  for (const auto& [encoding, mode] :
       {std::pair{"utf-8", 1}, {"Utf-8", 2}, {"iso-8859-1", 3}, {"Iso-8859-1", 2}}) {
    EXPECT_EQ(Open(Doc("", encoding)).transcodeMode(), mode) << encoding;
  }
  EXPECT_EQ(TextOf("caf\xC3\xA9 \xE2\x82\xAC"), "caf\xE9 \x80");
  EXPECT_EQ(TextOf("caf\xC3\xA9", "Windows-1252"), "caf\xC3\xA9");
  EXPECT_EQ(TextOf("caf\xC3\xA9", "ISO-8859-2"), "caf\xC3\xA9");
  // Strict decoding ends the value at a byte it does not take; references still decode.
  EXPECT_EQ(TextOf("&#233;t\xE9 d'\xC3\xA9t\xC3\xA9"), "\xE9t");
  EXPECT_EQ(TextOf("\xF0\x9F\x98\x80"), "");

  XmlScanner& bom = Open("\xEF\xBB\xBF<?xml version='1.0'?><?mso-application x?>\r\n<A/>");
  EXPECT_EQ(bom.transcodeMode(), 1);
  EXPECT_TRUE(bom.Tag("A", kOpen));
  XmlScanner& none = Open("<A/>", false);
  EXPECT_FALSE(none.Prolog());
  EXPECT_EQ(none.error(), err::kXmlUnexpectedElement);
}

TEST_F(XmlScannerTest, AttributesInEitherQuoteWithPrefixesKeptApart) {
  XmlScanner& x =
      Open(Doc("<ss:Workbook xmlns:ss = 'urn:s' Name=\"a 'q'\" Alt='say \"hi\"' ss:Name='P'\r\n"
               " Amp='&lt;&amp;&gt;&quot;&apos;'>"));
  ASSERT_TRUE(x.Tag("Workbook", kOpen | kAttributes));
  EXPECT_EQ(x.prefix(), "ss");
  EXPECT_STREQ(x.Attr("ss", "xmlns"), "urn:s");
  EXPECT_STREQ(x.Attr("Name"), "a 'q'");
  EXPECT_STREQ(x.Attr("Name", "ss"), "P");
  EXPECT_STREQ(x.Attr("Alt"), "say \"hi\"");
  EXPECT_STREQ(x.Attr("Amp"), "<&>\"'");
  EXPECT_EQ(x.Attr("ss"), nullptr);
  EXPECT_EQ(x.line(), 3);
}

TEST_F(XmlScannerTest, MalformedTagsAndOverlongNamesFail) {
  std::string many;
  for (int i = 0; i < 255; ++i) many += " a" + std::to_string(i) + "='x'";
  const std::string longName(1024, 'n');
  const std::string longValue(1022, 'v');
  EXPECT_TRUE(Open(Doc("<" + longName + many + "/>")).Tag(longName, kOpen | kAttributes));
  EXPECT_TRUE(Open(Doc("<A v='&amp;" + longValue + "&#65;'/>")).Tag("A", kOpen | kAttributes));
  const std::pair<std::string, ErrorCode> cases[] = {
      {"<" + longName + "n/>", err::kXmlUnexpectedElement},
      {"<A" + many + " b='x'/>", err::kXmlUnexpectedElement},
      {"<A v='" + longValue + "abc'/>", err::kXmlInvalidAttribute},
      {"<A v '1'/>", err::kXmlUnexpectedElement},
      {"<A v=1/>", err::kXmlInvalidAttribute},
      {"<A v='1/>", err::kXmlInvalidAttribute},
      {"<A v='1'>", err::kNone},
      {"<A v='1' / >", err::kXmlUnexpectedElement},
      {"<A-B/>", err::kXmlUnexpectedElement},
      {"< A/>", err::kXmlUnexpectedElement},
      {"</A x='1'>", err::kXmlUnexpectedElement},
  };
  for (const auto& [body, code] : cases) {
    XmlScanner& x = Open(Doc(body));
    EXPECT_EQ(x.Tag("", kAttributes | kOptional), code == err::kNone) << body;
    EXPECT_EQ(x.error(), code) << body;
  }
  XmlScanner& comment = Open(Doc("<!-- never ends <A/>"), false);
  EXPECT_FALSE(comment.Prolog());
  EXPECT_EQ(comment.error(), err::kXmlUnexpectedElement);
}

TEST_F(XmlScannerTest, FlagCombinationsMatchRewindAndFail) {
  const std::string body = "<A\r\n k='1'>\r\n\t<B j='2'/>\r\n</A>";
  XmlScanner& x = Open(Doc(body));
  EXPECT_FALSE(x.Tag("B", kOpen | kOptional));                      // 10: another name
  EXPECT_FALSE(x.Tag("A", kClose | kOptional));                     // 12: an opening tag
  EXPECT_TRUE(x.Tag("", kOpen | kAttributes | kOptional | kPeek));  // 27
  EXPECT_STREQ(x.Attr("k"), "1");
  EXPECT_EQ(x.line(), 2);  // rewound, so the CR inside the tag is not counted twice
  EXPECT_TRUE(x.Tag("A", kOpen | kAttributes));  // 3
  EXPECT_EQ(x.line(), 3);
  EXPECT_FALSE(x.Tag("C", kOpen | kAttributes | kOptional));  // 11
  EXPECT_TRUE(x.Tag("B", kClose | kOptional));  // 12: an empty element is also a closing tag
  EXPECT_TRUE(x.isOpen() && x.isClose());
  EXPECT_EQ(x.attributeCount(), 0u);  // an opening tag read without kAttributes leaves none
  EXPECT_FALSE(x.Tag("A", kOpen | kOptional));
  EXPECT_TRUE(x.Tag("A", kOpen | kClose | kOptional));  // 14
  EXPECT_TRUE(x.isClose() && !x.isOpen());

  XmlScanner& y = Open(Doc(body));
  EXPECT_TRUE(y.Tag("A", kOpen | kClose | kAttributes | kOptional));  // 15
  EXPECT_TRUE(y.Tag("B", kOpen | kClose | kAttributes));              // 7
  EXPECT_TRUE(y.Tag("A", kClose));  // 4, and a closing tag leaves the table alone
  EXPECT_STREQ(y.Attr("j"), "2");
  EXPECT_FALSE(y.Tag("A", kOpen));  // a required miss fails
  EXPECT_EQ(y.error(), err::kXmlUnexpectedElement);
  EXPECT_EQ(y.ErrorMessage(), "An unexpected xml element\nLine: 5");
  EXPECT_FALSE(y.Tag("A", kClose));  // the error stays
}

TEST_F(XmlScannerTest, CommentsEndDifferentlyBetweenTagsAndInsideText) {
  XmlScanner& x =
      Open(Doc("<!-- a -- b --->\r\n<A><!--\r\n-->\n<B>one <!-- x --> --!> two</B></A>"));
  ASSERT_TRUE(x.Tag("A", kOpen));
  ASSERT_TRUE(x.Text("B", 100));
  EXPECT_EQ(x.text(), "one two");
  EXPECT_TRUE(x.Tag("A", kClose));
  EXPECT_EQ(x.line(), 5);  // a lone LF ends a line as CR LF does

  EXPECT_EQ(TextOf("one <!-- x --> two"), "error 91");
  EXPECT_EQ(TextOf("<!-- x --!>one"), "one");
}

TEST_F(XmlScannerTest, WhitespaceCollapsesBeforeReferencesAreDecoded) {
  EXPECT_EQ(TextOf(" \r\n\t a \r\n\t b  "), "a b ");
  EXPECT_EQ(TextOf("a&#13;&#10;b&#x9;&#32;&#32;c"), "a\r\nb\t  c");
  EXPECT_EQ(TextOf("&#255;&#xff;&#xFF;&#065;"),
            "\xFF\xFF\xFF"
            "A");
  for (const char* bad :
       {"&#256;", "&#x100;", "&#0;", "&#;", "&#x;", "&#12a;", "&nbsp;", "a & b", "&amp"}) {
    EXPECT_EQ(TextOf(bad), "error 94") << bad;
  }
  // The buffer holds the raw text, the limit applies to the decoded one.
  const size_t full = XmlScanner::kTextBufferSize;
  EXPECT_EQ(TextOf(std::string(full, 'x'), "UTF-8", full).size(), full);
  EXPECT_EQ(TextOf(std::string(full, 'x') + " ", "UTF-8", full + 1), "error 94");
  EXPECT_EQ(TextOf("&lt;&lt;&lt;", "UTF-8", 3), "<<<");
  EXPECT_EQ(TextOf("&lt;&lt;&lt;&lt;", "UTF-8", 3), "error 94");
  EXPECT_EQ(TextOf("\xC3\xA9\xC3\xA9\xC3\xA9", "UTF-8", 3), "\xE9\xE9\xE9");
}

TEST_F(XmlScannerTest, TextElementsOptionalEmptyAndWithAttributes) {
  XmlScanner& x = Open(Doc("<L><Item n='1'> x </Item><Item/><Name>a</Other></L>"));
  ASSERT_TRUE(x.Tag("L", kOpen));
  EXPECT_FALSE(x.Text("Name", 10, kOptional));
  ASSERT_TRUE(x.Text("Item", 10, kOptional | kAttributes));
  EXPECT_EQ(x.text(), "x ");
  EXPECT_STREQ(x.Attr("n"), "1");
  ASSERT_TRUE(x.Text("Item", 10, kOptional));
  EXPECT_EQ(x.text(), "");
  EXPECT_FALSE(x.Text("Name", 10, kOptional));
  EXPECT_EQ(x.error(), err::kXmlUnexpectedElement);
}

TEST_F(XmlScannerTest, TypedAttributesKeepDefaultsAndRefuseBadValues) {
  XmlScanner& x = Open(Doc("<A/>"));
  ASSERT_TRUE(x.Tag("A", kOpen | kAttributes));
  int missing = 7;
  EXPECT_TRUE(x.IntAttr("v", missing, 0, 1));
  EXPECT_EQ(missing, 7);
  EXPECT_EQ(x.RequiredAttr("v"), nullptr);
  EXPECT_EQ(x.error(), err::kXmlMissingAttribute);

  struct Case {
    char kind;  // i: int in -5..5, l: tree level, b: boolean, r: real, c: colour
    const char* text;
    ErrorCode code;
    double value;
  };
  // clang-format off
  const Case cases[] = {
      {'i', "-5", 0, -5}, {'i', "6", 92, 0}, {'i', "1x", 92, 0}, {'i', " 1", 92, 0},
      {'i', "", 92, 0}, {'l', "0", 94, 0}, {'l', "65534", 0, 65534},
      {'l', "99999999999999999999", 94, 0}, {'b', "Yes", 0, 1}, {'b', "true", 0, 1},
      {'b', "0", 0, 0}, {'b', "No", 0, 0}, {'b', "yes", 92, 0}, {'r', "-2.5e-3", 0, -2.5e-3},
      {'r', "1e-400", 0, 0}, {'r', "-1e400", 94, 0}, {'r', "nan", 94, 0}, {'r', "inf", 94, 0},
      {'r', "1.5x", 94, 0}, {'r', "", 94, 0}, {'c', "#FF8000", 0, 0x0080FF},
      {'c', "#ff8000", 0, 0x0080FF}, {'c', "#FF800", 92, 0}, {'c', "#FF800G", 92, 0},
  };
  for (const Case& c : cases) {
    XmlScanner& s = Open(Doc(std::string("<A v='") + c.text + "'/>"));
    ASSERT_TRUE(s.Tag("A", kOpen | kAttributes));
    double real = -1;
    int64_t n = -1;
    int level = -1;
    bool b = false;
    uint32_t colour = 0;
    bool done = false;
    switch (c.kind) {
      case 'i': done = s.IntAttr("v", n, -5, 5); break;
      case 'l': done = s.IntAttr("v", level, 1, 65534, 94); n = level; break;
      case 'b': done = s.BoolAttr("v", b); n = b; break;
      case 'r': done = s.RealAttr("v", real); break;
      case 'c': done = s.ColourAttr("v", colour); n = colour; break;
    }
    // clang-format on
    EXPECT_EQ(done, c.code == 0) << c.text;
    EXPECT_EQ(s.error(), c.code) << c.text;
    if (done) {
      EXPECT_EQ(c.kind == 'r' ? real : double(n), c.value) << c.text;
    }
  }
}

}  // namespace
}  // namespace kelpdex
