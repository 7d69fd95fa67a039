// Any bytes as a binary document: the reader must end in an error code or a whole document,
// never in a crash, a leak or an endless loop. Most inputs are read with the password the
// protected seeds were saved under, so that the password check, the head and the enciphered
// stream are reached too.
#include <unistd.h>

#include <cstdint>
#include <cstdio>
#include <string>

#include "persist/binary_format.h"
#include "store/workbook.h"

namespace {

std::string InputPath() {
  return "/tmp/kelpdex_fuzz_binary_" + std::to_string(getpid()) + ".kpx";
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  static const std::string path = InputPath();
  FILE* f = std::fopen(path.c_str(), "wb");
  if (f == nullptr) return 0;
  std::fwrite(data, 1, size, f);
  std::fclose(f);
  kelpdex::FileStream in;
  if (!in.Open(path, kelpdex::StreamMode::kRead, true, 4096)) return 0;
  kelpdex::Workbook book;
  // Inputs of odd length go without it, so that a read-only copy is also read on its own.
  const char* password = size % 2 == 0 ? "fuzz-secret" : nullptr;
  if (kelpdex::ReadBinaryDocument(in, book, password, path)) {
    // A document that loaded must save again.
    kelpdex::FileStream out;
    if (out.Open(path + ".out", kelpdex::StreamMode::kWrite, false)) {
      kelpdex::WriteBinaryDocument(out, book);
    }
  }
  return 0;
}
