// The gzip members Kelpdex writes. Each is an ordinary member (any gzip reader takes a file of
// them as one stream) whose header carries one extra subfield, "Kp": the member's whole size, so
// that a reader can take the member in one piece, and a flag on the member that ends a save, so
// that a file cut between two members is still seen to be cut.
#pragma once

#include <cstddef>
#include <cstdint>

namespace kelpdex::gzip {

constexpr uint8_t kId1 = 0x1f;
constexpr uint8_t kId2 = 0x8b;
constexpr uint8_t kDeflate = 8;
constexpr uint8_t kFlagExtra = 0x04;
constexpr uint8_t kOsUnknown = 255;

// Header: ids, method, flags, mtime (4), xfl, os, xlen (2), then the subfield: "Kp", length (2),
// the member's size (4) and the member flags (1).
constexpr size_t kHeaderSize = 21;
constexpr uint16_t kExtraSize = 9;
constexpr uint8_t kSubfield1 = 'K';
constexpr uint8_t kSubfield2 = 'p';
constexpr uint16_t kSubfieldSize = 5;
constexpr size_t kSizeAt = 16;
constexpr size_t kMemberFlagsAt = 20;
constexpr uint8_t kLastMember = 0x01;  // the save's bytes end with this member
// Trailer: CRC-32 and size of the member's bytes, both mod 2^32.
constexpr size_t kTrailerSize = 8;

// A member's bytes are one piece of the writer, never more than this. The reader refuses a
// header that claims more, so a damaged size cannot make it allocate without bound.
constexpr size_t kMaxPiece = size_t{16} << 20;

inline void PutU16(uint8_t* at, uint32_t v) {
  at[0] = static_cast<uint8_t>(v);
  at[1] = static_cast<uint8_t>(v >> 8);
}
inline void PutU32(uint8_t* at, uint32_t v) {
  PutU16(at, v);
  PutU16(at + 2, v >> 16);
}
inline uint32_t GetU16(const uint8_t* at) {
  return static_cast<uint32_t>(at[0] | at[1] << 8);
}
inline uint32_t GetU32(const uint8_t* at) {
  return GetU16(at) | GetU16(at + 2) << 16;
}

}  // namespace kelpdex::gzip
