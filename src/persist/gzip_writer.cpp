#include "persist/gzip_writer.h"

#include <libdeflate.h>

#include <cstring>
#include <new>
#include <utility>

#include "persist/gzip_member.h"
#include "persist/raw_file.h"

namespace kelpdex {

GzipWriter::GzipWriter(int fd, DeflateFor use)
    : fd_(fd), use_(use), work_(kSlots, [this](uint64_t sequence, int worker) {
        Compress(At(sequence), deflaters_[worker]);
      }) {}

bool GzipWriter::Put(std::unique_ptr<uint8_t[]>& piece, size_t capacity, size_t size, bool last) {
  if (capacity > gzip::kMaxPiece) failed_ = true;
  while (!failed_ && work_.full()) WriteHead();
  if (failed_) return false;
  Slot& slot = At(work_.tail());  // free: only this thread touches it
  // The slot's buffer from an earlier piece goes back to be filled next.
  if (slot.input == nullptr) slot.input.reset(new (std::nothrow) uint8_t[capacity]);
  if (slot.input == nullptr) {
    failed_ = true;
    return false;
  }
  std::swap(slot.input, piece);
  slot.size = size;
  slot.last = last;
  work_.Push();
  return true;
}

bool GzipWriter::Finish() {
  while (!failed_ && !work_.empty()) WriteHead();
  return !failed_;
}

bool GzipWriter::WriteHead() {
  work_.AwaitHead();
  // A finished piece is the caller's alone, so it is written without holding the ring.
  Slot& oldest = At(work_.head());
  bool written = oldest.outputSize > 0 && WriteRaw(fd_, oldest.output.get(), oldest.outputSize);
  work_.Pop();
  if (!written) failed_ = true;
  return written;
}

void GzipWriter::Compress(Slot& slot, std::unique_ptr<Deflater>& deflater) {
  slot.outputSize = 0;
  if (deflater == nullptr) deflater.reset(new (std::nothrow) Deflater(use_));
  size_t bound = gzip::kHeaderSize + Deflater::Bound(slot.size) + gzip::kTrailerSize;
  if (slot.outputCapacity < bound) {
    slot.output.reset(new (std::nothrow) uint8_t[bound]);
    slot.outputCapacity = slot.output != nullptr ? bound : 0;
  }
  if (deflater == nullptr || slot.output == nullptr) return;
  uint8_t* out = slot.output.get();
  size_t body;
  if (slot.size == 0) {
    // An empty final block with the fixed codes.
    out[gzip::kHeaderSize] = 0x03;
    out[gzip::kHeaderSize + 1] = 0x00;
    body = 2;
  } else {
    body = deflater->Compress(slot.input.get(), slot.size, out + gzip::kHeaderSize,
                              bound - gzip::kHeaderSize - gzip::kTrailerSize);
    if (body == 0) return;
  }
  size_t total = gzip::kHeaderSize + body + gzip::kTrailerSize;
  const uint8_t header[gzip::kHeaderSize] = {gzip::kId1,
                                             gzip::kId2,
                                             gzip::kDeflate,
                                             gzip::kFlagExtra,
                                             0,
                                             0,
                                             0,
                                             0,
                                             0,
                                             gzip::kOsUnknown,
                                             gzip::kExtraSize & 0xff,
                                             gzip::kExtraSize >> 8,
                                             gzip::kSubfield1,
                                             gzip::kSubfield2,
                                             gzip::kSubfieldSize & 0xff,
                                             gzip::kSubfieldSize >> 8};
  std::memcpy(out, header, sizeof header);
  gzip::PutU32(out + gzip::kSizeAt, static_cast<uint32_t>(total));
  out[gzip::kMemberFlagsAt] = slot.last ? gzip::kLastMember : 0;
  uint8_t* trailer = out + gzip::kHeaderSize + body;
  gzip::PutU32(trailer, libdeflate_crc32(0, slot.input.get(), slot.size));
  gzip::PutU32(trailer + 4, static_cast<uint32_t>(slot.size));
  slot.outputSize = total;
}

}  // namespace kelpdex
