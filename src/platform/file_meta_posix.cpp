#include <sys/stat.h>
#include <unistd.h>

#include "platform/file_meta.h"
#include "platform/posix_time.h"

namespace kelpdex::platform {

bool LinkFile(const std::string& from, const std::string& to) {
  return ::link(from.c_str(), to.c_str()) == 0;
}

bool FileModifiedTime(const std::string& path, LocalTime& at) {
  struct stat info {};
  return ::stat(path.c_str(), &info) == 0 && LocalTimeOf(info.st_mtime, at);
}

}  // namespace kelpdex::platform
