// Long operations say how far they have come; the program decides whether and how to show it (a
// bar in the frame's status, a line on the terminal in kpx, nothing in tests).
#pragma once

#include <cstdint>

namespace kelpdex {

class ProgressSink {
 public:
  virtual ~ProgressSink() = default;
  // `total` 0 means the end is not known; `done` then counts what was done so far.
  virtual void Progress(uint64_t done, uint64_t total) = 0;
  // Asked between pieces of work that can stop cleanly (an import, an export): true ends the
  // operation as if the user had cancelled its dialog. A sink without a Cancel button never asks.
  virtual bool CancelRequested() { return false; }
};

// Sets the sink the operations report to (nullptr: none) and returns the previous one.
ProgressSink* SetProgressSink(ProgressSink* sink);

namespace detail {
extern ProgressSink* activeProgressSink;
}

// Cheap when nobody listens: the callers report from their hot loops, every block or so.
inline void ReportProgress(uint64_t done, uint64_t total) {
  if (detail::activeProgressSink != nullptr) detail::activeProgressSink->Progress(done, total);
}

// Whether the listening sink wants the running operation to stop.
inline bool ProgressCancelled() {
  return detail::activeProgressSink != nullptr && detail::activeProgressSink->CancelRequested();
}

}  // namespace kelpdex
