// A progress line on standard error for operations that run longer than a second, shown only
// when standard error is a terminal, so that scripts and logs never see it.
#pragma once

#include <chrono>
#include <cstdio>
#include <string>

#include "core/progress.h"

namespace kelpdex::kpx {

class TerminalProgress : public ProgressSink {
 public:
  TerminalProgress(FILE* err, std::string label);
  ~TerminalProgress() override;
  TerminalProgress(const TerminalProgress&) = delete;
  TerminalProgress& operator=(const TerminalProgress&) = delete;

  void Progress(uint64_t done, uint64_t total) override;

  // The line for a state: a percentage when the end is known, else the amount done.
  static std::string Line(const std::string& label, uint64_t done, uint64_t total);

 private:
  using Clock = std::chrono::steady_clock;
  FILE* err_;
  std::string label_;
  bool enabled_;
  bool shown_ = false;
  Clock::time_point start_;
  Clock::time_point lastShown_;
  ProgressSink* previous_;
};

}  // namespace kelpdex::kpx
