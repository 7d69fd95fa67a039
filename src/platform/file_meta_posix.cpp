#include <sys/stat.h>
#include <time.h>
#include <unistd.h>

#include "platform/file_meta.h"

namespace kelpdex::platform {

bool LinkFile(const std::string& from, const std::string& to) {
  return ::link(from.c_str(), to.c_str()) == 0;
}

bool FileModifiedTime(const std::string& path, LocalTime& at) {
  struct stat info {};
  struct tm local {};
  if (::stat(path.c_str(), &info) != 0 || localtime_r(&info.st_mtime, &local) == nullptr) {
    return false;
  }
  at = LocalTime();
  at.year = local.tm_year + 1900;
  at.month = local.tm_mon + 1;
  at.dayOfWeek = local.tm_wday;
  at.day = local.tm_mday;
  at.hour = local.tm_hour;
  at.minute = local.tm_min;
  at.second = local.tm_sec;
  return true;
}

}  // namespace kelpdex::platform
