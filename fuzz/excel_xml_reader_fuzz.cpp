// Any bytes as an Excel 2003 XML file, read as a database or, by the first byte, with each
// worksheet as a table. A workbook or an error code, never a crash, a leak or a half-made document.
#include <unistd.h>

#include <cstdint>
#include <cstdio>
#include <string>

#include "exchange/excel_xml.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  if (size < 1) return 0;
  static const std::string path = "/tmp/kelpdex_fuzz_excel_" + std::to_string(getpid()) + ".xml";
  const auto mode =
      (data[0] & 1) ? kelpdex::ExcelXmlMode::kWorksheetsAsTables : kelpdex::ExcelXmlMode::kDatabase;
  FILE* f = std::fopen(path.c_str(), "wb");
  if (f == nullptr) return 0;
  std::fwrite(data + 1, 1, size - 1, f);
  std::fclose(f);
  kelpdex::Workbook book;
  int line = 0;
  if (!kelpdex::ImportExcelXml(book, path, mode, &line) && book.firstNode != nullptr)
    __builtin_trap();
  return 0;
}
