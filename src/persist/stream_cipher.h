// The cipher a file stream runs its blocks through when a document is protected. The stream
// only knows this interface; the password protection supplies the cipher.
#pragma once

#include <cstddef>
#include <cstdint>

namespace kelpdex {

class StreamCipher {
 public:
  virtual ~StreamCipher() = default;
  // Enciphers or deciphers `data` in place, continuing the key stream. False when the cipher
  // failed.
  virtual bool Transform(uint8_t* data, size_t size) = 0;
};

}  // namespace kelpdex
