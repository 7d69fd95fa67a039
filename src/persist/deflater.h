// Raw deflate of one gzip member's bytes, with the compressor that suits what they are.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>

struct libdeflate_compressor;

namespace kelpdex {

enum class DeflateFor : uint8_t {
  // Text needs libdeflate's deeper search (level 5) to come out within a few percent of what
  // gzip -6 makes of it.
  kText,
  // Packed records: ISA-L's level 2 makes them as small as gzip -6 does at twice the speed of
  // libdeflate's fastest level, which is what keeps a gzipped save close to a plain one.
  kRecords,
};

class Deflater {
 public:
  explicit Deflater(DeflateFor use) : use_(use) {}
  ~Deflater();
  Deflater(const Deflater&) = delete;
  Deflater& operator=(const Deflater&) = delete;

  // Room enough for the deflated form of `size` bytes, whichever compressor makes it.
  static size_t Bound(size_t size);
  // Deflates `size` bytes into `out` (Bound(size) bytes) as one final block sequence: the
  // deflated size, 0 when memory ran out.
  size_t Compress(const uint8_t* in, size_t size, uint8_t* out, size_t room);

 private:
  size_t CompressWithLibdeflate(int level, const uint8_t* in, size_t size, uint8_t* out,
                                size_t room);

  DeflateFor use_;
  int libdeflateLevel_ = 0;
  libdeflate_compressor* libdeflate_ = nullptr;
  std::unique_ptr<uint8_t[]> isalLevelBuffer_;
};

}  // namespace kelpdex
