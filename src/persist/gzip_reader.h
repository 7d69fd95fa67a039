// gzip input that also passes a plain file through. Members Kelpdex wrote are taken whole and
// inflated by ISA-L, from the second read on two at a time: the caller queues each member
// in order, a helper thread and the caller inflate them, and the caller hands out their bytes in
// order. Members of other writers (gzip, Python, zlib, older Kelpdex files) stream through zlib
// on the caller's thread. A cut or damaged stream is always an error, never a short read.
#pragma once

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <vector>

#include "persist/ordered_work.h"

namespace kelpdex {

class GzipReader {
 public:
  // Reads `fd` from where it stands, which is the start of the file.
  explicit GzipReader(int fd);
  ~GzipReader();
  GzipReader(const GzipReader&) = delete;
  GzipReader& operator=(const GzipReader&) = delete;

  // Up to `room` bytes of the file's content: 0 at its end, -1 when the file cannot be read or
  // its gzip stream is damaged or cut short. Given `lent`, a whole inflated member that fits in
  // `room` may be lent instead of copied: `*lent` then points at the bytes, valid until the next
  // call.
  long Read(uint8_t* out, size_t room, const uint8_t** lent = nullptr);
  // Starts over; the caller has put the descriptor back to the start of the file.
  void Reset();
  // After the first read: whether the file is gzip rather than plain.
  bool compressed() const { return compressed_; }
  // The file's bytes taken so far.
  uint64_t consumed() const { return consumed_.load(std::memory_order_relaxed); }

 private:
  // One member of Kelpdex's, whole, from the queue through inflation to the caller.
  struct Slot {
    std::vector<uint8_t> member;  // header to trailer
    std::unique_ptr<uint8_t[]> bytes;
    size_t capacity = 0;
    size_t size = 0;  // the inflated size the trailer gives
    size_t at = 0;    // bytes handed out
    bool failed = false;
  };
  // The helper and the caller each inflate one member while the next two wait, so that neither
  // runs dry while the other's member is handed out.
  static constexpr uint64_t kSlots = 4;

  Slot& At(uint64_t sequence) { return slots_[sequence % kSlots]; }
  // The inflating in file order, on the caller's thread: as Read.
  long Decode(uint8_t* out, size_t room);
  // Queues the members of Kelpdex's that follow, whole and checked, while slots are free; leaves
  // anything else (another writer's member, a cut, the end) to Decode.
  void Queue();
  long Deliver(uint8_t* out, size_t room, const uint8_t** lent);
  // The whole size of the member of Kelpdex's whose header is buffered at the read position, and
  // the size of its bytes; 0 when the header claims sizes no member of ours has.
  size_t OwnMemberSize(size_t& size) const;
  // Inflates a member of `total` bytes into `to`, which holds its `size` bytes; false when the
  // member is damaged.
  static bool InflateMember(const uint8_t* member, size_t total, uint8_t* to, size_t size);

  enum class State : uint8_t { kStart, kPlain, kMember, kStaged, kForeign, kEnd, kFailed };

  long Fail();
  // Until `count` bytes are buffered or the file ends; false on a read error.
  bool Buffer(size_t count);
  size_t buffered() const { return fill_ - position_; }
  // A member of Kelpdex's, whole, into `out` (room enough) or the staging buffer.
  long ReadOwnMember(uint8_t* out, size_t room);
  long Inflate(uint8_t* out, size_t room);

  int fd_;
  State state_ = State::kStart;
  bool compressed_ = false;
  bool ended_ = true;  // the last member read closes a save, or was not one of Kelpdex's
  bool endOfFile_ = false;
  std::atomic<uint64_t> consumed_{0};
  std::vector<uint8_t> in_;
  size_t position_ = 0;
  size_t fill_ = 0;
  std::vector<uint8_t> staged_;
  size_t stagedAt_ = 0;
  size_t stagedEnd_ = 0;
  struct Inflater;
  std::unique_ptr<Inflater> inflater_;

  int reads_ = 0;
  Slot slots_[kSlots];
  bool lending_ = false;  // the head member's bytes are lent to the caller
  // Last, so that its helper stops before the slots it works on go.
  OrderedWork work_;
};

}  // namespace kelpdex
