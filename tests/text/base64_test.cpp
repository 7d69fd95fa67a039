#include <string>
#include <string_view>

#include <gtest/gtest.h>

#include "text/base64.h"

namespace kelpdex::text {
namespace {

TEST(Base64, RfcVectorsAndEveryByteRoundTrip) {
  const std::pair<std::string_view, std::string_view> vectors[] = {
      {"", ""},
      {"f", "Zg=="},
      {"fo", "Zm8="},
      {"foo", "Zm9v"},
      {"foob", "Zm9vYg=="},
      {"fooba", "Zm9vYmE="},
      {"foobar", "Zm9vYmFy"},
  };
  std::string decoded;
  for (const auto& [plain, encoded] : vectors) {
    EXPECT_EQ(Base64Encode(plain), encoded);
    decoded = "stale";
    EXPECT_TRUE(Base64Decode(encoded, decoded)) << encoded;
    EXPECT_EQ(decoded, plain);
  }
  std::string all;
  for (int i = 255; i >= 0; --i) all.push_back(static_cast<char>(i));
  ASSERT_TRUE(Base64Decode(Base64Encode(all), decoded));
  EXPECT_EQ(decoded, all);
}

TEST(Base64, LinesHoldAtMost57BytesEach) {
  for (size_t n : {56, 57, 58, 114}) {
    SCOPED_TRACE(n);
    const std::string input(n, '\xA5');
    const std::string text = Base64EncodeLines(input);
    std::string joined;
    size_t pos = 0;
    for (size_t line = 0; pos < text.size(); ++line) {
      const size_t end = text.find("\r\n", pos);
      ASSERT_NE(end, std::string::npos);
      const size_t left = n - line * 57;
      EXPECT_EQ(end - pos, left >= 57 ? 76u : (left + 2) / 3 * 4);
      joined.append(text, pos, end - pos);
      pos = end + 2;
    }
    EXPECT_EQ(joined, Base64Encode(input));
    std::string decoded;
    ASSERT_TRUE(Base64Decode(text, decoded));
    EXPECT_EQ(decoded, input);
  }
  EXPECT_EQ(Base64EncodeLines(""), "");
  std::string out = "To:\r\n";
  AppendBase64Lines(out, "foo");
  EXPECT_EQ(out, "To:\r\nZm9v\r\n");
}

TEST(Base64, DecodeSkipsBlanksAndRejectsMalformedText) {
  std::string decoded;
  EXPECT_TRUE(Base64Decode(" Zm9v\r\nYmFy\r\n", decoded));
  EXPECT_EQ(decoded, "foobar");
  EXPECT_TRUE(Base64Decode("Zm\t9v Yg\n=\n=", decoded));
  EXPECT_EQ(decoded, "foob");
  for (std::string_view bad : {"Zm9", "Zm9vY", "Zm9v!", "Zm-v", "Zm9\xC3\xA9", "Z===", "=Zm9",
                               "Zg=a", "Zg==Zm9v", "Zm9v="}) {
    EXPECT_FALSE(Base64Decode(bad, decoded)) << bad;
  }
}

}  // namespace
}  // namespace kelpdex::text
