// Any bytes as a .dbf and its memo file: the first byte picks the dialect and the code page, the
// next two how many of the rest belong to the memo file. A table or an error code, never a crash,
// a leak or a half-made document.
#include <unistd.h>

#include <cstdint>
#include <cstdio>
#include <string>

#include "exchange/xbase.h"

namespace {
void WriteFile(const std::string& path, const uint8_t* data, size_t size) {
  FILE* f = std::fopen(path.c_str(), "wb");
  if (f == nullptr) return;
  std::fwrite(data, 1, size, f);
  std::fclose(f);
}
}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  if (size < 3) return 0;
  static const std::string base = "/tmp/kelpdex_fuzz_xbase_" + std::to_string(getpid());
  kelpdex::XbaseImportOptions options;
  options.dialect = static_cast<kelpdex::XbaseDialect>(3 + data[0] % 4);
  options.oem = (data[0] & 4) != 0;
  size_t memoSize = static_cast<size_t>(data[1]) << 8 | data[2];
  data += 3;
  size -= 3;
  if (memoSize > size) memoSize = size;
  std::string path = base + ".dbf";
  WriteFile(path, data + memoSize, size - memoSize);
  // Both memo names, so that whichever dialect the header names finds its file.
  WriteFile(base + ".dbt", data, memoSize);
  WriteFile(base + ".ftp", data, memoSize);
  std::remove((base + ".tx2").c_str());
  kelpdex::Workbook book;
  if (!kelpdex::ImportXbase(book, path, options) && book.firstNode != nullptr) __builtin_trap();
  return 0;
}
