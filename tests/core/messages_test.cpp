#include <cerrno>
#include <cstdio>
#include <string>

#include <gtest/gtest.h>

#include "core/error_code.h"
#include "core/prompter.h"
#include "core/reporting.h"
#include "core/strings.h"
#include "platform/os.h"
#include "support/recording_prompter.h"

namespace kelpdex {
namespace {

using testing::RecordingPrompter;
using testing::ScopedPrompter;

TEST(ErrorText, CodesWithoutEntryReadNoError) {
  EXPECT_STREQ(ErrorText(0), "No error");
  EXPECT_STREQ(ErrorText(47), "No error");
  EXPECT_STREQ(ErrorText(err::kColumnConversionWrite), "No error");
  EXPECT_STREQ(ErrorText(255), "No error");
}

TEST(ErrorText, TextsStandAsUsersSeeThem) {
  EXPECT_STREQ(ErrorText(err::kOutOfMemory), "Out of memory");
  EXPECT_STREQ(ErrorText(err::kXmlOutOfMemory), "Ouf of memory while loading an xml document");
  EXPECT_STREQ(ErrorText(34),
               "Not enought empty columns to the right of the last non-empty column");
  EXPECT_STREQ(ErrorText(err::kInvalidExcelDatabase),
               "Missing or invalid database specification.\nExcel XML files must contain "
               "worksheets organized in the structure required by Kelpdex.\nPlease refer to the "
               "\"Excel XML files\" help topic.");
  EXPECT_STREQ(ErrorText(err::kTooManyFields), "Too many database fields - max. record size = 64K");
  // Every family has its first and last member.
  for (ErrorCode code : {1, 12, 21, 46, 50, 56, 60, 74, 80, 88, 90, 95}) {
    EXPECT_STRNE(ErrorText(code), "No error") << int(code);
  }
}

TEST(Reporters, ErrorsShowWithTitleIconAndOk) {
  RecordingPrompter prompter;
  ScopedPrompter scope(prompter);
  ShowError(err::kFileOpenRead);
  ShowErrorAtLine(err::kXmlUnexpectedElement, 12);
  ShowMessage("Some text\nfile.kpx");
  ASSERT_EQ(prompter.boxes.size(), 3u);
  for (const auto& box : prompter.boxes) {
    EXPECT_EQ(box.title, "Kelpdex");
    EXPECT_EQ(box.flags, 0x2030u);
  }
  EXPECT_EQ(prompter.boxes[0].text, "Can't open the specified file for reading");
  EXPECT_EQ(prompter.boxes[1].text, "An unexpected xml element\nLine: 12");
  EXPECT_EQ(prompter.boxes[2].text, "Some text\nfile.kpx");
}

TEST(Reporters, AskAddsTaskModalAndReturnsTheAnswer) {
  RecordingPrompter prompter;
  ScopedPrompter scope(prompter);
  prompter.answers = {answer::kNo};
  EXPECT_EQ(AskText(FormatString(str::kSaveChanges, {"orders.kpx"}), mb::kYesNoCancel),
            answer::kNo);
  EXPECT_EQ(Ask(str::kDeleteTable, mb::kYesNo | mb::kIconQuestion), answer::kNo);
  ASSERT_EQ(prompter.boxes.size(), 2u);
  EXPECT_EQ(prompter.boxes[0].text, "Save changes to orders.kpx?");
  EXPECT_EQ(prompter.boxes[0].flags, mb::kYesNoCancel | mb::kTaskModal);
  EXPECT_EQ(prompter.boxes[1].text,
            "Deleting the table will permanently delete all the records it contains.\nContinue?");
}

TEST(Reporters, SystemErrorNeedsALastError) {
  RecordingPrompter prompter;
  ScopedPrompter scope(prompter);
  platform::SetLastSystemError(0);
  EXPECT_FALSE(ShowSystemError("x"));
  EXPECT_TRUE(prompter.boxes.empty());
  platform::SetLastSystemError(ENOENT);
  EXPECT_TRUE(ShowSystemError("/tmp/missing.kpx"));
  ASSERT_EQ(prompter.boxes.size(), 1u);
  EXPECT_EQ(prompter.boxes[0].text, platform::SystemErrorText(ENOENT) + "\n/tmp/missing.kpx");
}

TEST(FormatMessageText, InsertsByNumberWithPrintfConversions) {
  EXPECT_EQ(FormatString(str::kEnterInteger, {1, 255}),
            "Please enter an integer between 1 and 255.");
  EXPECT_EQ(FormatMessageText("%2!s! before %1!s!", {"one", "two"}), "two before one");
  EXPECT_EQ(FormatMessageText("[%1!5d!] [%1!-4d!] [%1!x!]", {42}), "[   42] [42  ] [2a]");
  EXPECT_EQ(FormatMessageText("%1 and %1!s!", {"plain"}), "plain and plain");
  EXPECT_EQ(FormatMessageText("100%% of %1!d!", {-3}), "100% of -3");
  // An insert without an argument vanishes; a lone percent sign stays.
  EXPECT_EQ(FormatMessageText("a%3!s!b 5% c%", {"x"}), "ab 5% c%");
  EXPECT_EQ(FormatString(9999, {}), "");
  EXPECT_EQ(LoadStringText(9999), nullptr);
}

// A console prompter reading from a file, which is never a terminal.
class ConsolePrompterTest : public ::testing::Test {
 protected:
  void SetUp() override { out_ = std::tmpfile(); }
  void TearDown() override { std::fclose(out_); }
  std::string Output() {
    std::fflush(out_);
    std::rewind(out_);
    std::string text;
    char buf[256];
    while (std::fgets(buf, sizeof buf, out_) != nullptr) text += buf;
    return text;
  }
  FILE* out_ = nullptr;
};

TEST_F(ConsolePrompterTest, MessagesAreOneUtf8LineBehindThePrefix) {
  ConsolePrompter prompter(out_, nullptr, "kpx: ");
  EXPECT_EQ(prompter.MessageBox("Kelpdex", "Caf\xE9\nLine: 3", 0x2030), answer::kOk);
  EXPECT_EQ(Output(), "kpx: Caf\xC3\xA9 Line: 3\n");
}

TEST_F(ConsolePrompterTest, QuestionsWithoutATerminalTakeTheDefaultOrTheCautiousAnswer) {
  ConsolePrompter cautious(out_, nullptr, "");
  EXPECT_EQ(cautious.MessageBox("", "Save?", mb::kYesNoCancel), answer::kCancel);
  EXPECT_EQ(cautious.MessageBox("", "Delete?", mb::kYesNo), answer::kNo);
  EXPECT_EQ(cautious.MessageBox("", "Go on?", mb::kOkCancel), answer::kCancel);
  ConsolePrompter yes(out_, nullptr, "", answer::kYes);
  EXPECT_EQ(yes.MessageBox("", "Save?", mb::kYesNoCancel), answer::kYes);
  // A default the buttons do not offer is not given.
  EXPECT_EQ(yes.MessageBox("", "Go on?", mb::kOkCancel), answer::kCancel);
}

}  // namespace
}  // namespace kelpdex
