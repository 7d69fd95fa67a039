// The descriptor-level reads and writes under the file stream and its gzip layer.
#pragma once

#include <cstddef>
#include <cstdint>

namespace kelpdex {

// Up to `size` bytes; 0 at the end of the file, -1 on an error. An interrupted call is retried.
long ReadRaw(int fd, uint8_t* out, size_t size);
// All `size` bytes, going on after a partial write or an interrupted call. False on an error.
bool WriteRaw(int fd, const uint8_t* data, size_t size);

}  // namespace kelpdex
