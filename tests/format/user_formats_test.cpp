#include "format/user_formats.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>

#include "format/format_string.h"

namespace kelpdex {
namespace {

TEST(UserFormatList, BuiltInFormatsAreValidAndUserFormatsFollowThem) {
  UserFormatList list;
  auto compiled = std::make_unique<CompiledFormat>();
  for (size_t i = 0; i < list.builtInCount(); ++i) {
    EXPECT_TRUE(ParseFormatString(list.at(i), *compiled)) << list.at(i);
  }
  EXPECT_TRUE(list.UserFormats().empty());
  EXPECT_TRUE(list.Add("0.000 \"kg\""));
  EXPECT_TRUE(list.Add("#,##0.00"));      // built in already
  EXPECT_TRUE(list.Add("0.000 \"kg\""));  // added already
  EXPECT_FALSE(list.Add("0;0;0;0;0"));
  EXPECT_FALSE(list.Add(std::string(1025, '0')));
  EXPECT_EQ(list.UserFormats(), std::vector<std::string>{"0.000 \"kg\""});
  EXPECT_EQ(list.size(), list.builtInCount() + 1);
  list.ResetToBuiltIn();
  EXPECT_TRUE(list.UserFormats().empty());
}

TEST(UserFormatList, RefusesMoreThanItsRoom) {
  UserFormatList list;
  for (size_t i = 0; i < UserFormatList::kMaxUserFormats; ++i) {
    ASSERT_TRUE(list.Add("0\"" + std::to_string(i) + "\""));
  }
  EXPECT_FALSE(list.Add("0\"one more\""));
  EXPECT_EQ(list.UserFormats().size(), UserFormatList::kMaxUserFormats);
}

}  // namespace
}  // namespace kelpdex
