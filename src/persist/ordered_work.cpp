#include "persist/ordered_work.h"

#include <system_error>
#include <utility>

namespace kelpdex {

OrderedWork::OrderedWork(uint64_t slots, Work work)
    : slots_(slots < 1           ? 1
             : slots > kMaxSlots ? kMaxSlots
                                 : slots),
      work_(std::move(work)) {}

OrderedWork::~OrderedWork() {
  StopHelper();
}

void OrderedWork::Push() {
  {
    std::lock_guard<std::mutex> lock(mutex_);
    At(tail_) = State::kQueued;
    ++tail_;
  }
  changed_.notify_all();
  if (!helperTried_) StartHelper();
}

bool OrderedWork::ClaimLocked(uint64_t& sequence) {
  for (uint64_t s = head_; s != tail_; ++s) {
    if (At(s) == State::kQueued) {
      At(s) = State::kBusy;
      sequence = s;
      return true;
    }
  }
  return false;
}

bool OrderedWork::Claim(uint64_t& sequence) {
  std::lock_guard<std::mutex> lock(mutex_);
  return ClaimLocked(sequence);
}

void OrderedWork::Done(uint64_t sequence) {
  {
    std::lock_guard<std::mutex> lock(mutex_);
    At(sequence) = State::kDone;
  }
  changed_.notify_all();
}

bool OrderedWork::HeadDone() {
  std::lock_guard<std::mutex> lock(mutex_);
  return head_ != tail_ && At(head_) == State::kDone;
}

void OrderedWork::AwaitHead() {
  std::unique_lock<std::mutex> lock(mutex_);
  while (At(head_) != State::kDone) {
    uint64_t sequence;
    if (ClaimLocked(sequence)) {
      lock.unlock();
      work_(sequence, 0);
      lock.lock();
      At(sequence) = State::kDone;
      continue;
    }
    changed_.wait(lock);
  }
}

void OrderedWork::Pop() {
  std::lock_guard<std::mutex> lock(mutex_);
  At(head_) = State::kFree;
  ++head_;
}

void OrderedWork::Reset() {
  StopHelper();
  for (State& state : states_) state = State::kFree;
  head_ = tail_ = 0;
  helperTried_ = false;
}

void OrderedWork::StartHelper() {
  helperTried_ = true;
  // On one core a helper would only take turns with the caller.
  if (std::thread::hardware_concurrency() < 2) return;
  stop_ = false;
  try {
    helper_ = std::thread(&OrderedWork::RunHelper, this);
  } catch (const std::system_error&) {
    // No thread to be had: the caller does every piece itself.
  }
}

void OrderedWork::StopHelper() {
  if (!helper_.joinable()) return;
  {
    std::lock_guard<std::mutex> lock(mutex_);
    stop_ = true;
  }
  changed_.notify_all();
  helper_.join();
}

void OrderedWork::RunHelper() {
  std::unique_lock<std::mutex> lock(mutex_);
  while (!stop_) {
    uint64_t sequence;
    if (!ClaimLocked(sequence)) {
      changed_.wait(lock);
      continue;
    }
    lock.unlock();
    work_(sequence, 1);
    lock.lock();
    At(sequence) = State::kDone;
    changed_.notify_all();
  }
}

}  // namespace kelpdex
