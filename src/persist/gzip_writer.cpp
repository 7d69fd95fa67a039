#include "persist/gzip_writer.h"

#include <libdeflate.h>

#include <cstring>
#include <new>
#include <system_error>
#include <utility>

#include "persist/gzip_member.h"
#include "persist/raw_file.h"

namespace kelpdex {

GzipWriter::GzipWriter(int fd, int level) : fd_(fd), level_(level) {}

GzipWriter::~GzipWriter() {
  {
    std::lock_guard<std::mutex> lock(mutex_);
    stop_ = true;
  }
  changed_.notify_all();
  if (helper_.joinable()) helper_.join();
  libdeflate_free_compressor(compressor_);
}

bool GzipWriter::Put(std::unique_ptr<uint8_t[]>& piece, size_t capacity, size_t size, bool last) {
  if (capacity > gzip::kMaxPiece) failed_ = true;
  std::unique_lock<std::mutex> lock(mutex_);
  while (!failed_ && tail_ - head_ == kSlots) Step(lock);
  if (failed_) return false;
  Slot& slot = At(tail_);
  // The slot's buffer from an earlier piece goes back to be filled next.
  if (slot.input == nullptr) slot.input.reset(new (std::nothrow) uint8_t[capacity]);
  if (slot.input == nullptr) {
    failed_ = true;
    return false;
  }
  std::swap(slot.input, piece);
  slot.size = size;
  slot.last = last;
  slot.state = State::kQueued;
  ++tail_;
  lock.unlock();
  changed_.notify_all();
  if (!helperTried_) StartHelper();
  return true;
}

bool GzipWriter::Finish() {
  std::unique_lock<std::mutex> lock(mutex_);
  while (!failed_ && head_ != tail_) Step(lock);
  return !failed_;
}

bool GzipWriter::Step(std::unique_lock<std::mutex>& lock) {
  Slot& oldest = At(head_);
  if (oldest.state == State::kDone) {
    // The helper never touches a finished slot, so it is written without the lock.
    lock.unlock();
    bool written = oldest.outputSize > 0 && WriteRaw(fd_, oldest.output.get(), oldest.outputSize);
    lock.lock();
    oldest.state = State::kFree;
    ++head_;
    if (!written) failed_ = true;
    return written;
  }
  for (uint64_t s = head_; s != tail_; ++s) {
    Slot& slot = At(s);
    if (slot.state != State::kQueued) continue;
    slot.state = State::kBusy;
    lock.unlock();
    Compress(slot, compressor_);
    lock.lock();
    slot.state = State::kDone;
    return true;
  }
  changed_.wait(lock, [&] { return oldest.state == State::kDone; });
  return true;
}

bool GzipWriter::Compress(Slot& slot, libdeflate_compressor*& compressor) {
  slot.outputSize = 0;
  if (compressor == nullptr) compressor = libdeflate_alloc_compressor(level_);
  size_t bound = gzip::kHeaderSize + libdeflate_deflate_compress_bound(nullptr, slot.size) +
                 gzip::kTrailerSize;
  if (slot.outputCapacity < bound) {
    slot.output.reset(new (std::nothrow) uint8_t[bound]);
    slot.outputCapacity = slot.output != nullptr ? bound : 0;
  }
  if (compressor == nullptr || slot.output == nullptr) return false;
  uint8_t* out = slot.output.get();
  size_t body;
  if (slot.size == 0) {
    // An empty final block with the fixed codes.
    out[gzip::kHeaderSize] = 0x03;
    out[gzip::kHeaderSize + 1] = 0x00;
    body = 2;
  } else {
    body = libdeflate_deflate_compress(compressor, slot.input.get(), slot.size,
                                       out + gzip::kHeaderSize, bound - gzip::kHeaderSize);
    if (body == 0) return false;
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
  return true;
}

void GzipWriter::StartHelper() {
  helperTried_ = true;
  // On one core a helper would only take turns with the caller.
  if (std::thread::hardware_concurrency() < 2) return;
  try {
    helper_ = std::thread(&GzipWriter::RunHelper, this);
  } catch (const std::system_error&) {
    // No thread to be had: the caller compresses every piece itself.
  }
}

void GzipWriter::RunHelper() {
  libdeflate_compressor* compressor = nullptr;
  std::unique_lock<std::mutex> lock(mutex_);
  while (!stop_) {
    Slot* taken = nullptr;
    for (uint64_t s = head_; s != tail_ && taken == nullptr; ++s) {
      if (At(s).state == State::kQueued) taken = &At(s);
    }
    if (taken == nullptr) {
      changed_.wait(lock);
      continue;
    }
    taken->state = State::kBusy;
    lock.unlock();
    Compress(*taken, compressor);
    lock.lock();
    taken->state = State::kDone;
    changed_.notify_all();
  }
  lock.unlock();
  libdeflate_free_compressor(compressor);
}

}  // namespace kelpdex
