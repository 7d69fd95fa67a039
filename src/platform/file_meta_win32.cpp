#include <windows.h>

#include "platform/file_meta.h"

namespace kelpdex::platform {

bool LinkFile(const std::string& from, const std::string& to) {
  return ::CreateHardLinkA(to.c_str(), from.c_str(), nullptr) != FALSE;
}

bool FileModifiedTime(const std::string& path, LocalTime& at) {
  WIN32_FILE_ATTRIBUTE_DATA data;
  FILETIME local;
  SYSTEMTIME t;
  if (!::GetFileAttributesExA(path.c_str(), GetFileExInfoStandard, &data) ||
      !::FileTimeToLocalFileTime(&data.ftLastWriteTime, &local) ||
      !::FileTimeToSystemTime(&local, &t)) {
    return false;
  }
  at = LocalTime();
  at.year = t.wYear;
  at.month = t.wMonth;
  at.dayOfWeek = t.wDayOfWeek;
  at.day = t.wDay;
  at.hour = t.wHour;
  at.minute = t.wMinute;
  at.second = t.wSecond;
  at.milliseconds = t.wMilliseconds;
  return true;
}

}  // namespace kelpdex::platform
