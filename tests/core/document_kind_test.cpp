#include "core/document_kind.h"

#include <gtest/gtest.h>

namespace kelpdex {
namespace {

TEST(GuessFormat, ByTheExtensionInAnyCase) {
  EXPECT_EQ(GuessFormat("/home/me/data.kpx"), open_kind::kNative);
  EXPECT_EQ(GuessFormat("list.TXT"), open_kind::kText);
  EXPECT_EQ(GuessFormat("list.Csv"), open_kind::kText);
  EXPECT_EQ(GuessFormat("list.tsv"), open_kind::kText);
  EXPECT_EQ(GuessFormat("book.xml"), open_kind::kExcelXml);
  EXPECT_EQ(GuessFormat("old.dbf"), open_kind::kDbase4);
  EXPECT_EQ(GuessFormat("archive.xml.gz"), open_kind::kNative);
  EXPECT_EQ(GuessFormat("noextension"), open_kind::kNative);
  EXPECT_EQ(GuessFormat(".x"), open_kind::kNative);
}

TEST(AutoTimer, SavesClosesAndNeverLosesWork) {
  SessionSettings s;
  s.autoSaveMinutes = 5;
  s.autoCloseMinutes = 30;
  EXPECT_EQ(AutoTimerAction(s, true, true, 4.9, 1), TimerAction::kNone);
  EXPECT_EQ(AutoTimerAction(s, true, true, 5, 1), TimerAction::kSave);
  EXPECT_EQ(AutoTimerAction(s, false, true, 50, 1), TimerAction::kNone);  // nothing to save
  EXPECT_EQ(AutoTimerAction(s, true, false, 50, 1), TimerAction::kNone);  // no file to save to
  EXPECT_EQ(AutoTimerAction(s, false, true, 0, 30), TimerAction::kClose);
  EXPECT_EQ(AutoTimerAction(s, true, true, 0, 31), TimerAction::kSaveAndClose);
  EXPECT_EQ(AutoTimerAction(s, true, false, 0, 90), TimerAction::kNone);  // would lose work
  s.autoSaveMinutes = 0;
  s.autoCloseMinutes = 0;  // "Never"
  EXPECT_EQ(AutoTimerAction(s, true, true, 1e6, 1e6), TimerAction::kNone);
}

}  // namespace
}  // namespace kelpdex
