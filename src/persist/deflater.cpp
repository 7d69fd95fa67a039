#include "persist/deflater.h"

#include <isa-l/igzip_lib.h>
#include <libdeflate.h>

#include <new>

namespace kelpdex {

namespace {
constexpr int kTextLevel = 5;
constexpr int kIsalRecordsLevel = 2;
constexpr size_t kIsalLevelBufferSize = ISAL_DEF_LVL2_DEFAULT;
// Only when ISA-L cannot (it has no room to spare for data that does not compress).
constexpr int kRecordsFallbackLevel = 1;
}  // namespace

Deflater::~Deflater() {
  libdeflate_free_compressor(libdeflate_);
}

size_t Deflater::Bound(size_t size) {
  // libdeflate's bound leaves room for stored blocks, which is all ISA-L ever needs beyond the
  // input; ISA-L's header may still need more on tiny inputs.
  size_t bound = libdeflate_deflate_compress_bound(nullptr, size);
  return bound > size + ISAL_DEF_MAX_HDR_SIZE ? bound : size + ISAL_DEF_MAX_HDR_SIZE;
}

size_t Deflater::CompressWithLibdeflate(int level, const uint8_t* in, size_t size, uint8_t* out,
                                        size_t room) {
  if (libdeflate_ == nullptr || libdeflateLevel_ != level) {
    libdeflate_free_compressor(libdeflate_);
    libdeflate_ = libdeflate_alloc_compressor(level);
    libdeflateLevel_ = level;
  }
  if (libdeflate_ == nullptr) return 0;
  return libdeflate_deflate_compress(libdeflate_, in, size, out, room);
}

size_t Deflater::Compress(const uint8_t* in, size_t size, uint8_t* out, size_t room) {
  if (use_ == DeflateFor::kText) return CompressWithLibdeflate(kTextLevel, in, size, out, room);
  if (isalLevelBuffer_ == nullptr) {
    isalLevelBuffer_.reset(new (std::nothrow) uint8_t[kIsalLevelBufferSize]);
    if (isalLevelBuffer_ == nullptr) return 0;
  }
  isal_zstream z;
  isal_deflate_stateless_init(&z);
  z.level = kIsalRecordsLevel;
  z.level_buf = isalLevelBuffer_.get();
  z.level_buf_size = kIsalLevelBufferSize;
  z.next_in = const_cast<uint8_t*>(in);  // ISA-L's interface is not const, but only reads it
  z.avail_in = static_cast<uint32_t>(size);
  z.next_out = out;
  z.avail_out = static_cast<uint32_t>(room);
  z.end_of_stream = 1;
  z.flush = NO_FLUSH;
  if (isal_deflate_stateless(&z) == COMP_OK) return z.total_out;
  return CompressWithLibdeflate(kRecordsFallbackLevel, in, size, out, room);
}

}  // namespace kelpdex
