// The side file's reader and writer, which SideFile opens for one record and compaction keeps
// open across all of them.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "core/error_code.h"
#include "persist/side_file.h"

namespace kelpdex {

// Whether a line is a record's header line, "--NNNNNNNNNN K", which ends an object list.
bool IsRecordHeader(std::string_view line);

class SideFileReader {
 public:
  // A Base64 line is read in pieces of at most this many characters, a multiple of 4.
  static constexpr size_t kPiece = 72;
  // An object's header line, "<name>; <type>", is read whole up to this length.
  static constexpr size_t kNameLine = 1024;

  SideFileReader() = default;
  ~SideFileReader();
  SideFileReader(const SideFileReader&) = delete;
  SideFileReader& operator=(const SideFileReader&) = delete;

  // 60 when the file cannot be opened, 68 without a buffer.
  bool Open(const std::string& path, ErrorCode& error);
  void Close();

  bool ReadLongText(uint32_t offset, std::string& text, ErrorCode& error);
  bool ReadObjects(uint32_t offset, BinaryObjectList& list, ErrorCode& error);
  // The Base64 characters of the Long Text record at `offset`, joined without their line ends
  // and checked to decode, so that a copy need not decode and encode them again. False for
  // anything ReadLongText might refuse or read otherwise; it then says why.
  bool ReadLongTextBase64(uint32_t offset, std::string& characters);
  bool ListRecords(std::vector<uint32_t>& offsets, ErrorCode& error);

 private:
  enum class Line { kRead, kEnd, kFailed };
  // One line of at most `max` characters, without its end: CR, LF or CR LF. A piece that fills
  // `max` takes a line end that follows at once, so that a full line is never followed by an
  // empty one.
  Line ReadLine(char* out, size_t max, size_t& length);
  bool Seek(uint64_t position);
  uint64_t Tell() const { return bufferStart_ + position_; }
  int Peek();
  bool Fill();
  // The header line and the empty line behind it; false when they are not those of a record of
  // `kind` at `offset`.
  bool ReadHeader(uint32_t offset, uint8_t kind);
  // Decodes the Base64 lines from the read position up to the empty line that ends them into a
  // new block of `size` bytes: one pass to size it, one to decode.
  bool ReadPayload(uint8_t*& data, uint32_t& size, ErrorCode& error);

  int fd_ = -1;
  uint64_t fileSize_ = 0;
  std::unique_ptr<uint8_t[]> buffer_;
  uint64_t bufferStart_ = 0;  // the file position of buffer_[0]
  size_t position_ = 0;
  size_t fill_ = 0;
  size_t nextFill_ = 0;  // grows while reading goes on from one fill to the next
  bool failed_ = false;  // a read of the system failed: 64
};

class SideFileWriter {
 public:
  SideFileWriter() = default;
  ~SideFileWriter();
  SideFileWriter(const SideFileWriter&) = delete;
  SideFileWriter& operator=(const SideFileWriter&) = delete;

  // Opens for appending, creating the file; `size` is where the next record goes. 61 when the
  // file cannot be opened, 67 when its size cannot be had, 68 without a buffer.
  bool Open(const std::string& path, ErrorCode& error);
  // Each fails with 74 when the file has reached the limit, before writing anything.
  bool AppendLongText(std::string_view text, uint32_t& offset, ErrorCode& error);
  bool AppendObjects(const BinaryObjectItem* first, uint32_t& offset, ErrorCode& error);
  // A Long Text record from characters that ReadLongTextBase64 gave.
  bool AppendLongTextBase64(std::string_view characters, uint32_t& offset, ErrorCode& error);
  // Writes what is buffered and closes; on a failure the file is cut back to its size at Open
  // (or at the last Commit), so that no part of a record stays. 65 or 62.
  bool Close(ErrorCode& error);
  // Writes out what is buffered and makes it stay even if a later record fails.
  bool Commit(ErrorCode& error);
  // Waits until the bytes are on the disk.
  bool Sync(ErrorCode& error);
  // Cuts the file back to the last commit and closes it.
  void Abandon();
  uint64_t size() const { return size_; }

 private:
  bool StartRecord(uint8_t kind, uint32_t& offset, ErrorCode& error);
  void Put(std::string_view bytes);
  void PutBase64(std::string_view bytes);
  bool Drain();

  int fd_ = -1;
  uint64_t committed_ = 0;  // the file's size that a failure returns to
  uint64_t size_ = 0;       // including what is buffered
  std::unique_ptr<uint8_t[]> buffer_;
  size_t used_ = 0;
  static constexpr uint64_t kWritebackStep = 4u << 20;
  uint64_t unsynced_ = 0;  // written since the disk was last set to work on it
  std::string scratch_;
  bool failed_ = false;
};

}  // namespace kelpdex
