#include "persist/side_file_io.h"

#include <fcntl.h>
#include <sys/stat.h>

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <new>

#include "persist/raw_file.h"
#include "text/base64.h"

namespace kelpdex {

namespace {

// "--NNNNNNNNNN K": two hyphens, the offset in ten digits, a blank and the kind.
constexpr size_t kHeaderLength = 14;
// A record's first read after a seek is small: most values are a few KB, and the buffer is large.
constexpr size_t kFirstFill = 16384;
// Base64 lines encoded at once: 64 lines of 57 bytes.
constexpr size_t kEncodeChunk = 57 * 64;

bool ParseHeader(const char* line, size_t length, uint32_t& offset, uint8_t& kind) {
  if (length != kHeaderLength || line[0] != '-' || line[1] != '-' || line[12] != ' ') return false;
  uint64_t n = 0;
  for (size_t i = 2; i < 12; ++i) {
    if (line[i] < '0' || line[i] > '9') return false;
    n = n * 10 + static_cast<uint64_t>(line[i] - '0');
  }
  if (n > 0x7fffffff || (line[13] != '1' && line[13] != '2')) return false;
  offset = static_cast<uint32_t>(n);
  kind = static_cast<uint8_t>(line[13] - '0');
  return true;
}

// Decodes Base64 that arrives in lines of any length, carrying an unfinished quad over.
class LineDecoder {
 public:
  LineDecoder(uint8_t* out, size_t capacity) : out_(out), capacity_(capacity) {}
  bool Add(const char* text, size_t length) {
    if (length == 0) return true;
    if (padded_) return false;  // nothing may follow the padding
    while (carried_ > 0 && carried_ < 4 && length > 0) {
      carry_[carried_++] = *text++;
      --length;
    }
    if (carried_ == 4) {
      if (!Decode(carry_, 4)) return false;
      carried_ = 0;
    }
    size_t whole = length / 4 * 4;
    if (whole > 0 && !Decode(text, whole)) return false;
    for (size_t i = whole; i < length; ++i) carry_[carried_++] = text[i];
    return true;
  }
  bool Finish() const { return carried_ == 0; }
  size_t written() const { return written_; }

 private:
  bool Decode(const char* text, size_t length) {
    if (padded_ || written_ + length / 4 * 3 > capacity_) return false;
    size_t n = 0;
    if (!text::Base64DecodeQuads(text, length, out_ + written_, n, padded_)) return false;
    written_ += n;
    return true;
  }

  uint8_t* out_;
  size_t capacity_;
  size_t written_ = 0;
  char carry_[4] = {};
  size_t carried_ = 0;
  bool padded_ = false;
};

}  // namespace

bool IsRecordHeader(std::string_view line) {
  uint32_t offset = 0;
  uint8_t kind = 0;
  return ParseHeader(line.data(), line.size(), offset, kind);
}

// --- reading ---

SideFileReader::~SideFileReader() {
  Close();
}

bool SideFileReader::Open(const std::string& path, ErrorCode& error) {
  Close();
  buffer_.reset(new (std::nothrow) uint8_t[SideFile::kBufferSize]);
  if (buffer_ == nullptr) {
    error = err::kFileBuffer;
    return false;
  }
  fd_ = KELPDEX_OPEN(path.c_str(), O_RDONLY | kBinaryFlag);
  struct stat st;
  if (fd_ < 0 || ::fstat(fd_, &st) != 0 || !S_ISREG(st.st_mode)) {
    Close();
    error = err::kFileOpenRead;
    return false;
  }
  fileSize_ = static_cast<uint64_t>(st.st_size);
  bufferStart_ = 0;
  position_ = fill_ = 0;
  failed_ = false;
  return true;
}

void SideFileReader::Close() {
  if (fd_ >= 0) KELPDEX_CLOSE(fd_);
  fd_ = -1;
  buffer_.reset();
}

bool SideFileReader::Seek(uint64_t position) {
  if (position >= bufferStart_ && position <= bufferStart_ + fill_) {
    position_ = static_cast<size_t>(position - bufferStart_);
    return true;
  }
  if (position > fileSize_ || KELPDEX_SEEK(fd_, static_cast<int64_t>(position), SEEK_SET) < 0) {
    return false;
  }
  bufferStart_ = position;
  position_ = fill_ = 0;
  nextFill_ = kFirstFill;
  return true;
}

bool SideFileReader::Fill() {
  if (failed_) return false;
  // The bytes behind the buffer follow those in it: the file position is at its end.
  bufferStart_ += fill_;
  position_ = fill_ = 0;
  size_t want = std::min(nextFill_ == 0 ? kFirstFill : nextFill_, SideFile::kBufferSize);
  nextFill_ = std::min(want * 2, SideFile::kBufferSize);
  long got = ReadRaw(fd_, buffer_.get(), want);
  if (got < 0) {
    failed_ = true;
    return false;
  }
  fill_ = static_cast<size_t>(got);
  return fill_ > 0;
}

int SideFileReader::Peek() {
  if (position_ == fill_ && !Fill()) return -1;
  return buffer_[position_];
}

SideFileReader::Line SideFileReader::ReadLine(char* out, size_t max, size_t& length) {
  length = 0;
  if (Peek() < 0) return failed_ ? Line::kFailed : Line::kEnd;
  while (length < max) {
    if (position_ == fill_ && !Fill()) return failed_ ? Line::kFailed : Line::kRead;
    // Scan the buffer for the line's end in one go: this runs for every byte of a value.
    const uint8_t* start = buffer_.get() + position_;
    size_t room = std::min(fill_ - position_, max - length);
    size_t n = room;
    if (const void* cr = std::memchr(start, '\r', room))
      n = static_cast<const uint8_t*>(cr) - start;
    if (const void* lf = std::memchr(start, '\n', n)) n = static_cast<const uint8_t*>(lf) - start;
    std::memcpy(out + length, start, n);
    length += n;
    position_ += n;
    if (n < room) break;
  }
  int c = Peek();
  if (c == '\r') {
    ++position_;
    if (Peek() == '\n') ++position_;
  } else if (c == '\n') {
    ++position_;
  }
  return failed_ ? Line::kFailed : Line::kRead;
}

bool SideFileReader::ReadHeader(uint32_t offset, uint8_t kind) {
  char line[kPiece];
  size_t length = 0;
  uint32_t at = 0;
  uint8_t found = 0;
  if (offset >= fileSize_ || !Seek(offset)) return false;
  if (ReadLine(line, kPiece, length) != Line::kRead || !ParseHeader(line, length, at, found) ||
      at != offset || found != kind) {
    return false;
  }
  return ReadLine(line, kPiece, length) == Line::kRead && length == 0;
}

bool SideFileReader::ReadPayload(uint8_t*& data, uint32_t& size, ErrorCode& error) {
  data = nullptr;
  size = 0;
  char line[kPiece];
  size_t length = 0;
  const uint64_t mark = Tell();
  uint64_t characters = 0;
  for (;;) {
    Line got = ReadLine(line, kPiece, length);
    if (got != Line::kRead) {
      error = got == Line::kFailed ? err::kFileRead : err::kBinaryFields;
      return false;
    }
    if (length == 0) break;
    characters += length;
  }
  // A value's bytes must fit a u32 size.
  uint64_t capacity = characters / 4 * 3;
  if (characters % 4 != 0 || capacity > 0xffffffffu) {
    error = err::kBinaryFields;
    return false;
  }
  std::unique_ptr<uint8_t[]> block(new (std::nothrow) uint8_t[capacity == 0 ? 1 : capacity]);
  if (block == nullptr) {
    error = err::kOutOfMemory;
    return false;
  }
  if (!Seek(mark)) {
    error = err::kFileSeek;
    return false;
  }
  LineDecoder decoder(block.get(), capacity);
  for (;;) {
    if (ReadLine(line, kPiece, length) != Line::kRead) {
      error = err::kFileRead;
      return false;
    }
    if (length == 0) break;
    if (!decoder.Add(line, length)) {
      error = err::kBinaryFields;
      return false;
    }
  }
  if (!decoder.Finish()) {
    error = err::kBinaryFields;
    return false;
  }
  data = block.release();
  size = static_cast<uint32_t>(decoder.written());
  return true;
}

bool SideFileReader::ReadLongText(uint32_t offset, std::string& text, ErrorCode& error) {
  text.clear();
  if (!ReadHeader(offset, SideFile::kLongTextRecord)) {
    error = failed_ ? err::kFileRead : err::kBinaryFields;
    return false;
  }
  uint8_t* data = nullptr;
  uint32_t size = 0;
  if (!ReadPayload(data, size, error)) return false;
  std::unique_ptr<uint8_t[]> owned(data);
  text.assign(reinterpret_cast<const char*>(data), size);
  return true;
}

bool SideFileReader::ReadLongTextBase64(uint32_t offset, std::string& characters) {
  characters.clear();
  if (!ReadHeader(offset, SideFile::kLongTextRecord)) return false;
  char line[kPiece];
  size_t length = 0;
  for (;;) {
    if (ReadLine(line, kPiece, length) != Line::kRead) return false;
    if (length == 0) break;
    for (size_t i = 0; i < length; ++i) {
      char c = line[i];
      bool base64 = (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') || (c >= '0' && c <= '9') ||
                    c == '+' || c == '/' || c == '=';
      if (!base64) return false;
    }
    characters.append(line, length);
  }
  // Padding may stand only in the last two places; anything else is the decoder's to judge.
  size_t size = characters.size();
  if (size % 4 != 0) return false;
  size_t padding = characters.find('=');
  if (padding == std::string::npos) return true;
  return padding >= size - 2 && characters[size - 1] == '=' &&
         characters.find_first_not_of('=', padding) == std::string::npos;
}

bool SideFileReader::ReadObjects(uint32_t offset, BinaryObjectList& list, ErrorCode& error) {
  list.Clear();
  if (!ReadHeader(offset, SideFile::kObjectsRecord)) {
    error = failed_ ? err::kFileRead : err::kBinaryFields;
    return false;
  }
  char line[kNameLine];
  size_t length = 0;
  // The list ends with an empty line of its own: without it the record was cut.
  bool closed = false;
  for (;;) {
    Line got = ReadLine(line, kNameLine, length);
    if (got == Line::kFailed) {
      error = err::kFileRead;
      return false;
    }
    // The file's end, or the next record's header, ends the list. Only a whole header does: a
    // file's name may well begin with two hyphens.
    uint32_t nextOffset = 0;
    uint8_t nextKind = 0;
    if (got == Line::kEnd || ParseHeader(line, length, nextOffset, nextKind)) {
      if (closed) break;
      list.Clear();
      error = err::kBinaryFields;
      return false;
    }
    closed = length == 0;
    if (closed) continue;
    if (length == kNameLine) {
      error = err::kBinaryFields;
      return false;
    }
    std::string_view header(line, length);
    size_t semicolon = header.find(';');
    std::string_view name = header.substr(0, semicolon);
    std::string_view type;
    if (semicolon != std::string_view::npos) {
      // The first word behind the ';', as a scan with "%s" takes it.
      type = header.substr(semicolon + 1);
      size_t start = type.find_first_not_of(" \t");
      type = start == std::string_view::npos ? std::string_view() : type.substr(start);
      type = type.substr(0, type.find_first_of(" \t"));
    }
    uint8_t* data = nullptr;
    uint32_t size = 0;
    if (!ReadPayload(data, size, error)) return false;
    std::unique_ptr<uint8_t[]> owned(data);
    BinaryObjectItem* item = list.Append(name, type, std::string_view());
    if (item == nullptr) {
      error = err::kOutOfMemory;
      return false;
    }
    item->data = owned.release();
    item->size = size;
  }
  return true;
}

bool SideFileReader::ListRecords(std::vector<uint32_t>& offsets, ErrorCode& error) {
  offsets.clear();
  char line[kPiece];
  size_t length = 0;
  if (!Seek(0)) {
    error = err::kFileSeek;
    return false;
  }
  for (;;) {
    uint64_t at = Tell();
    Line got = ReadLine(line, kPiece, length);
    if (got == Line::kEnd) return true;
    if (got == Line::kFailed) {
      error = err::kFileRead;
      return false;
    }
    uint32_t offset = 0;
    uint8_t kind = 0;
    // A header tells its own offset: a line that only looks like one stands elsewhere.
    if (ParseHeader(line, length, offset, kind) && offset == at) offsets.push_back(offset);
  }
}

// --- writing ---

SideFileWriter::~SideFileWriter() {
  Abandon();
}

bool SideFileWriter::Open(const std::string& path, ErrorCode& error) {
  Abandon();
  buffer_.reset(new (std::nothrow) uint8_t[SideFile::kBufferSize]);
  if (buffer_ == nullptr) {
    error = err::kFileBuffer;
    return false;
  }
  fd_ = KELPDEX_OPEN(path.c_str(), O_WRONLY | O_CREAT | O_APPEND | kBinaryFlag, 0666);
  struct stat st;
  // A file marked read-only stays so, also for a user the system would let write it.
  if (fd_ >= 0 && (::fstat(fd_, &st) != 0 || (st.st_mode & (S_IWUSR | S_IWGRP | S_IWOTH)) == 0)) {
    KELPDEX_CLOSE(fd_);
    fd_ = -1;
  }
  if (fd_ < 0) {
    buffer_.reset();
    error = err::kFileOpenWrite;
    return false;
  }
  int64_t end = KELPDEX_SEEK(fd_, 0, SEEK_END);
  if (end < 0) {
    Abandon();
    error = err::kFileInfo;
    return false;
  }
  committed_ = size_ = static_cast<uint64_t>(end);
  used_ = 0;
  failed_ = false;
  return true;
}

bool SideFileWriter::Drain() {
  if (used_ > 0 && !failed_ && !WriteRaw(fd_, buffer_.get(), used_)) failed_ = true;
  // A compaction writes the whole file and syncs it: the disk starts on it as it is written.
  if (!failed_ && (unsynced_ += used_) >= kWritebackStep) {
    StartWriteback(fd_);
    unsynced_ = 0;
  }
  used_ = 0;
  return !failed_;
}

void SideFileWriter::Put(std::string_view bytes) {
  while (!bytes.empty()) {
    if (used_ == SideFile::kBufferSize && !Drain()) return;
    size_t n = std::min(bytes.size(), SideFile::kBufferSize - used_);
    std::memcpy(buffer_.get() + used_, bytes.data(), n);
    used_ += n;
    size_ += n;
    bytes.remove_prefix(n);
  }
}

void SideFileWriter::PutBase64(std::string_view bytes) {
  for (size_t at = 0; at < bytes.size(); at += kEncodeChunk) {
    scratch_.clear();
    text::AppendBase64Lines(scratch_, bytes.substr(at, kEncodeChunk));
    Put(scratch_);
  }
}

bool SideFileWriter::StartRecord(uint8_t kind, uint32_t& offset, ErrorCode& error) {
  if (fd_ < 0) {
    error = err::kFileWrite;
    return false;
  }
  if (size_ >= SideFile::kSizeLimit) {
    error = err::kSideFileTooLarge;
    return false;
  }
  offset = static_cast<uint32_t>(size_);
  char header[32];
  int n = std::snprintf(header, sizeof header, "--%010u %u\r\n\r\n", offset, kind);
  Put(std::string_view(header, static_cast<size_t>(n)));
  return true;
}

bool SideFileWriter::AppendLongText(std::string_view text, uint32_t& offset, ErrorCode& error) {
  if (!StartRecord(SideFile::kLongTextRecord, offset, error)) return false;
  PutBase64(text);
  Put("\r\n");
  if (failed_) error = err::kFileWrite;
  return !failed_;
}

bool SideFileWriter::AppendLongTextBase64(std::string_view characters, uint32_t& offset,
                                          ErrorCode& error) {
  if (!StartRecord(SideFile::kLongTextRecord, offset, error)) return false;
  // 76 characters a line, as 57 bytes encode to.
  constexpr size_t kLine = 76;
  for (size_t at = 0; at < characters.size(); at += kLine) {
    Put(characters.substr(at, kLine));
    Put("\r\n");
  }
  Put("\r\n");
  if (failed_) error = err::kFileWrite;
  return !failed_;
}

bool SideFileWriter::AppendObjects(const BinaryObjectItem* first, uint32_t& offset,
                                   ErrorCode& error) {
  if (!StartRecord(SideFile::kObjectsRecord, offset, error)) return false;
  for (const BinaryObjectItem* item = first; item != nullptr; item = item->next) {
    Put(item->name);
    Put("; ");
    Put(item->type);
    Put("\r\n");
    PutBase64(item->Bytes());
    Put("\r\n");
  }
  Put("\r\n");
  if (failed_) error = err::kFileWrite;
  return !failed_;
}

bool SideFileWriter::Commit(ErrorCode& error) {
  if (fd_ < 0 || !Drain()) {
    error = err::kFileWrite;
    return false;
  }
  committed_ = size_;
  return true;
}

bool SideFileWriter::Sync(ErrorCode& error) {
  if (!Commit(error)) return false;
  if (KELPDEX_SYNC(fd_) != 0) {
    error = err::kFileWrite;
    return false;
  }
  return true;
}

bool SideFileWriter::Close(ErrorCode& error) {
  if (fd_ < 0) return true;
  if (!Commit(error)) {
    Abandon();
    return false;
  }
  int closed = KELPDEX_CLOSE(fd_);
  fd_ = -1;
  buffer_.reset();
  if (closed != 0) {
    error = err::kFileClose;
    return false;
  }
  return true;
}

void SideFileWriter::Abandon() {
  if (fd_ < 0) return;
  // Whatever part of a record reached the file goes again: the file ends at the last record
  // that was completed.
  if (size_ != committed_ || failed_) {
    if (KELPDEX_CUT(fd_, committed_) != 0) failed_ = true;
  }
  KELPDEX_CLOSE(fd_);
  fd_ = -1;
  used_ = 0;
  size_ = committed_;
  buffer_.reset();
}

}  // namespace kelpdex
