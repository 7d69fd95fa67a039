#include "document/protection_rules.h"

#include <gtest/gtest.h>

#include <cstring>
#include <string>

#include "core/strings.h"
#include "document/document_session.h"
#include "persist/document_file.h"
#include "platform/os.h"
#include "support/file_bytes.h"
#include "support/recording_prompter.h"
#include "support/temp_dir.h"
#include "support/workbook_compare.h"

namespace kelpdex {
namespace {

constexpr const char* kPassword = "Tide-Pool 42";

class ProtectionRulesTest : public ::testing::Test {
 protected:
  ProtectionRulesTest() : scope(prompter), session(book, settings) {}

  ProtectionCheck Check(bool allowReadOnly, const char* password, const char* confirmation) {
    ProtectionAnswers answers;
    answers.protect = true;
    answers.allowReadOnly = allowReadOnly;
    answers.password.Set(password);
    answers.confirmation.Set(confirmation);
    prompter.boxes.clear();
    return CheckProtectionAnswers(answers);
  }
  std::string Boxes() const {
    std::string all;
    for (const auto& box : prompter.boxes) all += box.text + "|";
    return all;
  }
  // The sample saved with `mode` under kPassword.
  std::string SavedProtected(const std::string& name, uint8_t mode) {
    Workbook sample;
    testing::BuildSampleWorkbook(sample);
    sample.protectionMode = mode;
    sample.password.Set(kPassword);
    std::string path = dir.Path(name);
    ErrorCode error = err::kNone;
    EXPECT_TRUE(WriteDocumentFile(path, sample, NativeFormat::kBinary, error)) << int(error);
    return path;
  }
  bool FormulaAt301() {
    const CellRecord* r = book.FindTable("People")->cells.GetCell(301, 0);
    return r != nullptr && cell::IsFormula(r);
  }
  // Whether any four characters in a row of `text` stand in the workbook object or its strings.
  bool WorkbookHolds(std::string_view text) {
    std::string_view raw(reinterpret_cast<const char*>(&book), sizeof book);
    for (size_t at = 0; at + 4 <= text.size(); ++at) {
      std::string_view piece = text.substr(at, 4);
      for (std::string_view field :
           {raw, std::string_view(book.fileName), std::string_view(book.lastSavedBy),
            std::string_view(book.lastSavedAt)}) {
        if (field.find(piece) != std::string_view::npos) return true;
      }
    }
    return false;
  }

  testing::TempDir dir;
  testing::RecordingPrompter prompter;
  testing::ScopedPrompter scope;
  Workbook book;
  SessionSettings settings;
  DocumentSession session;
};

TEST_F(ProtectionRulesTest, TheDialogTakesSixCharactersConfirmedExactly) {
  EXPECT_EQ(Check(false, "abcde", "abcde"), ProtectionCheck::kStayOnPassword);
  EXPECT_EQ(Boxes(), std::string(LoadStringText(str::kPasswordTooShort)) + "|");
  EXPECT_EQ(Check(false, "abcdef", "abcdeF"), ProtectionCheck::kStay);
  EXPECT_EQ(Boxes(), std::string(LoadStringText(str::kPasswordsDiffer)) + "|");
  EXPECT_EQ(Check(false, "abcdef", "abcdef "), ProtectionCheck::kStay);
  EXPECT_EQ(Check(false, "abcdef", "abcdef"), ProtectionCheck::kAccepted);
  EXPECT_EQ(Boxes(), "");

  // The read-only copy is questioned first; anything but Yes keeps the dialog open.
  prompter.answers = {answer::kNo};
  EXPECT_EQ(Check(true, "abcdef", "abcdef"), ProtectionCheck::kStay);
  EXPECT_EQ(Boxes(), std::string(kReadOnlyAccessQuestion) + "|");
  prompter.answers = {answer::kYes};
  EXPECT_EQ(Check(true, "abc", "abc"), ProtectionCheck::kStayOnPassword);
  prompter.answers = {answer::kYes};
  EXPECT_EQ(Check(true, "abcdef", "abcdef"), ProtectionCheck::kAccepted);

  ProtectionAnswers none;
  EXPECT_EQ(CheckProtectionAnswers(none), ProtectionCheck::kAccepted);
  book.protectionMode = 1;
  book.password.Set(kPassword);
  ApplyProtection(book, none);
  EXPECT_EQ(book.protectionMode, 0);
  EXPECT_TRUE(book.password.empty());
}

TEST_F(ProtectionRulesTest, OpeningAsksForThePasswordAndCloseLeavesNoTraceOfIt) {
  std::string path = SavedProtected("guarded.kpx", 1);
  // Cancel ends the open without a message.
  EXPECT_FALSE(session.OpenDocument(path, DocumentKind::kNative));
  EXPECT_FALSE(session.HasDocument());
  EXPECT_EQ(prompter.dialogs.back(), "password:" + path + ":read-only");
  EXPECT_TRUE(prompter.boxes.empty());

  prompter.typedPassword = "tide-pool 42";
  prompter.passwordChoices = {PasswordChoice::kPassword};
  EXPECT_FALSE(session.OpenDocument(path, DocumentKind::kNative));
  EXPECT_FALSE(session.HasDocument());
  ASSERT_FALSE(prompter.boxes.empty());
  EXPECT_EQ(prompter.boxes.back().text, ErrorText(err::kInvalidPassword));

  prompter.passwordChoices = {PasswordChoice::kReadOnly};
  ASSERT_TRUE(session.OpenDocument(path, DocumentKind::kNative));
  EXPECT_TRUE(book.readOnly);
  EXPECT_FALSE(FormulaAt301());
  EXPECT_TRUE(book.password.empty());
  ASSERT_TRUE(session.CloseDocument());

  prompter.typedPassword = kPassword;
  prompter.passwordChoices = {PasswordChoice::kPassword};
  ASSERT_TRUE(session.OpenDocument(path, DocumentKind::kNative));
  EXPECT_FALSE(book.readOnly);
  EXPECT_TRUE(FormulaAt301());
  EXPECT_EQ(book.protectionMode, 1);
  // The scan can see the password while the document is open, and none of it after Close.
  EXPECT_TRUE(WorkbookHolds(kPassword));
  ASSERT_TRUE(session.CloseDocument());
  EXPECT_FALSE(WorkbookHolds(kPassword));
}

TEST_F(ProtectionRulesTest, TheReadOnlyCopyIsSavedOnlyWithProtectionSetAnew) {
  std::string path = SavedProtected("copy.kpx", 1);
  prompter.passwordChoices = {PasswordChoice::kReadOnly};
  ASSERT_TRUE(session.OpenDocument(path, DocumentKind::kNative));
  std::string target = dir.Path("again.kpx");
  prompter.saveChoices = {{target, FileFilter::kNative}};
  EXPECT_FALSE(session.SaveDocumentAs());
  EXPECT_EQ(prompter.dialogs.back(), "protection");
  EXPECT_FALSE(platform::FileExists(target));

  prompter.saveChoices = {{target, FileFilter::kNative}};
  prompter.protectionAnswers = {2};
  prompter.typedPassword = "fresh-password";
  ASSERT_TRUE(session.SaveDocumentAs());
  ASSERT_TRUE(session.CloseDocument());
  prompter.passwordChoices = {PasswordChoice::kPassword};
  ASSERT_TRUE(session.OpenDocument(target, DocumentKind::kNative));
  EXPECT_EQ(book.protectionMode, 2);
  EXPECT_EQ(book.password.view(), "fresh-password");
  // What was saved is the copy it came from: values where formulas were.
  EXPECT_FALSE(FormulaAt301());
}

}  // namespace
}  // namespace kelpdex
