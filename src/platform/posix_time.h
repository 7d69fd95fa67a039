// The broken-down local time of the POSIX calls as Kelpdex's LocalTime; for the *_posix.cpp files.
#pragma once

#include <time.h>

#include "platform/os.h"

namespace kelpdex::platform {

// False when the system cannot convert the moment. A leap second is shown as the last ordinary
// one, as SYSTEMTIME has no 60.
inline bool LocalTimeOf(time_t seconds, LocalTime& at) {
  struct tm parts {};
  if (localtime_r(&seconds, &parts) == nullptr) return false;
  at = LocalTime();
  at.year = parts.tm_year + 1900;
  at.month = parts.tm_mon + 1;
  at.dayOfWeek = parts.tm_wday;
  at.day = parts.tm_mday;
  at.hour = parts.tm_hour;
  at.minute = parts.tm_min;
  at.second = parts.tm_sec > 59 ? 59 : parts.tm_sec;
  return true;
}

}  // namespace kelpdex::platform
