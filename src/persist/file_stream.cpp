#include "persist/file_stream.h"

#include <fcntl.h>
#include <sys/stat.h>

#include <algorithm>
#include <cstring>
#include <new>

#include "core/progress.h"
#include "persist/gzip_member.h"
#include "persist/gzip_reader.h"
#include "persist/gzip_writer.h"
#include "persist/raw_file.h"
#include "platform/os.h"

namespace kelpdex {

namespace {

bool Exists(const std::string& path) {
  struct stat st;
  return ::stat(path.c_str(), &st) == 0;
}

}  // namespace

FileStream::FileStream() = default;

FileStream::~FileStream() {
  Close();
}

bool FileStream::Begin(const std::string& path, size_t size) {
  Close();
  error_ = err::kNone;
  path_ = path;
  buffer_.reset(new (std::nothrow) uint8_t[size]);
  capacity_ = size;
  if (buffer_ == nullptr) {
    SetError(err::kFileBuffer);
    return false;
  }
  return true;
}

bool FileStream::Open(const std::string& path, StreamMode mode, bool compress, size_t bufferSize) {
  // A gzip member holds one buffer's worth, and a reader takes no bigger member.
  if (compress && mode == StreamMode::kWrite) bufferSize = std::min(bufferSize, gzip::kMaxPiece);
  if (!Begin(path, bufferSize)) return false;
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

bool FileStream::OpenPart(const std::string& path, uint64_t offset) {
  if (!Begin(path, kBufferSize)) return false;
  fd_ = KELPDEX_OPEN(path.c_str(), O_WRONLY | kBinaryFlag);
  if (fd_ < 0) {
    SetError(err::kFileOpenWrite);
    return false;
  }
  quiet_ = true;
  return OpenLayers(StreamMode::kWrite, false) && SeekWrite(offset);
}

bool FileStream::OpenLayers(StreamMode mode, bool compress) {
  mode_ = mode;
  moved_ = 0;
  fileSize_ = 0;
  if (mode == StreamMode::kRead) platform::GetFileSize(path_, fileSize_);
  position_ = fill_ = 0;
  data_ = buffer_.get();
  mark_ = SIZE_MAX;
  endOfFile_ = false;
  // Reading always goes through gzip, which passes a plain file through; this is how a
  // compressed file is told from a plain one without guessing.
  if (compress && mode == StreamMode::kRead) gzipIn_ = std::make_unique<GzipReader>(fd_);
  if (compress && mode == StreamMode::kWrite) {
    gzipOut_ = std::make_unique<GzipWriter>(fd_, gzipContent_);
    gzipOpen_ = false;
  }
  return true;
}

void FileStream::CloseLayers() {
  if (gzipOut_ != nullptr && !gzipOut_->Finish()) SetError(err::kFileWrite);
  gzipOut_.reset();
  gzipIn_.reset();
}

void FileStream::SetGzipContent(DeflateFor content) {
  gzipContent_ = content;
  if (gzipOut_ != nullptr) gzipOut_->SetUse(content);
}

bool FileStream::Reopen(StreamMode mode, bool compress) {
  if (fd_ < 0) {
    SetError(err::kFileWrite);
    return false;
  }
  if (mode_ == StreamMode::kWrite) Drain(true);
  CloseLayers();
  error_ = err::kNone;
  if (KELPDEX_SEEK(fd_, 0, SEEK_SET) < 0 ||
      (mode == StreamMode::kWrite && KELPDEX_CUT(fd_, 0) != 0)) {
    SetError(err::kFileWrite);
    return false;
  }
  return OpenLayers(mode, compress);
}

bool FileStream::Close() {
  if (fd_ < 0) return ok();
  if (mode_ == StreamMode::kWrite) Drain(true);
  CloseLayers();
  if (KELPDEX_CLOSE(fd_) != 0) SetError(err::kFileClose);
  fd_ = -1;
  buffer_.reset();
  data_ = nullptr;
  return ok();
}

bool FileStream::compressed() const {
  return gzipIn_ != nullptr && gzipIn_->compressed();
}

// --- reading ---------------------------------------------------------------------------------

bool FileStream::Fill() {
  if (!ok() || endOfFile_ || fd_ < 0 || mode_ != StreamMode::kRead) return false;
  // Bytes from the mark on are kept, so that a return to the mark finds them.
  size_t keepFrom = mark_ != SIZE_MAX ? std::min(mark_, position_) : position_;
  size_t kept = fill_ - keepFrom;
  if (kept == capacity_) return false;  // a mark cannot hold more than the buffer
  // Kept bytes of a lent member are copied out before the next read takes the member back.
  if (keepFrom > 0 || data_ != buffer_.get()) std::memmove(buffer_.get(), data_ + keepFrom, kept);
  data_ = buffer_.get();
  if (mark_ != SIZE_MAX) mark_ -= keepFrom;
  position_ -= keepFrom;
  fill_ = kept;
  size_t room = capacity_ - fill_;
  const uint8_t* lent = nullptr;
  long got = gzipIn_ != nullptr
                 ? gzipIn_->Read(buffer_.get() + fill_, room, kept == 0 ? &lent : nullptr)
                 : ReadRaw(fd_, buffer_.get() + fill_, room);
  if (lent != nullptr) data_ = lent;
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
  if (!quiet_) ReportProgress(gzipIn_ != nullptr ? gzipIn_->consumed() : moved_, fileSize_);
  return true;
}

size_t FileStream::ReadSome(void* out, size_t size) {
  auto* to = static_cast<uint8_t*>(out);
  size_t done = 0;
  while (done < size) {
    if (position_ == fill_ && !Fill()) break;
    size_t n = std::min(size - done, fill_ - position_);
    std::memcpy(to + done, data_ + position_, n);
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
  if (KELPDEX_SEEK(fd_, 0, SEEK_SET) != 0) {
    SetError(err::kFileSeek);
    return false;
  }
  if (gzipIn_ != nullptr) gzipIn_->Reset();
  position_ = fill_ = 0;
  data_ = buffer_.get();
  mark_ = SIZE_MAX;
  endOfFile_ = false;
  return true;
}

bool FileStream::compressedRead() const {
  return gzipIn_ != nullptr && gzipIn_->compressed();
}

bool FileStream::SeekRead(uint64_t offset) {
  if (fd_ < 0 || mode_ != StreamMode::kRead || gzipIn_ != nullptr) return false;
  if (KELPDEX_SEEK(fd_, static_cast<int64_t>(offset), SEEK_SET) < 0) {
    SetError(err::kFileSeek);
    return false;
  }
  position_ = fill_ = 0;
  data_ = buffer_.get();
  mark_ = SIZE_MAX;
  endOfFile_ = false;
  moved_ = offset;
  return true;
}

int FileStream::PeekSlow() {
  if (position_ == fill_ && !Fill()) return -1;
  return data_[position_];
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

bool FileStream::Drain(bool last) {
  if (fd_ < 0) return ok();
  if (gzipOut_ != nullptr) {
    // An empty buffer still closes the bytes when earlier pieces left them open.
    if (ok() && (position_ > 0 || (last && gzipOpen_))) {
      if (!gzipOut_->Put(buffer_, capacity_, position_, last)) SetError(err::kFileWrite);
      gzipOpen_ = !last;
    }
  } else if (ok() && position_ > 0) {
    if (!WriteRaw(fd_, buffer_.get(), position_)) {
      SetError(err::kFileWrite);
    } else if ((unsynced_ += position_) >= kWritebackStep) {
      StartWriteback(fd_);
      unsynced_ = 0;
    }
  }
  moved_ += position_;
  if (position_ > 0 && !quiet_) ReportProgress(moved_, 0);
  position_ = 0;
  return ok();
}

bool FileStream::SeekWrite(uint64_t offset) {
  if (fd_ < 0 || mode_ != StreamMode::kWrite || gzipOut_ != nullptr || !Drain()) {
    SetError(err::kFileWrite);
    return false;
  }
  if (KELPDEX_SEEK(fd_, static_cast<int64_t>(offset), SEEK_SET) < 0) {
    SetError(err::kFileWrite);
    return false;
  }
  return true;
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

uint8_t* FileStream::WriteRoom(size_t size) {
  if (!ok() || fd_ < 0 || mode_ != StreamMode::kWrite || size > capacity_) {
    SetError(err::kFileWrite);
    return nullptr;
  }
  if (capacity_ - position_ < size && !Drain()) return nullptr;
  return buffer_.get() + position_;
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
  if (!Drain(true)) return false;
  if (gzipOut_ != nullptr && !gzipOut_->Finish()) SetError(err::kFileWrite);
  return ok();
}

bool FileStream::Sync() {
  if (!Flush()) return false;
  if (KELPDEX_SYNC(fd_) != 0) SetError(err::kFileWrite);
  return ok();
}

}  // namespace kelpdex
