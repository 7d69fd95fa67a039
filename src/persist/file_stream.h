// The buffered file every native document is read and written through: one large buffer between
// the program and the system, an optional gzip layer over the same descriptor, and a sticky
// error byte, so that a save or load checks for failure once, at its end.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <memory>
#include <string>

#include "core/error_code.h"
#include "persist/deflater.h"
#include "persist/stream_cipher.h"

namespace kelpdex {
class GzipReader;
class GzipWriter;
}  // namespace kelpdex

namespace kelpdex {

enum class StreamMode {
  kRead,
  kWrite,  // created or truncated, as "w+b"
};

class FileStream {
 public:
  static constexpr size_t kBufferSize = 524228;
  // Cipher work goes in pieces of this size through a stack buffer.
  static constexpr size_t kCipherPiece = 2048;
  // Below this many bytes a file is read or written by one thread, in halves by two above it:
  // starting the second thread costs more than it saves on a smaller file.
  static constexpr uint64_t kSplitMinimum = 16u << 20;

  FileStream();
  ~FileStream();
  FileStream(const FileStream&) = delete;
  FileStream& operator=(const FileStream&) = delete;

  // Opens the file. Reading with `compress` goes through gzip, which passes a plain file through
  // unchanged; writing with `compress` writes gzip, one member for each buffer's worth. False
  // with the error set: 60 cannot read, 69 the file exists but cannot be opened, 61 cannot
  // write, 68 no buffer. A damaged or cut gzip stream is read error 64.
  bool Open(const std::string& path, StreamMode mode, bool compress,
            size_t bufferSize = kBufferSize);
  // Starts the open file over in a new mode, for a save onto the file that is open: writing
  // truncates it. Clears the error. False with 65.
  bool Reopen(StreamMode mode, bool compress);
  // Opens an existing plain file for writing from `offset` on, without cutting it: a second
  // writer that fills its own part of a file another stream is writing. It is quiet (see
  // SetQuiet). False with 65 as Open.
  bool OpenPart(const std::string& path, uint64_t offset);
  // Writes what is buffered, finishes gzip and closes. False with 62 (65 for the last write).
  bool Close();
  bool isOpen() const { return fd_ >= 0; }
  // For writing with gzip, before the first byte: what the bytes are, which picks the
  // compressor; text unless told otherwise.
  void SetGzipContent(DeflateFor content);
  const std::string& path() const { return path_; }

  // The first error since the open; later reads and writes do nothing.
  ErrorCode error() const { return error_; }
  bool ok() const { return error_ == err::kNone; }
  void SetError(ErrorCode code) {
    if (error_ == err::kNone) error_ = code;
  }
  // Reading through gzip: true when the file really was compressed.
  bool compressed() const;

  // --- reading ---
  // Up to `size` bytes; fewer at the end of the file.
  size_t ReadSome(void* out, size_t size);
  // Exactly `size` bytes, else error 64.
  bool Read(void* out, size_t size);
  // `size` bytes into `buffer`, deciphered when a cipher is given.
  bool ReadBlock(uint8_t* buffer, size_t size, StreamCipher* cipher);
  // Back to the first byte (reading only). False with 63.
  bool Rewind();

  // Byte helpers of the XML scanner: one byte of look-ahead, and a mark to return to.
  // The byte helpers run once per byte of an XML file: their common case is inline.
  int Peek() { return position_ < fill_ ? data_[position_] : PeekSlow(); }    // -1 at the end
  int Next() { return position_ < fill_ ? data_[position_++] : NextSlow(); }  // -1 at the end
  bool Skip(size_t count);
  // Goes to a byte of a plain file being read, by a seek rather than a read through. False for a
  // compressed stream, or with 63 when the seek fails.
  bool SeekRead(uint64_t offset);
  // After the first read: the file is gzip, whose bytes have no place of their own in the file.
  bool compressedRead() const;
  uint64_t fileSize() const { return fileSize_; }
  // A stream read on a worker thread says nothing to the progress sink, which belongs to the
  // thread that started the work.
  void SetQuiet(bool quiet) { quiet_ = quiet; }
  // The bytes the buffer holds from the read position, refilling first when it holds none;
  // `size` 0 at the end of the file. Advance() consumes from it.
  const uint8_t* Span(size_t& size) {
    if (position_ == fill_ && PeekSlow() < 0) {
      size = 0;
      return nullptr;
    }
    size = fill_ - position_;
    return data_ + position_;
  }
  void Advance(size_t count) { position_ += count; }
  // The next `size` bytes in place when the buffer holds them all, else null.
  const uint8_t* Contiguous(size_t size) const {
    return position_ + size <= fill_ ? data_ + position_ : nullptr;
  }
  // Whether the next `size` bytes are `text`, without consuming them.
  bool Matches(const char* text, size_t size) {
    if (position_ + size <= fill_) return std::memcmp(data_ + position_, text, size) == 0;
    return MatchesSlow(text, size);
  }
  bool AtEnd() { return Peek() < 0; }
  void Mark();
  void ReturnToMark();

  // --- writing ---
  bool Write(const void* data, size_t size);
  // Room for the next `size` bytes in the buffer, to be filled in place and then taken with
  // Wrote(size), which saves a copy for a writer that builds its bytes piece by piece. Null with
  // the error set when writing fails or `size` is more than the buffer holds.
  uint8_t* WriteRoom(size_t size);
  void Wrote(size_t size) { position_ += size; }
  // Writes out the buffer, then goes on writing at `offset` of a plain file. False with 65.
  bool SeekWrite(uint64_t offset);
  // `size` bytes, enciphered on the way when a cipher is given; `buffer` is left as it was.
  bool WriteBlock(const uint8_t* buffer, size_t size, StreamCipher* cipher);
  // Writes out the buffer and finishes the gzip stream, or hands the bytes to the system.
  // False with 65.
  bool Flush();
  // Flush, then wait until the bytes are on the disk. False with 65.
  bool Sync();

 private:
  int PeekSlow();
  int NextSlow();
  bool MatchesSlow(const char* text, size_t size);
  bool Fill();
  // Hands the buffer on; `last` when the bytes written so far are to be complete in the file.
  bool Drain(bool last = false);
  void CloseLayers();
  // What every open begins with: the last file closed, the error cleared, a buffer of `size`.
  bool Begin(const std::string& path, size_t size);
  bool OpenLayers(StreamMode mode, bool compress);

  std::string path_;
  // For progress: the bytes read or written so far, and the size of a file read.
  uint64_t moved_ = 0;
  // Plain bytes written since the disk was last set to work on them (see StartWriteback).
  static constexpr uint64_t kWritebackStep = 8u << 20;
  uint64_t unsynced_ = 0;
  uint64_t fileSize_ = 0;
  bool quiet_ = false;
  int fd_ = -1;
  DeflateFor gzipContent_ = DeflateFor::kText;
  std::unique_ptr<GzipReader> gzipIn_;
  std::unique_ptr<GzipWriter> gzipOut_;
  bool gzipOpen_ = false;  // pieces handed to gzip since the last one that closed the bytes
  StreamMode mode_ = StreamMode::kRead;
  std::unique_ptr<uint8_t[]> buffer_;
  // The bytes being read: the buffer, or a member the gzip layer inflated and lends until its
  // next read, which saves copying every byte of a compressed file once more.
  const uint8_t* data_ = nullptr;
  size_t capacity_ = 0;
  size_t position_ = 0;  // next byte to read, or bytes written so far
  size_t fill_ = 0;      // bytes in the buffer when reading
  size_t mark_ = SIZE_MAX;
  bool endOfFile_ = false;
  ErrorCode error_ = err::kNone;
};

}  // namespace kelpdex
