#include "persist/gzip_reader.h"

#include <libdeflate.h>
#include <zlib.h>

#include <algorithm>
#include <climits>
#include <cstring>
#include <new>
#include <system_error>

#include "persist/gzip_member.h"
#include "persist/raw_file.h"

namespace kelpdex {

namespace {

// Holds a whole member of Kelpdex's with room to spare, so most members need no move.
constexpr size_t kInputSize = size_t{1} << 20;
// A chunk of inflated bytes holds at least one whole member of the usual size.
constexpr size_t kChunkSize = size_t{1} << 20;

bool IsOwnHeader(const uint8_t* p) {
  return p[0] == gzip::kId1 && p[1] == gzip::kId2 && p[2] == gzip::kDeflate &&
         p[3] == gzip::kFlagExtra && gzip::GetU16(p + 10) == gzip::kExtraSize &&
         p[12] == gzip::kSubfield1 && p[13] == gzip::kSubfield2 &&
         gzip::GetU16(p + 14) == gzip::kSubfieldSize;
}

}  // namespace

struct GzipReader::Inflater {
  z_stream z{};
  bool started = false;
  ~Inflater() {
    if (started) inflateEnd(&z);
  }
};

GzipReader::GzipReader(int fd) : fd_(fd) {}

GzipReader::~GzipReader() {
  StopHelper();
  libdeflate_free_decompressor(decompressor_);
}

void GzipReader::Reset() {
  StopHelper();
  reads_ = 0;
  helperTried_ = false;
  state_ = State::kStart;
  compressed_ = false;
  ended_ = true;
  endOfFile_ = false;
  consumed_ = 0;
  position_ = fill_ = 0;
  stagedAt_ = stagedEnd_ = 0;
}

long GzipReader::Fail() {
  state_ = State::kFailed;
  return -1;
}

bool GzipReader::Buffer(size_t count) {
  if (buffered() >= count || endOfFile_) return true;
  if (position_ > 0) {
    std::memmove(in_.data(), in_.data() + position_, buffered());
    fill_ -= position_;
    position_ = 0;
  }
  if (in_.size() < std::max(count, kInputSize)) in_.resize(std::max(count, kInputSize));
  while (fill_ < count) {
    long n = ReadRaw(fd_, in_.data() + fill_, in_.size() - fill_);
    if (n < 0) return false;
    if (n == 0) {
      endOfFile_ = true;
      break;
    }
    fill_ += static_cast<size_t>(n);
    consumed_ += static_cast<uint64_t>(n);
  }
  return true;
}

long GzipReader::Read(uint8_t* out, size_t room) {
  if (room == 0) return 0;
  // The first read, which detection often stops at, and plain files need no helper.
  if (++reads_ > 1 && !helperTried_ && compressed_ && state_ != State::kFailed &&
      state_ != State::kEnd) {
    StartHelper();
  }
  return helperRunning_ ? ReadAhead(out, room) : Decode(out, room);
}

long GzipReader::ReadAhead(uint8_t* out, size_t room) {
  std::unique_lock<std::mutex> lock(mutex_);
  if (helperDone_) return aheadFailed_ ? -1 : 0;
  Chunk& chunk = chunks_[head_];
  changed_.wait(lock, [&] { return chunk.filled; });
  if (chunk.failed) {
    helperDone_ = aheadFailed_ = true;
    return -1;
  }
  size_t n = std::min(room, chunk.size - chunk.at);
  std::memcpy(out, chunk.bytes.get() + chunk.at, n);
  chunk.at += n;
  if (chunk.at == chunk.size) {
    helperDone_ = chunk.last;
    chunk.filled = false;
    head_ = (head_ + 1) % kChunks;
    lock.unlock();
    changed_.notify_all();
  }
  return static_cast<long>(n);
}

void GzipReader::StartHelper() {
  helperTried_ = true;
  if (std::thread::hardware_concurrency() < 2) return;
  for (Chunk& chunk : chunks_) {
    if (chunk.bytes == nullptr) chunk.bytes.reset(new (std::nothrow) uint8_t[kChunkSize]);
    if (chunk.bytes == nullptr) return;
    chunk.filled = false;
  }
  head_ = 0;
  stop_ = false;
  helperDone_ = aheadFailed_ = false;
  try {
    helper_ = std::thread(&GzipReader::RunHelper, this);
    helperRunning_ = true;
  } catch (const std::system_error&) {
    // No thread to be had: the caller inflates as it reads.
  }
}

void GzipReader::StopHelper() {
  if (!helperRunning_) return;
  {
    std::lock_guard<std::mutex> lock(mutex_);
    stop_ = true;
  }
  changed_.notify_all();
  helper_.join();
  helperRunning_ = false;
}

void GzipReader::RunHelper() {
  size_t next = 0;
  for (;;) {
    Chunk& chunk = chunks_[next];
    {
      std::unique_lock<std::mutex> lock(mutex_);
      changed_.wait(lock, [&] { return stop_ || !chunk.filled; });
      if (stop_) return;
    }
    // The chunk is the helper's until it is marked filled.
    size_t size = 0;
    long n = 0;
    while (size < kChunkSize / 2) {
      n = Decode(chunk.bytes.get() + size, kChunkSize - size);
      if (n <= 0) break;
      size += static_cast<size_t>(n);
    }
    {
      std::lock_guard<std::mutex> lock(mutex_);
      chunk.size = size;
      chunk.at = 0;
      chunk.failed = n < 0;
      chunk.last = n <= 0;
      chunk.filled = true;
    }
    changed_.notify_all();
    if (n <= 0) return;
    next = (next + 1) % kChunks;
  }
}

long GzipReader::Decode(uint8_t* out, size_t room) {
  if (room == 0) return 0;
  for (;;) {
    switch (state_) {
      case State::kFailed:
        return -1;
      case State::kEnd:
        return 0;
      case State::kStart:
        if (!Buffer(2)) return Fail();
        compressed_ =
            buffered() >= 2 && in_[position_] == gzip::kId1 && in_[position_ + 1] == gzip::kId2;
        state_ = compressed_ ? State::kMember : State::kPlain;
        break;
      case State::kPlain: {
        if (buffered() > 0) {
          size_t n = std::min(room, buffered());
          std::memcpy(out, in_.data() + position_, n);
          position_ += n;
          return static_cast<long>(n);
        }
        long n = ReadRaw(fd_, out, room);
        if (n < 0) return Fail();
        consumed_ += static_cast<uint64_t>(n);
        return n;
      }
      case State::kMember:
        if (!Buffer(gzip::kHeaderSize)) return Fail();
        if (buffered() == 0) {
          // A file of Kelpdex's members that stops before the one closing the save was cut.
          if (!ended_) return Fail();
          state_ = State::kEnd;
          return 0;
        }
        if (buffered() >= gzip::kHeaderSize && IsOwnHeader(in_.data() + position_)) {
          long n = ReadOwnMember(out, room);
          if (n != 0) return n;
          break;
        }
        // Anything after a member but another member is damage, not padding to be skipped.
        if (buffered() < 2 || in_[position_] != gzip::kId1 || in_[position_ + 1] != gzip::kId2) {
          return Fail();
        }
        if (inflater_ == nullptr) inflater_ = std::make_unique<Inflater>();
        if (!inflater_->started) {
          if (inflateInit2(&inflater_->z, 16 + MAX_WBITS) != Z_OK) return Fail();
          inflater_->started = true;
        } else if (inflateReset(&inflater_->z) != Z_OK) {
          return Fail();
        }
        state_ = State::kForeign;
        break;
      case State::kForeign: {
        long n = Inflate(out, room);
        if (n != 0) return n;
        break;
      }
      case State::kStaged: {
        size_t n = std::min(room, stagedEnd_ - stagedAt_);
        std::memcpy(out, staged_.data() + stagedAt_, n);
        stagedAt_ += n;
        if (stagedAt_ == stagedEnd_) state_ = State::kMember;
        return static_cast<long>(n);
      }
    }
  }
}

long GzipReader::ReadOwnMember(uint8_t* out, size_t room) {
  static const size_t kMaxMember = gzip::kHeaderSize +
                                   libdeflate_deflate_compress_bound(nullptr, gzip::kMaxPiece) +
                                   gzip::kTrailerSize;
  const uint8_t* header = in_.data() + position_;
  size_t total = gzip::GetU32(header + gzip::kSizeAt);
  bool last = (header[gzip::kMemberFlagsAt] & gzip::kLastMember) != 0;
  if (total < gzip::kHeaderSize + 2 + gzip::kTrailerSize || total > kMaxMember) return Fail();
  if (!Buffer(total) || buffered() < total) return Fail();
  const uint8_t* member = in_.data() + position_;
  uint32_t crc = gzip::GetU32(member + total - gzip::kTrailerSize);
  size_t size = gzip::GetU32(member + total - 4);
  if (size > gzip::kMaxPiece) return Fail();
  // Straight into the caller's buffer when it has the room, else through the staging buffer.
  uint8_t* to = out;
  if (size > room) {
    if (staged_.size() < size) staged_.resize(size);
    to = staged_.data();
  }
  if (decompressor_ == nullptr) decompressor_ = libdeflate_alloc_decompressor();
  if (decompressor_ == nullptr) return Fail();
  size_t body = total - gzip::kHeaderSize - gzip::kTrailerSize;
  size_t used = 0;
  size_t made = 0;
  if (libdeflate_deflate_decompress_ex(decompressor_, member + gzip::kHeaderSize, body, to, size,
                                       &used, &made) != LIBDEFLATE_SUCCESS ||
      used != body || made != size || libdeflate_crc32(0, to, size) != crc) {
    return Fail();
  }
  position_ += total;
  ended_ = last;
  if (to == out) {
    state_ = State::kMember;
    return static_cast<long>(size);
  }
  stagedAt_ = 0;
  stagedEnd_ = size;
  state_ = State::kStaged;
  return 0;
}

long GzipReader::Inflate(uint8_t* out, size_t room) {
  z_stream& z = inflater_->z;
  room = std::min<size_t>(room, UINT_MAX);
  z.next_out = out;
  z.avail_out = static_cast<uInt>(room);
  for (;;) {
    if (buffered() == 0) {
      // The member's trailer has not come yet: the stream was cut.
      if (!Buffer(1) || buffered() == 0) return Fail();
    }
    z.next_in = in_.data() + position_;
    z.avail_in = static_cast<uInt>(std::min<size_t>(buffered(), UINT_MAX));
    int result = inflate(&z, Z_NO_FLUSH);
    position_ = static_cast<size_t>(z.next_in - in_.data());
    size_t made = room - z.avail_out;
    if (result == Z_STREAM_END) {
      ended_ = true;
      state_ = State::kMember;
      return static_cast<long>(made);
    }
    if (result != Z_OK && result != Z_BUF_ERROR) return Fail();
    if (z.avail_out == 0) return static_cast<long>(made);
    if (result == Z_BUF_ERROR && buffered() > 0) return Fail();  // no way forward
  }
}

}  // namespace kelpdex
