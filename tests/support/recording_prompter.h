// A prompter for tests: records every box and answers from a script.
#pragma once

#include <deque>
#include <string>
#include <vector>

#include "core/prompter.h"

namespace kelpdex::testing {

class RecordingPrompter : public Prompter {
 public:
  struct Box {
    std::string title;
    std::string text;
    unsigned flags;
  };

  int MessageBox(std::string_view title, std::string_view text, unsigned flags) override {
    boxes.push_back({std::string(title), std::string(text), flags});
    if (answers.empty()) return CautiousAnswer(flags);
    int next = answers.front();
    answers.pop_front();
    return next;
  }

  bool OfferReadOnly(std::string_view path) override {
    dialogs.push_back("read-only:" + std::string(path));
    if (readOnlyAnswers.empty()) return false;
    bool next = readOnlyAnswers.front();
    readOnlyAnswers.pop_front();
    return next;
  }

  bool ChooseOpenFile(OpenFileChoice& choice) override {
    dialogs.push_back("open:" + choice.path + ":" + std::to_string(int(choice.filter)));
    if (openChoices.empty()) return false;
    choice = openChoices.front();
    openChoices.pop_front();
    return true;
  }

  bool ChooseSaveFile(SaveFileChoice& choice) override {
    dialogs.push_back("save-as:" + choice.path + ":" + std::to_string(int(choice.filter)));
    if (saveChoices.empty()) return false;
    choice = saveChoices.front();
    saveChoices.pop_front();
    return true;
  }

  bool NewDatabaseWizard(NewDatabaseAnswers& answers) override {
    dialogs.push_back("wizard");
    if (wizards.empty()) return false;
    answers = wizards.front();
    wizards.pop_front();
    return true;
  }

  // Answers from `passwordChoices`, with `typedPassword` as the password typed.
  PasswordChoice AskOpenPassword(std::string_view path, bool readOnlyOffered,
                                 Password& password) override {
    dialogs.push_back("password:" + std::string(path) + (readOnlyOffered ? ":read-only" : ""));
    if (passwordChoices.empty()) return PasswordChoice::kCancel;
    PasswordChoice next = passwordChoices.front();
    passwordChoices.pop_front();
    password.Set(typedPassword);
    return next;
  }

  // Ticks "&Password protection with" and types `typedPassword` in both boxes, or cancels.
  bool ProtectionDialog(ProtectionAnswers& answers) override {
    dialogs.push_back("protection");
    if (protectionAnswers.empty()) return false;
    answers.protect = protectionAnswers.front() != 0;
    answers.allowReadOnly = protectionAnswers.front() == 1;
    protectionAnswers.pop_front();
    answers.password.Set(typedPassword);
    answers.confirmation.Set(typedPassword);
    return true;
  }

  std::vector<Box> boxes;
  std::deque<int> answers;
  // The dialogs shown, in order, and their scripted answers; an empty script cancels.
  std::vector<std::string> dialogs;
  std::deque<bool> readOnlyAnswers;
  std::deque<OpenFileChoice> openChoices;
  std::deque<SaveFileChoice> saveChoices;
  std::deque<NewDatabaseAnswers> wizards;
  std::deque<PasswordChoice> passwordChoices;
  std::deque<int> protectionAnswers;  // the protection mode chosen: 0, 1 or 2
  std::string typedPassword;
};

// Makes a prompter the active one for a scope.
class ScopedPrompter {
 public:
  explicit ScopedPrompter(Prompter& prompter) : previous_(SetActivePrompter(&prompter)) {}
  ~ScopedPrompter() { SetActivePrompter(previous_); }
  ScopedPrompter(const ScopedPrompter&) = delete;
  ScopedPrompter& operator=(const ScopedPrompter&) = delete;

 private:
  Prompter* previous_;
};

}  // namespace kelpdex::testing
