// A short ring of numbered pieces of work that the calling thread and one helper thread do in
// any order, while the caller alone queues them and takes them back in the order queued. The
// gzip writer compresses through it and the gzip reader inflates through it.
//
// The ring keeps only each piece's state; what a piece holds lives in the owner's array, at the
// piece's sequence number modulo the ring's size. A piece is touched by exactly one thread at a
// time: the caller while it is free or done, the thread that claimed it while it is busy.
#pragma once

#include <condition_variable>
#include <cstdint>
#include <functional>
#include <mutex>
#include <thread>

namespace kelpdex {

class OrderedWork {
 public:
  static constexpr uint64_t kMaxSlots = 4;
  // The work on the piece numbered `sequence`, run unlocked by the helper (worker 1) or by the
  // caller (worker 0) inside AwaitHead, so that each can keep state of its own.
  using Work = std::function<void(uint64_t sequence, int worker)>;

  OrderedWork(uint64_t slots, Work work);
  // Stops the helper; pieces not yet taken back are dropped.
  ~OrderedWork();
  OrderedWork(const OrderedWork&) = delete;
  OrderedWork& operator=(const OrderedWork&) = delete;

  uint64_t head() const { return head_; }  // the oldest piece not yet taken back
  uint64_t tail() const { return tail_; }  // the next piece to be queued
  bool full() const { return tail_ - head_ == slots_; }
  bool empty() const { return tail_ == head_; }

  // The piece at tail(), filled by the caller, is ready for work. Starts the helper at the
  // first call.
  void Push();
  // Claims the oldest piece nobody has taken, for the caller to work on itself; false when
  // there is none.
  bool Claim(uint64_t& sequence);
  // The caller's claimed piece is done.
  void Done(uint64_t sequence);
  // Until the head piece is done: the caller works on queued pieces meanwhile, and otherwise
  // waits for the helper. Only while the ring is not empty.
  void AwaitHead();
  bool HeadDone();
  // Frees the head piece after the caller has taken its result.
  void Pop();
  // Stops the helper and empties the ring; the next Push starts a helper again.
  void Reset();

 private:
  enum class State : uint8_t { kFree, kQueued, kBusy, kDone };

  State& At(uint64_t sequence) { return states_[sequence % slots_]; }
  bool ClaimLocked(uint64_t& sequence);
  void StartHelper();
  void StopHelper();
  void RunHelper();

  const uint64_t slots_;
  const Work work_;
  State states_[kMaxSlots] = {};
  uint64_t head_ = 0;
  uint64_t tail_ = 0;
  bool helperTried_ = false;
  bool stop_ = false;
  std::mutex mutex_;
  std::condition_variable changed_;
  std::thread helper_;
};

}  // namespace kelpdex
