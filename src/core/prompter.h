// Every message and question to the user goes through one Prompter: Qt dialogs in the desktop
// application, the terminal in kpx, a scripted recorder in tests. The logic never talks to the
// user by itself.
#pragma once

#include <cstdio>
#include <string>
#include <string_view>
#include <vector>

#include "core/document_kind.h"
#include "core/field_type.h"
#include "core/password.h"

namespace kelpdex {

// Message box flags and answers, with the values Windows gives them: callers pass them along as
// plain numbers.
namespace mb {
constexpr unsigned kOk = 0x0;
constexpr unsigned kOkCancel = 0x1;
constexpr unsigned kYesNoCancel = 0x3;
constexpr unsigned kYesNo = 0x4;
constexpr unsigned kButtonMask = 0xF;
constexpr unsigned kIconError = 0x10;
constexpr unsigned kIconQuestion = 0x20;
constexpr unsigned kIconExclamation = 0x30;
constexpr unsigned kIconInformation = 0x40;
constexpr unsigned kIconMask = 0xF0;
constexpr unsigned kDefaultButton2 = 0x100;
constexpr unsigned kTaskModal = 0x2000;
}  // namespace mb

namespace answer {
constexpr int kOk = 1;
constexpr int kCancel = 2;
constexpr int kYes = 6;
constexpr int kNo = 7;
}  // namespace answer

// One field as the New Database wizard's second page holds it: the texts of the field dialog.
struct WizardField {
  std::string name;
  FieldType type = FieldType::kText;
  bool link = false;
  bool isValue = false;  // a default value rather than a formula
  std::string formulaOrValue;
};

// The three pages of the New Database wizard.
struct NewDatabaseAnswers {
  std::string tableName;
  std::vector<WizardField> fields;
  std::string path;  // empty: the database stays without a file until it is saved
};

// The Save As dialog: the file and the filter chosen.
struct SaveFileChoice {
  std::string path;
  FileFilter filter = FileFilter::kDefault;
};

// The Open dialog: the file and the filter chosen.
struct OpenFileChoice {
  std::string path;
  FileFilter filter = FileFilter::kDefault;
};

class Prompter {
 public:
  virtual ~Prompter() = default;
  // Shows a message box. Title and text are in the document code page. Returns the answer
  // (answer::kOk, kCancel, kYes, kNo) that the buttons in `flags` allow.
  virtual int MessageBox(std::string_view title, std::string_view text, unsigned flags) = 0;

  // The dialogs. Each default is the answer that changes nothing, for a prompter that cannot
  // show the dialog.

  // Another process has the file open: true to open it read-only all the same.
  virtual bool OfferReadOnly(std::string_view /*path*/) { return false; }
  // The Open dialog, starting in `choice.path` (a folder); false on Cancel.
  virtual bool ChooseOpenFile(OpenFileChoice& /*choice*/) { return false; }
  // The Save As dialog, starting from `choice`; false on Cancel.
  virtual bool ChooseSaveFile(SaveFileChoice& /*choice*/) { return false; }
  // The New Database wizard; false on Cancel. The dialog checks each page as the field and table
  // dialogs do, and the caller checks the answers again.
  virtual bool NewDatabaseWizard(NewDatabaseAnswers& /*answers*/) { return false; }
  // The Open Password dialog for a protected file; "Open As &Read-Only" is offered only when
  // `readOnlyOffered`. The password goes into `password`.
  virtual PasswordChoice AskOpenPassword(std::string_view /*path*/, bool /*readOnlyOffered*/,
                                         Password& /*password*/) {
    return PasswordChoice::kCancel;
  }
  // The Database Protection dialog, starting from `answers`; false on Cancel. On OK the dialog
  // runs CheckProtectionAnswers and stays open while it refuses; the caller checks again.
  virtual bool ProtectionDialog(ProtectionAnswers& /*answers*/) { return false; }
};

// The answer that changes nothing, for a prompter that cannot ask: Cancel where there is one,
// else No, else OK.
int CautiousAnswer(unsigned flags);

// A prompter on the terminal. Messages go to `out` in UTF-8, one line each, behind `prefix`.
// Questions are read from `in` when it is a terminal; otherwise they get `defaultAnswer`, or the
// cautious answer when that is 0 or not one the buttons allow.
class ConsolePrompter : public Prompter {
 public:
  ConsolePrompter(FILE* out, FILE* in, std::string_view prefix, int defaultAnswer = 0);
  int MessageBox(std::string_view title, std::string_view text, unsigned flags) override;

 private:
  FILE* out_;
  FILE* in_;
  std::string_view prefix_;
  int defaultAnswer_;
};

// The prompter the reporters use. Until one is set it is a ConsolePrompter on stderr and stdin.
Prompter& ActivePrompter();
// Sets the active prompter (nullptr restores the console one) and returns the previous one.
Prompter* SetActivePrompter(Prompter* prompter);

}  // namespace kelpdex
