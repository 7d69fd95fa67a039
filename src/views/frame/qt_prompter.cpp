#include "views/frame/qt_prompter.h"

#include <QApplication>
#include <QDialogButtonBox>
#include <QFileDialog>
#include <QFormLayout>
#include <QInputDialog>
#include <QLineEdit>
#include <QMessageBox>
#include <QPushButton>

#include "core/reporting.h"
#include "core/strings.h"
#include "text/utf8.h"
#include "views/dialogs/new_database_wizard.h"
#include "views/dialogs/protection_dialog.h"

namespace kelpdex::views {

namespace {

QString Utf8(std::string_view codePage) {
  return QString::fromUtf8(text::Cp1252ToUtf8(codePage));
}

const char* const kFilters[] = {
    "Kelpdex (*.kpx)",        "Kelpdex (*.kpx)",   "Text files (*.txt *.csv *.tsv)",
    "Excel 2003 XML (*.xml)", "dBase III (*.dbf)", "dBase IV (*.dbf)",
    "FoxPro (*.dbf)",         "Clipper (*.dbf)",   "SQLite database (*.sqlite *.db)",
};

}  // namespace

QString FileDialogFilters() {
  QStringList list;
  // The first two entries both mean the native form; the dialog shows it once.
  for (size_t i = 1; i < std::size(kFilters); ++i) list << kFilters[i];
  list << "All files (*)";
  return list.join(";;");
}

QtPrompter::QtPrompter(QWidget* parent) : parent_(parent) {
  previous_ = SetActivePrompter(this);
}

QtPrompter::~QtPrompter() {
  SetActivePrompter(previous_);
}

int QtPrompter::MessageBox(std::string_view title, std::string_view text, unsigned flags) {
  lastText = Utf8(text);
  if (script) return script(lastText, flags);
  QMessageBox box(parent_);
  box.setWindowTitle(Utf8(title));
  box.setText(lastText);
  switch (flags & mb::kIconMask) {
    case mb::kIconError:
      box.setIcon(QMessageBox::Critical);
      break;
    case mb::kIconQuestion:
      box.setIcon(QMessageBox::Question);
      break;
    case mb::kIconExclamation:
      box.setIcon(QMessageBox::Warning);
      break;
    case mb::kIconInformation:
      box.setIcon(QMessageBox::Information);
      break;
    default:
      break;
  }
  QList<QPair<QMessageBox::StandardButton, int>> buttons;
  switch (flags & mb::kButtonMask) {
    case mb::kOkCancel:
      buttons = {{QMessageBox::Ok, answer::kOk}, {QMessageBox::Cancel, answer::kCancel}};
      break;
    case mb::kYesNoCancel:
      buttons = {{QMessageBox::Yes, answer::kYes},
                 {QMessageBox::No, answer::kNo},
                 {QMessageBox::Cancel, answer::kCancel}};
      break;
    case mb::kYesNo:
      buttons = {{QMessageBox::Yes, answer::kYes}, {QMessageBox::No, answer::kNo}};
      break;
    default:
      buttons = {{QMessageBox::Ok, answer::kOk}};
  }
  QMessageBox::StandardButtons all;
  for (const auto& b : buttons) all |= b.first;
  box.setStandardButtons(all);
  int defaultIndex = (flags & mb::kDefaultButton2) != 0 && buttons.size() > 1 ? 1 : 0;
  box.setDefaultButton(buttons[defaultIndex].first);
  QApplication::setOverrideCursor(Qt::ArrowCursor);
  box.exec();
  QApplication::restoreOverrideCursor();
  for (const auto& b : buttons) {
    if (box.standardButton(box.clickedButton()) == b.first) return b.second;
  }
  return CautiousAnswer(flags);
}

bool QtPrompter::OfferReadOnly(std::string_view path) {
  QString text = Utf8(path) + "\n\n" + QString::fromUtf8(ErrorText(err::kFileInUse)) +
                 "\n\nOpen a read-only copy?";
  return MessageBox(LoadStringText(128), text.toStdString(), mb::kYesNo | mb::kIconQuestion) ==
         answer::kYes;
}

namespace {

// Runs the Open or Save As dialog from `path` and `filter`; false on Cancel. The filter the user
// left selected comes back as its number.
template <typename Choice>
bool RunFileDialog(QWidget* parent, bool save, Choice& choice) {
  QString selected = kFilters[std::max(1, static_cast<int>(choice.filter))];
  QString path = save ? QFileDialog::getSaveFileName(parent, "Save As", Utf8(choice.path),
                                                     FileDialogFilters(), &selected)
                      : QFileDialog::getOpenFileName(parent, "Open", Utf8(choice.path),
                                                     FileDialogFilters(), &selected);
  if (path.isEmpty()) return false;
  choice.path = text::Utf8ToCp1252(path.toStdString());
  int index = 1;
  for (size_t i = 1; i < std::size(kFilters); ++i) {
    if (selected == kFilters[i]) index = static_cast<int>(i);
  }
  choice.filter = static_cast<FileFilter>(index);
  return true;
}

}  // namespace

bool QtPrompter::ChooseOpenFile(OpenFileChoice& choice) {
  return !script && RunFileDialog(parent_, false, choice);
}

bool QtPrompter::ChooseSaveFile(SaveFileChoice& choice) {
  return !script && RunFileDialog(parent_, true, choice);
}

bool QtPrompter::NewDatabaseWizard(NewDatabaseAnswers& answers) {
  if (script) return false;
  views::NewDatabaseWizard wizard(answers, parent_);
  return wizard.exec() == QDialog::Accepted;
}

PasswordChoice QtPrompter::AskOpenPassword(std::string_view path, bool readOnlyOffered,
                                           Password& password) {
  if (script) return PasswordChoice::kCancel;
  OpenPasswordDialog dialog(Utf8(path), readOnlyOffered, parent_);
  dialog.exec();
  if (dialog.choice() == PasswordChoice::kPassword) {
    password.Set(text::Utf8ToCp1252(dialog.passwordBox()->text().toStdString()));
  }
  return dialog.choice();
}

bool QtPrompter::ProtectionDialog(ProtectionAnswers& answers) {
  if (script) return false;
  views::ProtectionDialog dialog(answers, parent_);
  return dialog.exec() == QDialog::Accepted;
}

}  // namespace kelpdex::views
