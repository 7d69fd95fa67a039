// Any bytes as a native XML document: an error code with its line, or a whole document that saves
// again, never a crash, a leak or an endless loop.
#include <unistd.h>

#include <cstdint>
#include <cstdio>
#include <string>

#include "persist/native_xml.h"
#include "store/workbook.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  static const std::string path = "/tmp/kelpdex_fuzz_xml_" + std::to_string(getpid()) + ".xml";
  FILE* f = std::fopen(path.c_str(), "wb");
  if (f == nullptr) return 0;
  std::fwrite(data, 1, size, f);
  std::fclose(f);
  kelpdex::FileStream in;
  if (!in.Open(path, kelpdex::StreamMode::kRead, true, 4096)) return 0;
  kelpdex::Workbook book;
  int line = 0;
  if (kelpdex::ReadXmlDocument(in, book, &line)) {
    kelpdex::FileStream out;
    if (out.Open(path + ".out", kelpdex::StreamMode::kWrite, false)) {
      kelpdex::WriteXmlDocument(out, book);
    }
  }
  return 0;
}
