#include <gtest/gtest.h>

#include <QAction>
#include <QKeySequence>
#include <set>

#include "frame_fixture.h"
#include "views/commands/command_table.h"

namespace kelpdex::views {
namespace {

TEST(CommandTable, IdsAreUniqueAndTheRecentRangeStopsBeforeDelete) {
  std::set<uint16_t> seen;
  for (const Command& c : CommandTable()) {
    if (c.id == 0) continue;
    EXPECT_TRUE(seen.insert(c.id).second) << c.id;
    EXPECT_NE(c.text, nullptr) << c.id;
  }
  EXPECT_TRUE(IsRecentFileId(57616));
  EXPECT_TRUE(IsRecentFileId(57631));
  EXPECT_FALSE(IsRecentFileId(57632));
  ASSERT_NE(FindCommand(57625), nullptr);
  EXPECT_EQ(FindCommand(57625)->id, cmd::kRecentFirst);
  ASSERT_NE(FindCommand(57632), nullptr);
  EXPECT_EQ(FindCommand(57632)->family, Family::kClipboard);
  EXPECT_EQ(FindCommand(12345), nullptr);
}

using FrameCommands = testing::FrameTest;

// The accelerators reach the ids of the table, and the keys the views handle stay off it.
TEST_F(FrameCommands, AcceleratorsComeFromTheTable) {
  struct Key {
    const char* keys;
    int id;
  } const expected[] = {{"Ctrl+N", 57600},    {"F9", 33139},
                        {"Ctrl+Z", 57643},    {"Alt+Backspace", 57643},
                        {"Shift+Del", 57635}, {"Ctrl+Alt+Down", 32938},
                        {"F5", 32907},        {"Ctrl+Up", 33097},
                        {"Ctrl+G", 33062}};
  for (const Key& k : expected) {
    QAction* action = frame->ActionOf(k.id);
    ASSERT_NE(action, nullptr) << k.id;
    EXPECT_TRUE(action->shortcuts().contains(QKeySequence(k.keys))) << k.keys;
  }
  EXPECT_TRUE(frame->ActionOf(57604)->shortcuts().isEmpty());
  EXPECT_TRUE(frame->ActionOf(57604)->text().endsWith("\tF12"));
}

TEST_F(FrameCommands, NothingRunsWithoutADocumentAndUnbuiltCommandsStayDisabled) {
  for (const Command& c : CommandTable()) {
    if (c.id == 0 || c.id == cmd::kNew || c.id == cmd::kOpen || c.id == cmd::kExit ||
        c.family == Family::kHelp || c.family == Family::kSettings || c.family == Family::kLocale) {
      continue;  // these ask, open a window or change the session, not a document
    }
    EXPECT_FALSE(frame->Dispatch(c.id)) << c.id;
  }
  EXPECT_TRUE(asked.empty());
  EXPECT_EQ(book.firstNode, nullptr);
  EXPECT_EQ(frame->windowTitle(), "Kelpdex");
  MakeTable("T", {testing::Field("A", FieldType::kText)});
  Show();
  frame->UpdateUi();
  for (uint16_t id : {57607, 32804, 32799, 33125}) {
    EXPECT_FALSE(frame->ActionOf(id)->isEnabled()) << id;
    EXPECT_FALSE(frame->Dispatch(id)) << id;
  }
  EXPECT_TRUE(frame->ActionOf(cmd::kSave)->isEnabled());
  book.readOnly = true;
  frame->UpdateUi();
  for (uint16_t id : {cmd::kSave, cmd::kSaveAs, cmd::kCompact}) {
    EXPECT_FALSE(frame->ActionOf(id)->isEnabled()) << id;
  }
}

}  // namespace
}  // namespace kelpdex::views
