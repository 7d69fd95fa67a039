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

  std::vector<Box> boxes;
  std::deque<int> answers;
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
