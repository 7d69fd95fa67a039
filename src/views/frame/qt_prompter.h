// The desktop's Prompter: message boxes with the documented texts, buttons and icons, the
// read-only offer, the password question, and the file dialogs with their filters.
#pragma once

#include <QString>
#include <functional>

#include "core/prompter.h"

class QWidget;

namespace kelpdex::views {

class QtPrompter : public Prompter {
 public:
  explicit QtPrompter(QWidget* parent);
  ~QtPrompter() override;

  int MessageBox(std::string_view title, std::string_view text, unsigned flags) override;
  bool OfferReadOnly(std::string_view path) override;
  bool ChooseOpenFile(OpenFileChoice& choice) override;
  bool ChooseSaveFile(SaveFileChoice& choice) override;
  bool NewDatabaseWizard(NewDatabaseAnswers& answers) override;
  PasswordChoice AskOpenPassword(std::string_view path, bool readOnlyOffered,
                                 Password& password) override;
  bool ProtectionDialog(ProtectionAnswers& answers) override;

  // Tests answer in place of the user: each box is handed to the script, which returns the
  // answer; the text of the last one shown is kept.
  std::function<int(const QString& text, unsigned flags)> script;
  QString lastText;

 private:
  QWidget* parent_;
  Prompter* previous_;
};

// The file dialogs' filter list, in the order of FileFilter.
QString FileDialogFilters();

}  // namespace kelpdex::views
