// gzip streams made in the test itself: Kelpdex's own through the file stream, and other
// writers' through zlib, with and without a file name in the header.
#pragma once

#include <zlib.h>

#include <string>

#include "persist/file_stream.h"

namespace kelpdex::testing {

// Bytes that compress but do not repeat within a small buffer.
inline std::string PatternBytes(size_t size) {
  std::string data(size, '\0');
  uint32_t x = 12345;
  for (size_t i = 0; i < size; ++i) {
    x = x * 1103515245u + 12345u;
    data[i] = static_cast<char>('a' + (x >> 16) % 11);
  }
  return data;
}

// Through the file stream with gzip, a member for every `bufferSize` bytes.
inline bool WriteOwnGzip(const std::string& path, const std::string& bytes,
                         size_t bufferSize = 4096) {
  FileStream out;
  return out.Open(path, StreamMode::kWrite, true, bufferSize) &&
         out.Write(bytes.data(), bytes.size()) && out.Close();
}

// One gzip member as zlib writes it, `name` in its header when not empty.
inline std::string ZlibMember(const std::string& bytes, const char* name = "") {
  z_stream z{};
  deflateInit2(&z, 6, Z_DEFLATED, 16 + MAX_WBITS, 8, Z_DEFAULT_STRATEGY);
  gz_header header{};
  header.name = reinterpret_cast<Bytef*>(const_cast<char*>(name));
  if (*name != '\0') deflateSetHeader(&z, &header);
  std::string out(deflateBound(&z, bytes.size()) + 64, '\0');
  z.next_in = reinterpret_cast<Bytef*>(const_cast<char*>(bytes.data()));
  z.avail_in = static_cast<uInt>(bytes.size());
  z.next_out = reinterpret_cast<Bytef*>(out.data());
  z.avail_out = static_cast<uInt>(out.size());
  deflate(&z, Z_FINISH);
  out.resize(z.total_out);
  deflateEnd(&z);
  return out;
}

// Everything a stream opened with gzip gives, and its error.
inline std::string ReadThroughStream(const std::string& path, ErrorCode& error,
                                     size_t bufferSize = 4096) {
  FileStream in;
  std::string back;
  if (in.Open(path, StreamMode::kRead, true, bufferSize)) {
    char piece[1000];
    size_t n;
    while ((n = in.ReadSome(piece, sizeof piece)) > 0) back.append(piece, n);
  }
  error = in.error();
  return back;
}

}  // namespace kelpdex::testing
