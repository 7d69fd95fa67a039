// Any bytes as a text file, read under options taken from the first bytes: separator, quote,
// fixed widths, encoding, the numbers rule and the header line. A table or an error code, never a
// crash, a leak or a half-made document.
#include <unistd.h>

#include <cstdint>
#include <cstdio>
#include <string>

#include "exchange/text_exchange.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  if (size < 3) return 0;
  static const std::string path = "/tmp/kelpdex_fuzz_text_" + std::to_string(getpid()) + ".csv";
  kelpdex::TextFileOptions options;
  static const char kSeparators[] = {',', '\t', '.', ';', ' ', '|', '"', '\n'};
  options.separator = kSeparators[data[0] & 7];
  options.quote = (data[0] & 8) ? '\'' : '"';
  options.numbers = (data[0] & 16) != 0;
  options.headerLine = (data[0] & 32) != 0;
  options.fixedWidths = (data[0] & 64) != 0;
  options.encoding = static_cast<kelpdex::TextEncoding>(1 + data[1] % 3);
  for (size_t i = 0; i < 8; ++i)
    options.widths[i] = static_cast<uint16_t>((data[2] >> i) & 1 ? i + 1 : 3);
  FILE* f = std::fopen(path.c_str(), "wb");
  if (f == nullptr) return 0;
  std::fwrite(data + 3, 1, size - 3, f);
  std::fclose(f);
  kelpdex::Workbook book;
  kelpdex::TextImportReport report;
  if (!kelpdex::ImportText(book, path, options, &report) && book.firstNode != nullptr)
    __builtin_trap();
  return 0;
}
