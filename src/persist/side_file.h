// The side file (".tx2") beside a document: Long Text and Images/Files values as text records,
// appended and never rewritten in place. A record starts with the line "--NNNNNNNNNN K" that
// repeats its own offset N and its kind K (1 Long Text, 2 files); its payload is Base64 in lines
// of 76 characters, so that a damaged file can still be read with any editor.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "core/error_code.h"

namespace kelpdex {

// One file of an Images/Files value; the list it stands in owns it and its bytes.
struct BinaryObjectItem {
  static constexpr size_t kNameSize = 260;
  static constexpr size_t kTypeSize = 52;
  char name[kNameSize] = {};  // as shown; a ';' cannot be kept, since the file ends a name there
  char type[kTypeSize] = {};  // one word without blanks, set by whoever adds the object
  uint32_t size = 0;
  uint8_t* data = nullptr;
  BinaryObjectItem* next = nullptr;

  std::string_view Bytes() const { return {reinterpret_cast<const char*>(data), size}; }
};

class BinaryObjectList {
 public:
  BinaryObjectList() = default;
  ~BinaryObjectList() { Clear(); }
  BinaryObjectList(const BinaryObjectList&) = delete;
  BinaryObjectList& operator=(const BinaryObjectList&) = delete;
  BinaryObjectList(BinaryObjectList&& other) noexcept;
  BinaryObjectList& operator=(BinaryObjectList&& other) noexcept;

  // Appends a copy of the bytes. The name is cut at 259 bytes and the type at 51; line breaks in
  // either, and blanks in the type, become '_' so that the header line stays one line. Null when
  // memory is exhausted.
  BinaryObjectItem* Append(std::string_view name, std::string_view type, std::string_view bytes);
  void Clear();

  BinaryObjectItem* first() const { return first_; }
  size_t count() const { return count_; }

 private:
  BinaryObjectItem* first_ = nullptr;
  BinaryObjectItem* last_ = nullptr;
  size_t count_ = 0;
};

// A list of objects as one string and back, for values that wait in a sheet's pending list.
std::string PackObjects(const BinaryObjectList& list);
bool UnpackObjects(std::string_view packed, BinaryObjectList& list);

class SideFile {
 public:
  // An append to a file of this size or more fails with 74 before a byte is written; a record
  // may carry the file beyond it, and only the next append fails.
  static constexpr uint64_t kSizeLimit = 0x7fffffff;
  static constexpr size_t kBufferSize = 524228;
  static constexpr uint8_t kLongTextRecord = 1;
  static constexpr uint8_t kObjectsRecord = 2;

  // Each call opens the file, creating it for the first append, and closes it again; `offset`
  // is where the new record starts, the size of the file before. A failed append leaves the file
  // as it was. Codes: 61 cannot open, 65 write, 74 too large, 67 no size.
  static bool AppendLongText(const std::string& path, std::string_view text, uint32_t& offset,
                             ErrorCode& error);
  static bool AppendObjects(const std::string& path, const BinaryObjectItem* first,
                            uint32_t& offset, ErrorCode& error);

  // Reads the record at `offset`. A missing file gives 60; an offset past the end, into the
  // middle of a record or at a record of the other kind, a cut record or a payload that is not
  // Base64 give 72; 21 when the bytes do not fit in memory.
  static bool ReadLongText(const std::string& path, uint32_t offset, std::string& text,
                           ErrorCode& error);
  static bool ReadObjects(const std::string& path, uint32_t offset, BinaryObjectList& list,
                          ErrorCode& error);

  // The offsets of the records, found by their header lines from the start of the file. A
  // damaged part is passed over to the next line that reads as a header.
  static bool ListRecords(const std::string& path, std::vector<uint32_t>& offsets,
                          ErrorCode& error);
};

}  // namespace kelpdex
