#include "persist/file_stream.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <zlib.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <new>

#include "core/progress.h"
#include "platform/os.h"

#ifdef _WIN32
#include <io.h>
#define KELPDEX_OPEN ::_open
#define KELPDEX_READ ::_read
#define KELPDEX_WRITE ::_write
#define KELPDEX_CLOSE ::_close
#define KELPDEX_DUP ::_dup
#define KELPDEX_SEEK ::_lseeki64
#define KELPDEX_SYNC ::_commit
#define KELPDEX_TRUNCATE(fd) ::_chsize_s(fd, 0)
constexpr int kBinaryFlag = _O_BINARY;
#else
#include <unistd.h>
#define KELPDEX_OPEN ::open
#define KELPDEX_READ ::read
#define KELPDEX_WRITE ::write
#define KELPDEX_CLOSE ::close
#define KELPDEX_DUP ::dup
#define KELPDEX_SEEK ::lseek
#define KELPDEX_SYNC ::fsync
#define KELPDEX_TRUNCATE(fd) ::ftruncate(fd, 0)
constexpr int kBinaryFlag = 0;
#endif

namespace kelpdex {

namespace {

gzFile Gz(void* p) {
  return static_cast<gzFile>(p);
}

bool Exists(const std::string& path) {
  struct stat st;
  return ::stat(path.c_str(), &st) == 0;
}

}  // namespace

FileStream::FileStream() = default;

FileStream::~FileStream() {
  Close();
}

bool FileStream::Open(const std::string& path, StreamMode mode, bool compress, size_t bufferSize) {
  Close();
  error_ = err::kNone;
  path_ = path;
  buffer_.reset(new (std::nothrow) uint8_t[bufferSize]);
  capacity_ = bufferSize;
  if (buffer_ == nullptr) {
    SetError(err::kFileBuffer);
    return false;
  }
  int flags = mode == StreamMode::kRead ? O_RDONLY : (O_RDWR | O_CREAT | O_TRUNC);
  fd_ = KELPDEX_OPEN(path.c_str(), flags | kBinaryFlag, 0666);
  if (fd_ < 0) {
    if (mode == StreamMode::kWrite) {
      SetError(err::kFileOpenWrite);
    } else {
      SetError(Exists(path) ? err::kFileInUse : err::kFileOpenRead);
    }
    return false;
  }
  return OpenLayers(mode, compress);
}

bool FileStream::OpenLayers(StreamMode mode, bool compress) {
  mode_ = mode;
  moved_ = 0;
  fileSize_ = 0;
  if (mode == StreamMode::kRead) platform::GetFileSize(path_, fileSize_);
  position_ = fill_ = 0;
  mark_ = SIZE_MAX;
  endOfFile_ = false;
  // Reading always goes through gzip, whose transparent mode passes a plain file through; this is
  // how a compressed file is told from a plain one without guessing.
  if (compress) {
    int copy = KELPDEX_DUP(fd_);
    if (copy < 0) {
      SetError(mode == StreamMode::kRead ? err::kFileOpenRead : err::kFileOpenWrite);
      return false;
    }
    gz_ = gzdopen(copy, mode == StreamMode::kRead ? "rb" : "wb");
    if (gz_ == nullptr) {
      KELPDEX_CLOSE(copy);
      SetError(mode == StreamMode::kRead ? err::kFileOpenRead : err::kFileOpenWrite);
      return false;
    }
    gzbuffer(Gz(gz_), 256 * 1024);
  }
  return true;
}

void FileStream::CloseLayers() {
  if (gz_ != nullptr) {
    if (gzclose(Gz(gz_)) != Z_OK && mode_ == StreamMode::kWrite) SetError(err::kFileWrite);
    gz_ = nullptr;
  }
}

bool FileStream::Reopen(StreamMode mode, bool compress) {
  if (fd_ < 0) {
    SetError(err::kFileWrite);
    return false;
  }
  if (mode_ == StreamMode::kWrite) Drain();
  CloseLayers();
  error_ = err::kNone;
  if (KELPDEX_SEEK(fd_, 0, SEEK_SET) < 0 ||
      (mode == StreamMode::kWrite && KELPDEX_TRUNCATE(fd_) != 0)) {
    SetError(err::kFileWrite);
    return false;
  }
  return OpenLayers(mode, compress);
}

bool FileStream::Close() {
  if (fd_ < 0) return ok();
  if (mode_ == StreamMode::kWrite) Drain();
  CloseLayers();
  if (KELPDEX_CLOSE(fd_) != 0) SetError(err::kFileClose);
  fd_ = -1;
  buffer_.reset();
  return ok();
}

bool FileStream::compressed() const {
  return gz_ != nullptr && gzdirect(Gz(gz_)) == 0;
}

// --- reading ---------------------------------------------------------------------------------

bool FileStream::Fill() {
  if (!ok() || endOfFile_ || fd_ < 0 || mode_ != StreamMode::kRead) return false;
  // Bytes from the mark on are kept, so that a return to the mark finds them.
  size_t keepFrom = mark_ != SIZE_MAX ? std::min(mark_, position_) : position_;
  size_t kept = fill_ - keepFrom;
  if (kept == capacity_) return false;  // a mark cannot hold more than the buffer
  if (keepFrom > 0) std::memmove(buffer_.get(), buffer_.get() + keepFrom, kept);
  if (mark_ != SIZE_MAX) mark_ -= keepFrom;
  position_ -= keepFrom;
  fill_ = kept;
  size_t room = capacity_ - fill_;
  long got;
  if (gz_ != nullptr) {
    int n = gzread(Gz(gz_), buffer_.get() + fill_,
                   static_cast<unsigned>(std::min<size_t>(room, 1u << 30)));
    got = n;
  } else {
    got = static_cast<long>(KELPDEX_READ(fd_, buffer_.get() + fill_, room));
  }
  if (got < 0) {
    SetError(err::kFileRead);
    return false;
  }
  if (got == 0) {
    endOfFile_ = true;
    return false;
  }
  fill_ += static_cast<size_t>(got);
  // The file's own bytes, compressed or not, measure how far the read has come.
  moved_ += static_cast<uint64_t>(got);
  ReportProgress(gz_ != nullptr ? static_cast<uint64_t>(gzoffset(Gz(gz_))) : moved_, fileSize_);
  return true;
}

size_t FileStream::ReadSome(void* out, size_t size) {
  auto* to = static_cast<uint8_t*>(out);
  size_t done = 0;
  while (done < size) {
    if (position_ == fill_ && !Fill()) break;
    size_t n = std::min(size - done, fill_ - position_);
    std::memcpy(to + done, buffer_.get() + position_, n);
    position_ += n;
    done += n;
  }
  return done;
}

bool FileStream::Read(void* out, size_t size) {
  if (!ok()) return false;
  if (ReadSome(out, size) != size) {
    SetError(err::kFileRead);
    return false;
  }
  return true;
}

bool FileStream::ReadBlock(uint8_t* buffer, size_t size, StreamCipher* cipher) {
  if (!Read(buffer, size)) return false;
  if (cipher == nullptr) return true;
  for (size_t at = 0; at < size; at += kCipherPiece) {
    if (!cipher->Transform(buffer + at, std::min(kCipherPiece, size - at))) {
      SetError(err::kDecrypt);
      return false;
    }
  }
  return true;
}

bool FileStream::Rewind() {
  if (fd_ < 0 || mode_ != StreamMode::kRead) return false;
  bool done = gz_ != nullptr ? gzrewind(Gz(gz_)) == 0 : KELPDEX_SEEK(fd_, 0, SEEK_SET) == 0;
  if (!done) {
    SetError(err::kFileSeek);
    return false;
  }
  position_ = fill_ = 0;
  mark_ = SIZE_MAX;
  endOfFile_ = false;
  return true;
}

int FileStream::PeekSlow() {
  if (position_ == fill_ && !Fill()) return -1;
  return buffer_[position_];
}

int FileStream::NextSlow() {
  int c = PeekSlow();
  if (c >= 0) ++position_;
  return c;
}

bool FileStream::Skip(size_t count) {
  while (count > 0) {
    if (position_ == fill_ && !Fill()) return false;
    size_t n = std::min(count, fill_ - position_);
    position_ += n;
    count -= n;
  }
  return true;
}

bool FileStream::MatchesSlow(const char* text, size_t size) {
  if (size > capacity_) return false;
  Mark();
  bool same = true;
  for (size_t i = 0; i < size && same; ++i) same = Next() == static_cast<uint8_t>(text[i]);
  ReturnToMark();
  return same;
}

void FileStream::Mark() {
  mark_ = position_;
}

void FileStream::ReturnToMark() {
  if (mark_ != SIZE_MAX) position_ = mark_;
  mark_ = SIZE_MAX;
}

// --- writing ---------------------------------------------------------------------------------

bool FileStream::Drain() {
  if (position_ == 0 || fd_ < 0) return ok();
  size_t done = 0;
  while (ok() && done < position_) {
    long n;
    if (gz_ != nullptr) {
      n = gzwrite(Gz(gz_), buffer_.get() + done,
                  static_cast<unsigned>(std::min<size_t>(position_ - done, 1u << 30)));
      if (n <= 0) n = -1;
    } else {
      n = static_cast<long>(KELPDEX_WRITE(fd_, buffer_.get() + done, position_ - done));
      if (n < 0 && errno == EINTR) continue;
    }
    if (n <= 0) {
      SetError(err::kFileWrite);
      break;
    }
    done += static_cast<size_t>(n);
  }
  moved_ += position_;
  ReportProgress(moved_, 0);
  position_ = 0;
  return ok();
}

bool FileStream::Write(const void* data, size_t size) {
  if (!ok() || fd_ < 0 || mode_ != StreamMode::kWrite) {
    SetError(err::kFileWrite);
    return false;
  }
  const auto* from = static_cast<const uint8_t*>(data);
  while (size > 0) {
    if (position_ == capacity_ && !Drain()) return false;
    size_t n = std::min(size, capacity_ - position_);
    std::memcpy(buffer_.get() + position_, from, n);
    position_ += n;
    from += n;
    size -= n;
  }
  return true;
}

bool FileStream::WriteBlock(const uint8_t* buffer, size_t size, StreamCipher* cipher) {
  if (cipher == nullptr) return Write(buffer, size);
  uint8_t piece[kCipherPiece];
  for (size_t at = 0; at < size; at += kCipherPiece) {
    size_t n = std::min(kCipherPiece, size - at);
    std::memcpy(piece, buffer + at, n);
    if (!cipher->Transform(piece, n)) {
      SetError(err::kEncrypt);
      return false;
    }
    if (!Write(piece, n)) return false;
  }
  return true;
}

bool FileStream::Flush() {
  if (mode_ != StreamMode::kWrite || fd_ < 0) return ok();
  if (!Drain()) return false;
  if (gz_ != nullptr && gzflush(Gz(gz_), Z_FINISH) != Z_OK) SetError(err::kFileWrite);
  return ok();
}

bool FileStream::Sync() {
  if (!Flush()) return false;
  if (KELPDEX_SYNC(fd_) != 0) SetError(err::kFileWrite);
  return ok();
}

}  // namespace kelpdex
