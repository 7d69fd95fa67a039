// dBase III+, dBase IV, FoxPro 2.x and Clipper tables (.dbf) with their memo files: a file read
// as a new database of one table, and a table written as a file.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "core/error_code.h"
#include "persist/file_stream.h"
#include "store/workbook.h"

namespace kelpdex {

// The numbers are the document kinds of the four dialects.
enum class XbaseDialect : uint8_t { kDbase3 = 3, kDbase4 = 4, kFoxPro = 5, kClipper = 6 };

// One field as a descriptor holds it. `length` is the whole length: in FoxPro and Clipper a
// character field's decimal byte is the high byte of its length.
struct XbaseField {
  std::string name;  // at most 10 characters
  char type = 'C';
  uint16_t length = 1;
  uint8_t decimals = 0;
};

// The first 32 bytes and the descriptors of a .dbf.
struct XbaseHeader {
  uint8_t version = 3;
  uint8_t year = 0;  // minus 1900
  uint8_t month = 1;
  uint8_t day = 1;
  uint32_t recordCount = 0;
  uint16_t headerSize = 0;
  uint16_t recordSize = 0;
  uint8_t transaction = 0;
  uint8_t encryption = 0;
  uint8_t tableFlags = 0;
  uint8_t languageDriver = 0;
  std::vector<XbaseField> fields;
};

constexpr uint32_t kXbaseHeaderSize = 32;
constexpr uint32_t kXbaseDescriptorSize = 32;
constexpr uint16_t kXbaseMaxFields = 2047;

// Bytes a field takes in a record.
uint32_t XbaseFieldSize(const XbaseField& field);
// The memo file's path: the .dbf's extension replaced by ".dbt" or ".ftp".
std::string XbaseMemoPath(const std::string& path, XbaseDialect dialect);
// The dialect a header's version byte names; `asked` where the byte fits several.
XbaseDialect XbaseDialectOfVersion(uint8_t version, XbaseDialect asked);

// Reads the header and the descriptors and leaves the stream at the first record. 33 for a cut
// header, a size that does not fit the descriptors, no field or more than 2,047.
bool ReadXbaseHeader(FileStream& in, XbaseHeader& header, ErrorCode& error);
// The 32 bytes and the descriptors, the CR and the zeros up to the header size.
void WriteXbaseHeader(FileStream& out, const XbaseHeader& header);

struct XbaseImportOptions {
  XbaseDialect dialect = XbaseDialect::kDbase4;
  bool oem = false;  // texts are in code page 850
};

// Reads the .dbf at `path` (and its memo file) into `book`, which must hold no document, as one
// table named after the file. Memos go to the side file beside `path`. Deleted records are kept,
// their cells red. False with the book's errorCode set and the book empty again; a cancel through
// the progress sink fails with no code and leaves the side file as it was.
// `dialectRead`, when given, receives the dialect the header named, which may differ from the one
// asked for, so that a later save writes the file's own kind.
bool ImportXbase(Workbook& book, const std::string& path, const XbaseImportOptions& options,
                 XbaseDialect* dialectRead = nullptr);

// One field of an export: the field list the export dialog edits.
struct XbaseExportField {
  XbaseField field;
  uint16_t column = 0;  // the table's field it takes its values from
};

struct XbaseExportOptions {
  XbaseDialect dialect = XbaseDialect::kDbase4;
  bool oem = false;
  // Empty: the fields BuildXbaseHeader makes of the table.
  std::vector<XbaseExportField> fields;
};

// The header of an export of the current table: one field per table field, named and typed from
// the catalogue, the record count that of the record set in force. 44 without a table, 100 when
// the record or the header would be too large.
bool BuildXbaseHeader(const Workbook& book, XbaseHeader& header, XbaseDialect dialect,
                      std::vector<XbaseExportField>* fields, ErrorCode& error);

// Writes the records of the current record set, a red first cell as a deleted record, and the
// memo file when a field is a memo. Both files are replaced only when complete.
bool ExportXbase(const Workbook& book, const std::string& path, const XbaseExportOptions& options,
                 ErrorCode& error);

// Memo files.
class XbaseMemoReader {
 public:
  // A missing memo file reads every memo as empty.
  XbaseMemoReader(const std::string& path, XbaseDialect dialect);
  ~XbaseMemoReader();
  XbaseMemoReader(const XbaseMemoReader&) = delete;
  XbaseMemoReader& operator=(const XbaseMemoReader&) = delete;
  // The memo at `block`; 64 when it runs past the end of the file.
  bool Read(uint32_t block, std::string& text, ErrorCode& error);

 private:
  bool ReadAt(uint64_t at, uint8_t* out, size_t size);

  int fd_ = -1;
  XbaseDialect dialect_;
  uint64_t size_ = 0;
  uint32_t blockSize_ = 512;
};

// A memo file built in memory and written at the end, when its header knows the next free block.
class XbaseMemoWriter {
 public:
  XbaseMemoWriter(XbaseDialect dialect, const std::string& tableName);
  // Appends a memo and returns its block number.
  uint32_t Append(std::string_view text);
  // The file's bytes with the next free block in its header.
  const std::string& Finish();

 private:
  XbaseDialect dialect_;
  uint32_t blockSize_;
  std::string bytes_;
};

}  // namespace kelpdex
