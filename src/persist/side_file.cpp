#include "persist/side_file.h"

#include <algorithm>
#include <cstring>
#include <new>

#include "persist/side_file_io.h"
#include "platform/os.h"
#include "store/bytes.h"

namespace kelpdex {

namespace {

// Copies `text` into a fixed field, cut to fit with its terminator, keeping the header line one
// line (and the type one word).
void CopyField(char* field, size_t fieldSize, std::string_view text, bool oneWord) {
  size_t n = std::min(text.size(), fieldSize - 1);
  for (size_t i = 0; i < n; ++i) {
    char c = text[i];
    bool breaks = c == '\r' || c == '\n' || c == '\0' || (oneWord && (c == ' ' || c == '\t'));
    field[i] = breaks ? '_' : c;
  }
  field[n] = '\0';
}

}  // namespace

BinaryObjectList::BinaryObjectList(BinaryObjectList&& other) noexcept
    : first_(other.first_), last_(other.last_), count_(other.count_) {
  other.first_ = other.last_ = nullptr;
  other.count_ = 0;
}

BinaryObjectList& BinaryObjectList::operator=(BinaryObjectList&& other) noexcept {
  if (this != &other) {
    Clear();
    std::swap(first_, other.first_);
    std::swap(last_, other.last_);
    std::swap(count_, other.count_);
  }
  return *this;
}

BinaryObjectItem* BinaryObjectList::Append(std::string_view name, std::string_view type,
                                           std::string_view bytes) {
  if (bytes.size() > 0xffffffffu) return nullptr;
  auto* item = new (std::nothrow) BinaryObjectItem;
  if (item == nullptr) return nullptr;
  if (!bytes.empty()) {
    item->data = new (std::nothrow) uint8_t[bytes.size()];
    if (item->data == nullptr) {
      delete item;
      return nullptr;
    }
    std::memcpy(item->data, bytes.data(), bytes.size());
    item->size = static_cast<uint32_t>(bytes.size());
  }
  // The file ends a name at its first ';': what follows would be read as the type.
  CopyField(item->name, BinaryObjectItem::kNameSize, name.substr(0, name.find(';')), false);
  // A name that reads as a record's header would end the list there and lose the files behind.
  if (IsRecordHeader(item->name)) item->name[0] = '_';
  CopyField(item->type, BinaryObjectItem::kTypeSize, type, true);
  if (last_ == nullptr) {
    first_ = item;
  } else {
    last_->next = item;
  }
  last_ = item;
  ++count_;
  return item;
}

void BinaryObjectList::Clear() {
  // Iteratively: a list read from a damaged file may be long.
  while (first_ != nullptr) {
    BinaryObjectItem* next = first_->next;
    delete[] first_->data;
    delete first_;
    first_ = next;
  }
  last_ = nullptr;
  count_ = 0;
}

// Packed: per item the name and the type each ended by a zero byte, a u32 size and the bytes.
std::string PackObjects(const BinaryObjectList& list) {
  std::string packed;
  for (const BinaryObjectItem* item = list.first(); item != nullptr; item = item->next) {
    packed.append(item->name, std::strlen(item->name) + 1);
    packed.append(item->type, std::strlen(item->type) + 1);
    uint8_t size[4];
    StoreU32(size, item->size);
    packed.append(reinterpret_cast<const char*>(size), 4);
    packed.append(item->Bytes());
  }
  return packed;
}

bool UnpackObjects(std::string_view packed, BinaryObjectList& list) {
  list.Clear();
  while (!packed.empty()) {
    size_t nameEnd = packed.find('\0');
    if (nameEnd == std::string_view::npos) return false;
    size_t typeEnd = packed.find('\0', nameEnd + 1);
    if (typeEnd == std::string_view::npos || packed.size() - typeEnd - 1 < 4) return false;
    uint32_t size = LoadU32(reinterpret_cast<const uint8_t*>(packed.data() + typeEnd + 1));
    size_t start = typeEnd + 5;
    if (packed.size() - start < size) return false;
    if (list.Append(packed.substr(0, nameEnd), packed.substr(nameEnd + 1, typeEnd - nameEnd - 1),
                    packed.substr(start, size)) == nullptr) {
      return false;
    }
    packed.remove_prefix(start + size);
  }
  return true;
}

namespace {

// The limit is told by the size before the append, so the check needs no open for writing.
bool CheckLimit(const std::string& path, ErrorCode& error) {
  uint64_t size = 0;
  if (platform::FileExists(path) && platform::GetFileSize(path, size) &&
      size >= SideFile::kSizeLimit) {
    error = err::kSideFileTooLarge;
    return false;
  }
  return true;
}

template <typename Append>
bool AppendRecord(const std::string& path, ErrorCode& error, Append append) {
  if (!CheckLimit(path, error)) return false;
  SideFileWriter writer;
  if (!writer.Open(path, error)) return false;
  if (!append(writer)) {
    writer.Abandon();
    return false;
  }
  return writer.Close(error);
}

}  // namespace

bool SideFile::AppendLongText(const std::string& path, std::string_view text, uint32_t& offset,
                              ErrorCode& error) {
  return AppendRecord(path, error, [&](SideFileWriter& writer) {
    return writer.AppendLongText(text, offset, error);
  });
}

bool SideFile::AppendObjects(const std::string& path, const BinaryObjectItem* first,
                             uint32_t& offset, ErrorCode& error) {
  return AppendRecord(path, error, [&](SideFileWriter& writer) {
    return writer.AppendObjects(first, offset, error);
  });
}

bool SideFile::ReadLongText(const std::string& path, uint32_t offset, std::string& text,
                            ErrorCode& error) {
  SideFileReader reader;
  return reader.Open(path, error) && reader.ReadLongText(offset, text, error);
}

bool SideFile::ReadObjects(const std::string& path, uint32_t offset, BinaryObjectList& list,
                           ErrorCode& error) {
  SideFileReader reader;
  if (reader.Open(path, error) && reader.ReadObjects(offset, list, error)) return true;
  list.Clear();
  return false;
}

bool SideFile::ListRecords(const std::string& path, std::vector<uint32_t>& offsets,
                           ErrorCode& error) {
  SideFileReader reader;
  return reader.Open(path, error) && reader.ListRecords(offsets, error);
}

}  // namespace kelpdex
