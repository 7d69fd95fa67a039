// gzip input that also passes a plain file through. Members Kelpdex wrote are taken whole and
// inflated by libdeflate; members of other writers (gzip, Python, zlib, older Kelpdex files)
// stream through zlib. From the second read on, a helper thread inflates ahead while the caller
// parses. A cut or damaged stream is always an error, never a short read.
#pragma once

#include <atomic>
#include <condition_variable>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <mutex>
#include <thread>
#include <vector>

struct libdeflate_decompressor;

namespace kelpdex {

class GzipReader {
 public:
  // Reads `fd` from where it stands, which is the start of the file.
  explicit GzipReader(int fd);
  ~GzipReader();
  GzipReader(const GzipReader&) = delete;
  GzipReader& operator=(const GzipReader&) = delete;

  // Up to `room` bytes of the file's content: 0 at its end, -1 when the file cannot be read or
  // its gzip stream is damaged or cut short.
  long Read(uint8_t* out, size_t room);
  // Starts over; the caller has put the descriptor back to the start of the file.
  void Reset();
  // After the first read: whether the file is gzip rather than plain.
  bool compressed() const { return compressed_; }
  // The file's bytes taken so far.
  uint64_t consumed() const { return consumed_.load(std::memory_order_relaxed); }

 private:
  // A buffer of inflated bytes made ahead by the helper.
  struct Chunk {
    std::unique_ptr<uint8_t[]> bytes;
    size_t size = 0;
    size_t at = 0;
    bool filled = false;
    bool last = false;    // the stream ends after it
    bool failed = false;  // the stream is damaged; its bytes are not handed out
  };
  static constexpr size_t kChunks = 3;

  // The inflating itself, on one thread at a time: as Read.
  long Decode(uint8_t* out, size_t room);
  long ReadAhead(uint8_t* out, size_t room);
  void StartHelper();
  void StopHelper();
  void RunHelper();

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
  libdeflate_decompressor* decompressor_ = nullptr;
  struct Inflater;
  std::unique_ptr<Inflater> inflater_;

  int reads_ = 0;
  Chunk chunks_[kChunks];
  size_t head_ = 0;  // the chunk the caller reads next; the helper fills in the same order
  bool helperTried_ = false;
  bool helperRunning_ = false;
  bool aheadFailed_ = false;
  bool helperDone_ = false;  // the caller has seen the chunk that ends the stream
  bool stop_ = false;
  std::mutex mutex_;
  std::condition_variable changed_;
  std::thread helper_;
};

}  // namespace kelpdex
