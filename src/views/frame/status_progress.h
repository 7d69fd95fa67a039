// Long work in the status bar: a progress bar and a Cancel button, a wait cursor, and the
// window kept repainting while the logic runs on the UI thread.
#pragma once

#include <QElapsedTimer>

#include "core/progress.h"

class QProgressBar;
class QPushButton;
class QStatusBar;

namespace kelpdex::views {

class StatusProgress : public ProgressSink {
 public:
  explicit StatusProgress(QStatusBar* bar);
  void Progress(uint64_t done, uint64_t total) override;
  bool CancelRequested() override { return cancelled_; }

  // One piece of long work: from Begin to End the sink is the active one.
  void Begin();
  void End();
  bool active() const { return depth_ > 0; }

 private:
  QProgressBar* bar_;
  QPushButton* cancel_;
  QElapsedTimer sinceRepaint_;
  ProgressSink* previous_ = nullptr;
  int depth_ = 0;
  bool cancelled_ = false;
};

// Scoped long work.
class LongWork {
 public:
  explicit LongWork(StatusProgress& progress) : progress_(progress) { progress_.Begin(); }
  ~LongWork() { progress_.End(); }
  LongWork(const LongWork&) = delete;
  LongWork& operator=(const LongWork&) = delete;

 private:
  StatusProgress& progress_;
};

}  // namespace kelpdex::views
