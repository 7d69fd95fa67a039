#include "core/server_module.h"

#include <chrono>

namespace kelpdex {

ServerModule::ServerModule(int timeOutMs, int pauseMs) : timeOutMs_(timeOutMs), pauseMs_(pauseMs) {}

ServerModule::~ServerModule() {
  Terminate();
}

void ServerModule::StartMonitor() {
  if (!monitor_.joinable()) monitor_ = std::thread(&ServerModule::Monitor, this);
}

long ServerModule::Lock() {
  std::lock_guard<std::mutex> hold(mutex_);
  activity_ = true;
  return ++lockCount_;
}

long ServerModule::Unlock() {
  std::lock_guard<std::mutex> hold(mutex_);
  activity_ = true;
  long count = --lockCount_;
  if (count == 0) {
    shutdownEvent_ = true;
    eventChanged_.notify_all();
  }
  return count;
}

void ServerModule::NoteActivity() {
  std::lock_guard<std::mutex> hold(mutex_);
  activity_ = true;
}

void ServerModule::SetShutdownEvent() {
  std::lock_guard<std::mutex> hold(mutex_);
  shutdownEvent_ = true;
  eventChanged_.notify_all();
}

void ServerModule::Monitor() {
  std::unique_lock<std::mutex> hold(mutex_);
  for (;;) {
    eventChanged_.wait(hold, [this] { return shutdownEvent_ || terminating_; });
    if (terminating_) return;
    shutdownEvent_ = false;
    // Every new signal restarts the time-out; the process may end only after a quiet one.
    bool signalled;
    do {
      activity_ = false;
      signalled = eventChanged_.wait_for(hold, std::chrono::milliseconds(timeOutMs_),
                                         [this] { return shutdownEvent_ || terminating_; });
      if (terminating_) return;
      if (signalled) shutdownEvent_ = false;
    } while (signalled);
    if (!activity_ && lockCount_ == 0) break;
  }
  quitPosted_ = true;
  quitCode_ = 0;
  quitChanged_.notify_all();
}

int ServerModule::RunUntilQuit() {
  std::unique_lock<std::mutex> hold(mutex_);
  quitChanged_.wait(hold, [this] { return quitPosted_; });
  quitPosted_ = false;
  return quitCode_;
}

void ServerModule::PostQuit(int exitCode) {
  std::lock_guard<std::mutex> hold(mutex_);
  quitPosted_ = true;
  quitCode_ = exitCode;
  quitChanged_.notify_all();
}

void ServerModule::Terminate() {
  {
    std::lock_guard<std::mutex> hold(mutex_);
    terminating_ = true;
    eventChanged_.notify_all();
  }
  if (monitor_.joinable()) monitor_.join();
}

}  // namespace kelpdex
