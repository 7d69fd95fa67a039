#include "persist/old_drop_downs.h"

#include <cstring>
#include <vector>

#include "persist/file_stream.h"
#include "store/bytes.h"

namespace kelpdex {

namespace {

constexpr char kMagic[] = "Kelpdex5400";
constexpr size_t kListRecordSize = 60;
constexpr size_t kMaxLine = 1024;

}  // namespace

std::string OldDropDownPath(const std::string& documentPath) {
  size_t slash = documentPath.find_last_of("/\\");
  size_t dot = documentPath.find_last_of('.');
  if (dot == std::string::npos || (slash != std::string::npos && dot < slash)) {
    return documentPath + ".dat";
  }
  return documentPath.substr(0, dot) + ".dat";
}

bool ReadOldDropDownFile(const std::string& documentPath, Workbook& book) {
  FileStream file;
  if (!file.Open(OldDropDownPath(documentPath), StreamMode::kRead, false, 65536)) {
    return file.error() == err::kFileOpenRead;  // no file: nothing to add
  }
  uint8_t head[24];
  if (!file.Read(head, sizeof head) || std::memcmp(head, kMagic, 11) != 0) return false;
  uint32_t position = LoadU32(head + 16);
  if (position != 0) {
    if (position < sizeof head || !file.Skip(position - sizeof head)) return false;
  }
  uint8_t word[4];
  if (!file.Read(word, 4)) return false;
  uint32_t lists = LoadU32(word);
  for (uint32_t i = 0; i < lists; ++i) {
    uint8_t record[kListRecordSize];
    if (!file.Read(record, sizeof record) || !file.Read(word, 4)) return false;
    uint32_t number = LoadU32(record + kListRecordSize - 4);
    uint32_t bytes = LoadU32(word);
    // A number out of range keeps its bytes to itself: they are read and dropped.
    DropDownList* list =
        number >= 1 && number <= kDropDownListSlots ? &book.dropDownLists[number - 1] : nullptr;
    if (list != nullptr && !list->used) {
      list->used = true;
      size_t nameLength = strnlen(reinterpret_cast<const char*>(record), kListRecordSize - 4);
      list->name = nameLength > 0 ? std::string(reinterpret_cast<const char*>(record), nameLength)
                                  : "List " + std::to_string(number) + ".";
    }
    std::string line;
    bool lastWasCr = false;
    for (uint32_t k = 0; k < bytes; ++k) {
      int c = file.Next();
      if (c < 0) return false;
      bool end = c == '\r' || c == '\n' || c == 0;
      if (end) {
        bool pairEnd = c == '\n' && lastWasCr;  // CR LF counts as one end
        if (!pairEnd && !line.empty() && list != nullptr) list->items.push_back(line);
        line.clear();
      } else if (line.size() < kMaxLine) {
        line += static_cast<char>(c);
      }
      lastWasCr = c == '\r';
    }
    if (!line.empty() && list != nullptr) list->items.push_back(line);
  }
  return true;
}

}  // namespace kelpdex
