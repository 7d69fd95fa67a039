#include "persist/raw_file.h"

#include <algorithm>
#include <cerrno>

#ifdef _WIN32
#include <io.h>
#define KELPDEX_READ ::_read
#define KELPDEX_WRITE ::_write
#else
#include <fcntl.h>
#include <unistd.h>
#define KELPDEX_READ ::read
#define KELPDEX_WRITE ::write
#endif

namespace kelpdex {

namespace {
// One call moves at most this much, which every system's count type can hold.
constexpr size_t kMaxCall = size_t{1} << 30;
}  // namespace

long ReadRaw(int fd, uint8_t* out, size_t size) {
  for (;;) {
    long n =
        static_cast<long>(KELPDEX_READ(fd, out, static_cast<unsigned>(std::min(size, kMaxCall))));
    if (n >= 0 || errno != EINTR) return n < 0 ? -1 : n;
  }
}

bool WriteRaw(int fd, const uint8_t* data, size_t size) {
  while (size > 0) {
    long n =
        static_cast<long>(KELPDEX_WRITE(fd, data, static_cast<unsigned>(std::min(size, kMaxCall))));
    if (n < 0 && errno == EINTR) continue;
    if (n <= 0) return false;
    data += n;
    size -= static_cast<size_t>(n);
  }
  return true;
}

void StartWriteback(int fd) {
#if defined(__linux__)
  // Only a start: the final sync still waits for every byte.
  ::sync_file_range(fd, 0, 0, SYNC_FILE_RANGE_WRITE);
#else
  (void)fd;
#endif
}

}  // namespace kelpdex
