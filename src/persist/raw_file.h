// The descriptor-level reads and writes under the file stream and its gzip layer.
#pragma once

#include <cstddef>
#include <cstdint>

// The descriptor calls by their names on each system, for the files of this layer.
#ifdef _WIN32
#include <fcntl.h>
#include <io.h>
#define KELPDEX_OPEN ::_open
#define KELPDEX_CLOSE ::_close
#define KELPDEX_SEEK ::_lseeki64
#define KELPDEX_SYNC ::_commit
#define KELPDEX_CUT(fd, size) ::_chsize_s(fd, size)
#else
#include <sys/types.h>
#include <unistd.h>
#define KELPDEX_OPEN ::open
#define KELPDEX_CLOSE ::close
#define KELPDEX_SEEK ::lseek
#define KELPDEX_SYNC ::fsync
#define KELPDEX_CUT(fd, size) ::ftruncate(fd, static_cast<off_t>(size))
#endif

namespace kelpdex {

#ifdef _WIN32
constexpr int kBinaryFlag = _O_BINARY;
#else
constexpr int kBinaryFlag = 0;
#endif

// Up to `size` bytes; 0 at the end of the file, -1 on an error. An interrupted call is retried.
long ReadRaw(int fd, uint8_t* out, size_t size);
// All `size` bytes, going on after a partial write or an interrupted call. False on an error.
bool WriteRaw(int fd, const uint8_t* data, size_t size);
// Sets the disk to work on what has been written so far, without waiting, so that the sync at
// the end of a large file finds little left to do. Nothing where the system has no such call.
void StartWriteback(int fd);

}  // namespace kelpdex
