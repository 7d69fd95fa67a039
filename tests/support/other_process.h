// What another process sees of a file: tests of the lock that marks an open document as in use.
#pragma once

#ifndef _WIN32
#include <sys/wait.h>
#include <unistd.h>
#endif

#include <string>

#include "platform/os.h"

namespace kelpdex::testing {

// The lock result a second process gets on `path`, which it reports through its exit status.
inline platform::LockResult LockInOtherProcess(const std::string& path) {
#ifdef _WIN32
  // Share modes stand between handles, not processes: a second handle here meets what another
  // process's would.
  platform::FileLock lock;
  return lock.Acquire(path);
#else
  pid_t child = fork();
  if (child == 0) {
    platform::FileLock lock;
    _exit(static_cast<int>(lock.Acquire(path)));
  }
  int status = 0;
  waitpid(child, &status, 0);
  return static_cast<platform::LockResult>(WIFEXITED(status) ? WEXITSTATUS(status) : 99);
#endif
}

}  // namespace kelpdex::testing
