#include "views/frame/status_progress.h"

#include <QApplication>
#include <QProgressBar>
#include <QPushButton>
#include <QStatusBar>

namespace kelpdex::views {

StatusProgress::StatusProgress(QStatusBar* bar) {
  bar_ = new QProgressBar(bar);
  bar_->setObjectName("ProgressBar");
  bar_->setMaximumWidth(180);
  cancel_ = new QPushButton("Cancel", bar);
  cancel_->setObjectName("ProgressCancel");
  bar->addPermanentWidget(bar_);
  bar->addPermanentWidget(cancel_);
  bar_->hide();
  cancel_->hide();
  QObject::connect(cancel_, &QPushButton::clicked, [this] { cancelled_ = true; });
}

void StatusProgress::Begin() {
  if (depth_++ > 0) return;
  cancelled_ = false;
  previous_ = SetProgressSink(this);
  QApplication::setOverrideCursor(Qt::WaitCursor);
  sinceRepaint_.start();
}

void StatusProgress::End() {
  if (depth_ == 0 || --depth_ > 0) return;
  SetProgressSink(previous_);
  QApplication::restoreOverrideCursor();
  bar_->hide();
  cancel_->hide();
}

void StatusProgress::Progress(uint64_t done, uint64_t total) {
  // Reports come from hot loops; the window is brought up to date a few times a second.
  if (sinceRepaint_.isValid() && sinceRepaint_.elapsed() < 100) return;
  sinceRepaint_.restart();
  if (!bar_->isVisible()) {
    bar_->show();
    cancel_->show();
  }
  if (total == 0) {
    bar_->setRange(0, 0);
  } else {
    bar_->setRange(0, 1000);
    bar_->setValue(static_cast<int>(done * 1000 / total));
  }
  // Repaints and the Cancel click get through; the frame refuses commands while it is busy.
  QApplication::processEvents(QEventLoop::AllEvents, 20);
}

}  // namespace kelpdex::views
