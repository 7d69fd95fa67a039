#include "document/options_lists.h"

#include <gtest/gtest.h>

#include <algorithm>

namespace kelpdex {
namespace {

TEST(OptionsLists, MinuteEntriesReadAsTheDialogShowsThem) {
  EXPECT_EQ(MinutesText(0, false), "Never");
  EXPECT_EQ(MinutesText(0, true), "Never");
  EXPECT_EQ(MinutesText(1, false), "After 1 min");
  EXPECT_EQ(MinutesText(5, false), "After 5 mins");
  EXPECT_EQ(MinutesText(1, true), "After 1 min (of inactivity)");
  EXPECT_EQ(MinutesText(30, true), "After 30 mins (of inactivity)");
}

TEST(OptionsLists, ASettingOffTheStepsStillHasItsEntry) {
  std::vector<int32_t> steps = MinuteChoices(0);
  ASSERT_FALSE(steps.empty());
  EXPECT_EQ(steps.front(), 0);
  EXPECT_TRUE(std::is_sorted(steps.begin(), steps.end()));
  // 7 minutes from a profile is no step: it goes in its place and nothing else changes.
  std::vector<int32_t> withSeven = MinuteChoices(7);
  EXPECT_EQ(withSeven.size(), steps.size() + 1);
  EXPECT_TRUE(std::is_sorted(withSeven.begin(), withSeven.end()));
  EXPECT_NE(std::find(withSeven.begin(), withSeven.end(), 7), withSeven.end());
  // A step already offered is not doubled.
  EXPECT_EQ(MinuteChoices(steps[2]), steps);
}

TEST(OptionsLists, FileFormatPositionsRoundTrip) {
  for (NativeFormat f : {NativeFormat::kXml, NativeFormat::kXmlCompressed, NativeFormat::kBinary,
                         NativeFormat::kBinaryCompressed}) {
    EXPECT_EQ(FileFormatOfIndex(FileFormatIndex(f)), f);
  }
  EXPECT_EQ(FileFormatIndex(NativeFormat::kDefault), 0);
  EXPECT_STREQ(kFileFormatTexts[FileFormatIndex(NativeFormat::kBinary)], "Binary");
}

}  // namespace
}  // namespace kelpdex
