#include "text/rtf_text.h"

#include <gtest/gtest.h>

namespace kelpdex::text {
namespace {

TEST(RtfText, RichTextIsReducedToWhatAReaderSees) {
  EXPECT_EQ(LongTextPlain("plain {\\b} stays"), "plain {\\b} stays");
  EXPECT_EQ(LongTextPlain("{\\rtf1\\ansi\\deff0{\\fonttbl{\\f0 Arial;}}{\\colortbl;\\red255;}"
                          "{\\*\\generator x;}\\f0 Hello \\b world\\b0\\par next\\tab line}"),
            "Hello world\nnext\tline");
  // Escapes, hex bytes in the code page, Unicode with its stand-in skipped, and a picture.
  EXPECT_EQ(LongTextPlain("{\\rtf1 a\\{b\\}c\\\\d caf\\'e9 \\u8364?x\\uc2\\u233 ab"
                          "{\\pict 0123abcd}\\emdash}"),
            "a{b}c\\d caf\xE9 ?x\xE9\x97");
  EXPECT_EQ(LongTextPlain("{urtf1 hi}"), "hi");
  EXPECT_EQ(LongTextPreview("{\\rtf1 first\\par second}", 100), "first");
  EXPECT_EQ(LongTextPreview("one\r\ntwo", 2), "on");
  // Unbalanced groups and a cut escape do not run past the end.
  EXPECT_EQ(LongTextPlain("{\\rtf1 }}}a\\'4"), "a4");
}

}  // namespace
}  // namespace kelpdex::text
