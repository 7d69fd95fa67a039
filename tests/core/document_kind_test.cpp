#include "core/document_kind.h"

#include <gtest/gtest.h>

#include "core/session_settings.h"

namespace kelpdex {
namespace {

TEST(GuessFormat, ByTheExtensionInAnyCase) {
  EXPECT_EQ(GuessFormat("/home/me/data.kpx"), DocumentKind::kNative);
  EXPECT_EQ(GuessFormat("list.TXT"), DocumentKind::kText);
  EXPECT_EQ(GuessFormat("list.Csv"), DocumentKind::kText);
  EXPECT_EQ(GuessFormat("list.tsv"), DocumentKind::kText);
  EXPECT_EQ(GuessFormat("book.xml"), DocumentKind::kExcelXml);
  EXPECT_EQ(GuessFormat("old.dbf"), DocumentKind::kDbase4);
  EXPECT_EQ(GuessFormat("archive.xml.gz"), DocumentKind::kNative);
  EXPECT_EQ(GuessFormat("noextension"), DocumentKind::kNative);
  EXPECT_EQ(GuessFormat(".x"), DocumentKind::kNative);
  EXPECT_EQ(GuessFormat("shop.SQLite"), DocumentKind::kSqlite);
  EXPECT_EQ(GuessFormat("shop.db"), DocumentKind::kSqlite);
  EXPECT_EQ(GuessFormat(".db"), DocumentKind::kNative);
}

TEST(FileFilters, MapToKindsAndBack) {
  // The first two filters go by the extension on Open and are native on Save.
  for (FileFilter first : {FileFilter::kDefault, FileFilter::kNative}) {
    EXPECT_EQ(KindOfOpenFilter(first, "data.TXT"), DocumentKind::kText);
    EXPECT_EQ(KindOfOpenFilter(first, "data.kpx"), DocumentKind::kNative);
    EXPECT_EQ(KindOfSaveFilter(first), DocumentKind::kNative);
  }
  // The others name their kind whatever the extension says.
  EXPECT_EQ(KindOfOpenFilter(FileFilter::kExcelXml, "data.TXT"), DocumentKind::kExcelXml);
  EXPECT_EQ(KindOfOpenFilter(FileFilter::kDbase3, "old.dbf"), DocumentKind::kDbase3);
  EXPECT_EQ(KindOfSaveFilter(FileFilter::kText), DocumentKind::kText);
  EXPECT_EQ(KindOfSaveFilter(FileFilter::kClipper), DocumentKind::kClipper);
  // A filter past the list is native.
  EXPECT_EQ(KindOfSaveFilter(static_cast<FileFilter>(9)), DocumentKind::kNative);
  EXPECT_EQ(KindOfOpenFilter(static_cast<FileFilter>(9), "data.txt"), DocumentKind::kNative);
  // Save As starts on the filter that writes the document's own kind again.
  for (DocumentKind kind : {DocumentKind::kNative, DocumentKind::kText, DocumentKind::kExcelXml,
                            DocumentKind::kDbase3, DocumentKind::kDbase4, DocumentKind::kFoxPro,
                            DocumentKind::kClipper, DocumentKind::kSqlite}) {
    EXPECT_EQ(KindOfSaveFilter(SaveFilterOfKind(kind)), kind) << int(kind);
  }
  EXPECT_EQ(SaveFilterOfKind(DocumentKind::kNative), FileFilter::kNative);
  EXPECT_EQ(SaveFilterOfKind(DocumentKind::kDbase4), FileFilter::kDbase4);
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
