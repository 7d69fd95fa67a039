// The automation server state: a lock count, an activity flag and a monitor thread that ends a
// server-only process once it has been idle for a whole time-out.
#pragma once

#include <condition_variable>
#include <mutex>
#include <thread>

namespace kelpdex {

class ServerModule {
 public:
  ServerModule(int timeOutMs, int pauseMs);
  ~ServerModule();
  ServerModule(const ServerModule&) = delete;
  ServerModule& operator=(const ServerModule&) = delete;

  // Starts the monitor thread. It waits for the shutdown event, then keeps waiting for a time-out
  // at a time until one passes with no activity and no lock, and then asks the main loop to quit.
  void StartMonitor();
  long Lock();
  // Releasing the last lock sets the shutdown event.
  long Unlock();
  void NoteActivity();
  void SetShutdownEvent();

  // The bare loop of a process without a frame: blocks until the monitor asks to quit.
  int RunUntilQuit();
  // Asks the loop to quit, as the monitor does.
  void PostQuit(int exitCode);
  // Stops and joins the monitor thread.
  void Terminate();

  int pauseMs() const { return pauseMs_; }

 private:
  void Monitor();

  const int timeOutMs_;
  const int pauseMs_;
  std::mutex mutex_;
  std::condition_variable eventChanged_;
  std::condition_variable quitChanged_;
  bool shutdownEvent_ = false;  // auto-reset: a wait that sees it clears it
  bool activity_ = false;
  long lockCount_ = 0;
  bool terminating_ = false;
  bool quitPosted_ = false;
  int quitCode_ = 0;
  std::thread monitor_;
};

}  // namespace kelpdex
