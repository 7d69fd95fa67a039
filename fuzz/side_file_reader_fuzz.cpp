// Any bytes as a side file: every record its headers point to, and every offset a cell could
// hold near them, read as Long Text and as files. An error code or a value, never a crash, a
// leak or an endless loop.
#include <unistd.h>

#include <cstdint>
#include <cstdio>
#include <string>
#include <vector>

#include "persist/side_file.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  static const std::string path = "/tmp/kelpdex_fuzz_side_" + std::to_string(getpid()) + ".tx2";
  FILE* f = std::fopen(path.c_str(), "wb");
  if (f == nullptr) return 0;
  std::fwrite(data, 1, size, f);
  std::fclose(f);
  kelpdex::ErrorCode error = kelpdex::err::kNone;
  std::vector<uint32_t> offsets;
  kelpdex::SideFile::ListRecords(path, offsets, error);
  // Offsets beside the records too: into their middle and past the end.
  std::vector<uint32_t> tried = {0, 1, static_cast<uint32_t>(size),
                                 static_cast<uint32_t>(size / 2)};
  for (size_t i = 0; i < offsets.size() && i < 64; ++i) {
    tried.push_back(offsets[i]);
    tried.push_back(offsets[i] + 1);
  }
  std::string text;
  kelpdex::BinaryObjectList list;
  for (uint32_t offset : tried) {
    kelpdex::SideFile::ReadLongText(path, offset, text, error);
    kelpdex::SideFile::ReadObjects(path, offset, list, error);
  }
  return 0;
}
