// Little-endian loads and stores for packed records and file fields. Written byte by byte so the
// layout is the same on every platform; compilers turn them into single moves.
#pragma once

#include <cstdint>
#include <cstring>

namespace kelpdex {

inline uint16_t LoadU16(const uint8_t* p) {
  return static_cast<uint16_t>(p[0] | (p[1] << 8));
}
inline uint32_t LoadU32(const uint8_t* p) {
  return static_cast<uint32_t>(p[0]) | (static_cast<uint32_t>(p[1]) << 8) |
         (static_cast<uint32_t>(p[2]) << 16) | (static_cast<uint32_t>(p[3]) << 24);
}
inline uint64_t LoadU64(const uint8_t* p) {
  return static_cast<uint64_t>(LoadU32(p)) | (static_cast<uint64_t>(LoadU32(p + 4)) << 32);
}
inline double LoadF64(const uint8_t* p) {
  uint64_t bits = LoadU64(p);
  double value;
  std::memcpy(&value, &bits, sizeof value);
  return value;
}

inline void StoreU16(uint8_t* p, uint16_t v) {
  p[0] = static_cast<uint8_t>(v);
  p[1] = static_cast<uint8_t>(v >> 8);
}
inline void StoreU32(uint8_t* p, uint32_t v) {
  p[0] = static_cast<uint8_t>(v);
  p[1] = static_cast<uint8_t>(v >> 8);
  p[2] = static_cast<uint8_t>(v >> 16);
  p[3] = static_cast<uint8_t>(v >> 24);
}
inline void StoreU64(uint8_t* p, uint64_t v) {
  StoreU32(p, static_cast<uint32_t>(v));
  StoreU32(p + 4, static_cast<uint32_t>(v >> 32));
}
inline void StoreF64(uint8_t* p, double value) {
  uint64_t bits;
  std::memcpy(&bits, &value, sizeof bits);
  StoreU64(p, bits);
}

}  // namespace kelpdex
