#include "persist/gzip_reader.h"

#include <isa-l/igzip_lib.h>
#include <zlib.h>

#include <algorithm>
#include <climits>
#include <cstring>
#include <new>

#include "persist/deflater.h"
#include "persist/gzip_member.h"
#include "persist/raw_file.h"

namespace kelpdex {

namespace {

// Holds a whole member of Kelpdex's with room to spare, so most members need no move.
constexpr size_t kInputSize = size_t{1} << 20;

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

GzipReader::GzipReader(int fd)
    : fd_(fd), work_(kSlots, [this](uint64_t sequence, int) {
        Slot& slot = At(sequence);
        slot.failed =
            !InflateMember(slot.member.data(), slot.member.size(), slot.bytes.get(), slot.size);
      }) {}

// The ring goes first of the members, which stops its helper before the slots go.
GzipReader::~GzipReader() = default;

void GzipReader::Reset() {
  work_.Reset();
  lending_ = false;
  reads_ = 0;
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

long GzipReader::Read(uint8_t* out, size_t room, const uint8_t** lent) {
  if (lending_) {
    work_.Pop();
    lending_ = false;
  }
  if (room == 0 || state_ == State::kFailed) return state_ == State::kFailed ? -1 : 0;
  // The first read, which detection often stops at, and small files need no queue.
  bool queued = ++reads_ > 1;
  for (;;) {
    if (queued && state_ == State::kMember) Queue();
    if (work_.empty()) return Decode(out, room);
    // An empty member (a flush makes one) gives nothing, which is not the end.
    long n = Deliver(out, room, lent);
    if (n != 0) return n;
  }
}

void GzipReader::Queue() {
  while (!work_.full()) {
    Slot& slot = At(work_.tail());  // free: only the caller touches it
    if (!Buffer(gzip::kHeaderSize) || buffered() < gzip::kHeaderSize ||
        !IsOwnHeader(in_.data() + position_)) {
      return;
    }
    size_t size = 0;
    size_t total = OwnMemberSize(size);
    if (total == 0 || !Buffer(total) || buffered() < total) return;
    if (OwnMemberSize(size) == 0) return;
    if (slot.capacity < size || slot.bytes == nullptr) {
      slot.bytes.reset(new (std::nothrow) uint8_t[std::max<size_t>(size, 1)]);
      slot.capacity = slot.bytes != nullptr ? size : 0;
      if (slot.bytes == nullptr) return;
    }
    ended_ = (in_[position_ + gzip::kMemberFlagsAt] & gzip::kLastMember) != 0;
    slot.member.assign(in_.data() + position_, in_.data() + position_ + total);
    position_ += total;
    slot.size = size;
    slot.at = 0;
    slot.failed = false;
    work_.Push();
  }
}

long GzipReader::Deliver(uint8_t* out, size_t room, const uint8_t** lent) {
  for (;;) {
    if (work_.HeadDone()) {
      // A finished member is the caller's alone until it is freed.
      Slot& head = At(work_.head());
      if (head.failed) return Fail();
      if (lent != nullptr && head.at == 0 && head.size > 0 && head.size <= room) {
        *lent = head.bytes.get();
        head.at = head.size;
        lending_ = true;
        return static_cast<long>(head.size);
      }
      size_t n = std::min(room, head.size - head.at);
      std::memcpy(out, head.bytes.get() + head.at, n);
      head.at += n;
      if (head.at == head.size) work_.Pop();
      return static_cast<long>(n);
    }
    // While the head is not ready the caller inflates too: the head itself, straight into the
    // caller's buffer when it fits and nothing can be lent, else the oldest member nobody has
    // taken.
    uint64_t sequence;
    if (!work_.Claim(sequence)) {
      work_.AwaitHead();
      continue;
    }
    Slot& taken = At(sequence);
    bool direct = sequence == work_.head() && room >= taken.size && lent == nullptr;
    taken.failed = !InflateMember(taken.member.data(), taken.member.size(),
                                  direct ? out : taken.bytes.get(), taken.size);
    work_.Done(sequence);
    if (direct && !taken.failed) {
      work_.Pop();
      return static_cast<long>(taken.size);
    }
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

size_t GzipReader::OwnMemberSize(size_t& size) const {
  static const size_t kMaxMember =
      gzip::kHeaderSize + Deflater::Bound(gzip::kMaxPiece) + gzip::kTrailerSize;
  size_t total = gzip::GetU32(in_.data() + position_ + gzip::kSizeAt);
  if (total < gzip::kHeaderSize + 2 + gzip::kTrailerSize || total > kMaxMember) return 0;
  // The trailer's size is read once the whole member is buffered.
  if (buffered() < total) return total;
  size = gzip::GetU32(in_.data() + position_ + total - 4);
  return size > gzip::kMaxPiece ? 0 : total;
}

bool GzipReader::InflateMember(const uint8_t* member, size_t total, uint8_t* to, size_t size) {
  // ISA-L inflates these members a fifth faster than libdeflate, and computes the CRC as it goes.
  uint32_t crc = gzip::GetU32(member + total - gzip::kTrailerSize);
  size_t body = total - gzip::kHeaderSize - gzip::kTrailerSize;
  inflate_state state;
  isal_inflate_init(&state);
  state.next_in = const_cast<uint8_t*>(member + gzip::kHeaderSize);
  state.avail_in = static_cast<uint32_t>(body);
  state.next_out = to;
  state.avail_out = static_cast<uint32_t>(size);
  state.crc_flag = ISAL_GZIP_NO_HDR;
  if (isal_inflate_stateless(&state) != ISAL_DECOMP_OK) return false;
  return state.avail_in == 0 && state.total_out == size && state.crc == crc;
}

long GzipReader::ReadOwnMember(uint8_t* out, size_t room) {
  size_t size = 0;
  size_t total = OwnMemberSize(size);
  if (total == 0 || !Buffer(total) || buffered() < total) return Fail();
  total = OwnMemberSize(size);
  if (total == 0) return Fail();
  bool last = (in_[position_ + gzip::kMemberFlagsAt] & gzip::kLastMember) != 0;
  // Straight into the caller's buffer when it has the room, else through the staging buffer.
  uint8_t* to = out;
  if (size > room) {
    if (staged_.size() < size) staged_.resize(size);
    to = staged_.data();
  }
  if (!InflateMember(in_.data() + position_, total, to, size)) return Fail();
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
