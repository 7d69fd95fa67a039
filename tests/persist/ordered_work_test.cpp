#include "persist/ordered_work.h"

#include <gtest/gtest.h>
#include <libdeflate.h>

#include <atomic>
#include <chrono>
#include <cstdint>
#include <thread>
#include <vector>

#include "persist/deflater.h"
#include "persist/gzip_test_data.h"

namespace kelpdex {
namespace {

// Pieces finish out of order (each sleeps a different while), yet come back in the order they
// were queued, every one done exactly once, by both workers.
TEST(OrderedWorkTest, PiecesComeBackInOrderWhoeverDoesThem) {
  constexpr uint64_t kSlots = 3;
  uint64_t results[kSlots] = {};
  std::atomic<int> byWorker[2] = {0, 0};
  std::atomic<int> calls{0};
  OrderedWork work(kSlots, [&](uint64_t sequence, int worker) {
    std::this_thread::sleep_for(std::chrono::microseconds((sequence * 7919) % 500));
    results[sequence % kSlots] = sequence * sequence;
    ++byWorker[worker];
    ++calls;
  });
  std::vector<uint64_t> taken;
  constexpr uint64_t kPieces = 400;
  for (uint64_t next = 0; next < kPieces || !work.empty();) {
    if (next < kPieces && !work.full()) {
      EXPECT_EQ(work.tail(), next);
      work.Push();
      ++next;
      continue;
    }
    work.AwaitHead();
    taken.push_back(results[work.head() % kSlots]);
    work.Pop();
  }
  ASSERT_EQ(taken.size(), kPieces);
  for (uint64_t i = 0; i < kPieces; ++i) EXPECT_EQ(taken[i], i * i) << i;
  EXPECT_EQ(calls.load(), static_cast<int>(kPieces));
  // Windows rounds sleeps below its millisecond tick to nothing, so there the caller may do every
  // piece before the helper has even started.
#ifndef _WIN32
  if (std::thread::hardware_concurrency() >= 2) {
    EXPECT_GT(byWorker[1].load(), 0);
  }
#endif
  EXPECT_GT(byWorker[0].load(), 0);
}

// A reset while the helper is busy waits for it, and the ring then starts over from zero.
TEST(OrderedWorkTest, ResetStopsTheHelperAndStartsOver) {
  std::atomic<int> calls{0};
  OrderedWork work(2, [&](uint64_t, int) {
    std::this_thread::sleep_for(std::chrono::milliseconds(5));
    ++calls;
  });
  work.Push();
  work.Push();
  work.Reset();
  EXPECT_TRUE(work.empty());
  EXPECT_EQ(work.head(), 0u);
  int before = calls.load();
  work.Push();
  work.AwaitHead();
  EXPECT_TRUE(work.HeadDone());
  work.Pop();
  EXPECT_EQ(calls.load(), before + 1);
}

std::string Inflate(const std::vector<uint8_t>& deflated, size_t size) {
  libdeflate_decompressor* d = libdeflate_alloc_decompressor();
  std::string back(size, '\0');
  size_t made = 0;
  libdeflate_result r =
      libdeflate_deflate_decompress(d, deflated.data(), deflated.size(), back.data(), size, &made);
  libdeflate_free_decompressor(d);
  EXPECT_EQ(r, LIBDEFLATE_SUCCESS);
  EXPECT_EQ(made, size);
  return back;
}

// Both compressors, on data that compresses, data that does not and nothing, stay within the
// room the writer gives and make a stream any inflater reads back.
TEST(DeflaterTest, EveryKindOfInputFitsItsBoundAndInflatesBack) {
  std::string random(300000, '\0');
  uint64_t x = 88172645463325252ull;
  for (char& c : random) {
    x ^= x << 13, x ^= x >> 7, x ^= x << 17;
    c = static_cast<char>(x);
  }
  for (DeflateFor use : {DeflateFor::kText, DeflateFor::kRecords}) {
    Deflater deflater(use);
    for (const std::string& data : {testing::PatternBytes(500000), random, std::string("x")}) {
      SCOPED_TRACE(data.size());
      std::vector<uint8_t> out(Deflater::Bound(data.size()));
      size_t n = deflater.Compress(reinterpret_cast<const uint8_t*>(data.data()), data.size(),
                                   out.data(), out.size());
      ASSERT_GT(n, 0u);
      out.resize(n);
      EXPECT_EQ(Inflate(out, data.size()), data);
    }
  }
}

}  // namespace
}  // namespace kelpdex
