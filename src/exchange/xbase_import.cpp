#include <charconv>
#include <cstring>
#include <vector>

#include "core/progress.h"
#include "exchange/import_table.h"
#include "exchange/xbase.h"
#include "format/generic_date.h"
#include "persist/document_file.h"
#include "persist/side_file_io.h"
#include "platform/os.h"
#include "store/bytes.h"
#include "text/oem.h"

namespace kelpdex {

namespace {

constexpr uint8_t kValueError = 0x70;  // "#VALUE!" on a date that is no date
constexpr uint32_t kRed = 255;
constexpr uint16_t kLongCharacterField = 1024;

FieldType TypeOfLetter(const XbaseField& field, bool& link) {
  link = false;
  switch (field.type) {
    case 'C':
      if (field.length > kLongCharacterField) return FieldType::kLongText;
      link = true;
      return FieldType::kText;
    case 'F':
    case 'I':
    case 'N':
    case 'Y':
      return FieldType::kNumber;
    case 'M':
      return FieldType::kLongText;
    default:
      link = true;
      return FieldType::kText;
  }
}

std::string_view RightTrimmed(const uint8_t* bytes, size_t size) {
  while (size > 0 && (bytes[size - 1] == ' ' || bytes[size - 1] == 0)) --size;
  return std::string_view(reinterpret_cast<const char*>(bytes), size);
}

std::string_view Trimmed(const uint8_t* bytes, size_t size) {
  std::string_view s = RightTrimmed(bytes, size);
  while (!s.empty() && s.front() == ' ') s.remove_prefix(1);
  return s;
}

uint32_t Digits(std::string_view s, bool& ok) {
  uint32_t value = 0;
  ok = !s.empty();
  for (char c : s) {
    if (c < '0' || c > '9' || value > 400000000u) {
      ok = false;
      return 0;
    }
    value = value * 10 + static_cast<uint32_t>(c - '0');
  }
  return value;
}

class XbaseReader {
 public:
  XbaseReader(ImportedTable& table, const XbaseHeader& header, const XbaseImportOptions& options,
              XbaseDialect dialect, const std::string& path)
      : table_(table),
        header_(header),
        options_(options),
        memos_(XbaseMemoPath(path, dialect), dialect),
        sidePath_(SideFilePath(path)) {}
  ~XbaseReader() {
    if (sideOpen_) Abandon();
  }

  bool Read(FileStream& in);
  // Makes the side file's new records stay.
  bool Commit(ErrorCode& error) {
    if (!sideOpen_) return true;
    sideOpen_ = false;
    return side_.Close(error);
  }

 private:
  Workbook& book() { return *table_.book(); }
  bool Fail(ErrorCode code) {
    book().errorCode = code;
    return false;
  }
  bool Field(uint32_t row, uint16_t column, const XbaseField& field, const uint8_t* bytes);
  bool LongText(uint32_t row, uint16_t column, std::string_view text);
  bool MarkDeleted(uint32_t row);
  void Abandon() {
    side_.Abandon();
    if (!sideExisted_) platform::DeleteFile(sidePath_);
  }

  ImportedTable& table_;
  const XbaseHeader& header_;
  const XbaseImportOptions& options_;
  XbaseMemoReader memos_;
  std::string sidePath_;
  SideFileWriter side_;
  bool sideOpen_ = false;
  bool sideExisted_ = false;
  int redStyle_ = -1;
  std::string text_;
};

bool XbaseReader::Read(FileStream& in) {
  std::vector<uint8_t> record(header_.recordSize);
  uint32_t row = 0;
  for (;;) {
    size_t n = in.ReadSome(record.data(), record.size());
    // A record cut by the end of the file is dropped with it; the count in the header is not
    // trusted, the bytes are.
    if (n == 0 || record[0] == 0x1A || n < record.size()) break;
    if (row >= kRowLimit) break;
    if ((row & 0xFFF) == 0xFFF && ProgressCancelled()) return false;
    const uint8_t* at = record.data() + 1;
    for (size_t i = 0; i < header_.fields.size(); ++i) {
      const XbaseField& field = header_.fields[i];
      if (!Field(row, static_cast<uint16_t>(i), field, at)) return false;
      at += field.length;
    }
    if (record[0] == '*' && !MarkDeleted(row)) return false;
    ++row;
  }
  if (!in.ok()) return Fail(in.error());
  return true;
}

bool XbaseReader::MarkDeleted(uint32_t row) {
  if (redStyle_ < 0) {
    // The table's default style in red: what the user sees of a deleted record, and what an
    // export turns back into the delete flag.
    StyleRecord red = book().styles.Style(0);
    // The native XML form keeps a font colour only with the style's font reference.
    red.bytes[style::kFontSetAt] = 1;
    red.bytes[style::kFontColourSetAt] = 1;
    StoreU32(red.bytes + style::kFontColourAt, kRed);
    uint16_t id = 0;
    ErrorCode error = err::kNone;
    if (!book().styles.FindOrAddStyle(red, id, error)) return Fail(error);
    redStyle_ = id;
  }
  StyleRun run;
  run.firstColumn = 0;
  run.lastColumn = static_cast<uint16_t>(header_.fields.size() - 1);
  run.row = row;
  run.styleId = static_cast<uint16_t>(redStyle_);
  if (!table_.table().data->formats.ApplyStyleRun(run)) return Fail(err::kOutOfMemory);
  return true;
}

bool XbaseReader::LongText(uint32_t row, uint16_t column, std::string_view text) {
  if (text.empty()) return true;
  ErrorCode error = err::kNone;
  if (!sideOpen_) {
    sideExisted_ = platform::FileExists(sidePath_);
    if (!side_.Open(sidePath_, error)) return Fail(error);
    sideOpen_ = true;
  }
  uint32_t offset = 0;
  if (!side_.AppendLongText(text, offset, error)) return Fail(error);
  return table_.AppendNumber(row, column, offset);
}

bool XbaseReader::Field(uint32_t row, uint16_t column, const XbaseField& field,
                        const uint8_t* bytes) {
  switch (field.type) {
    case 'B':
    case 'G':
    case 'P':
      return true;
    case 'C': {
      std::string_view text = RightTrimmed(bytes, field.length);
      if (text.empty()) return true;
      if (options_.oem) {
        text_.assign(text);
        text::OemToCharInPlace(text_);
        text = text_;
      }
      if (field.length > kLongCharacterField) return LongText(row, column, text);
      return table_.AppendText(row, column, text);
    }
    case 'D': {
      if (field.length < 8 || bytes[0] == ' ') return true;
      bool ok = false;
      uint32_t year = Digits(std::string_view(reinterpret_cast<const char*>(bytes), 4), ok);
      bool ok2 = false, ok3 = false;
      uint32_t month = Digits(std::string_view(reinterpret_cast<const char*>(bytes) + 4, 2), ok2);
      uint32_t day = Digits(std::string_view(reinterpret_cast<const char*>(bytes) + 6, 2), ok3);
      if (!ok || !ok2 || !ok3 || year < 1 || year > 9999 || month < 1 || month > 12 || day < 1 ||
          day > 31) {
        return table_.AppendText(row, column, std::string_view(), kValueError);
      }
      char date[16];
      std::snprintf(date, sizeof date, "%04u-%02u-%02u", year, month, day);
      return table_.AppendText(row, column, date);
    }
    case 'F':
    case 'I':
    case 'N':
    case 'Y': {
      std::string_view text = Trimmed(bytes, field.length);
      if (text.empty()) return true;
      double value = 0;
      const char* start = text.data();
      if (*start == '+') ++start;
      auto [end, ec] = std::from_chars(start, text.data() + text.size(), value);
      // Overflow stars and other damage stay readable as text.
      if (ec != std::errc() || end != text.data() + text.size()) {
        return table_.AppendText(row, column, text);
      }
      return table_.AppendNumber(row, column, value);
    }
    case 'L':
      switch (bytes[0]) {
        case 'Y':
        case 'y':
        case 'T':
        case 't':
          return table_.AppendNumber(row, column, 1);
        case 'N':
        case 'n':
        case 'F':
        case 'f':
          return table_.AppendNumber(row, column, 0);
        default:
          return true;
      }
    case 'M': {
      bool ok = false;
      uint32_t block = Digits(Trimmed(bytes, field.length), ok);
      if (!ok || block == 0) return true;
      ErrorCode error = err::kNone;
      if (!memos_.Read(block, text_, error)) return Fail(error);
      if (options_.oem) text::OemToCharInPlace(text_);
      return LongText(row, column, text_);
    }
    case 'T': {
      if (field.length < 8) return true;
      uint32_t julian = LoadU32(bytes);
      uint32_t millis = LoadU32(bytes + 4);
      if (julian == 0) return true;
      // Julian day 2440588 is 1970-01-01.
      DateTimeRecord at;
      if (!DateFromDayNumber(DayNumber(1970, 1, 1) + (static_cast<int64_t>(julian) - 2440588),
                             at) ||
          millis >= 86400000u) {
        return table_.AppendText(row, column, std::string_view(), kValueError);
      }
      at.hasTime = true;
      at.hour = static_cast<int32_t>(millis / 3600000);
      at.minute = static_cast<int32_t>(millis / 60000 % 60);
      at.second = static_cast<int32_t>(millis / 1000 % 60);
      return table_.AppendText(row, column, FormatGenericDate(at));
    }
    default:
      return table_.AppendText(row, column, "Binary data");
  }
}

}  // namespace

bool ImportXbase(Workbook& book, const std::string& path, const XbaseImportOptions& options,
                 XbaseDialect* dialectRead) {
  book.errorCode = err::kNone;
  FileStream in;
  if (!in.Open(path, StreamMode::kRead, false)) {
    book.errorCode = in.error();
    return false;
  }
  XbaseHeader header;
  ErrorCode error = err::kNone;
  if (!ReadXbaseHeader(in, header, error)) {
    book.errorCode = error;
    return false;
  }
  XbaseDialect dialect = XbaseDialectOfVersion(header.version, options.dialect);
  if (dialectRead != nullptr) *dialectRead = dialect;
  std::vector<FieldSpec> fields(header.fields.size());
  for (size_t i = 0; i < fields.size(); ++i) {
    fields[i].name = DefaultFieldName(static_cast<uint16_t>(i));
    fields[i].type = TypeOfLetter(header.fields[i], fields[i].link);
  }
  std::vector<std::string> names(header.fields.size());
  for (size_t i = 0; i < names.size(); ++i) {
    names[i] = header.fields[i].name;
    if (options.oem) text::OemToCharInPlace(names[i]);
  }
  bool ok;
  {
    ImportedTable table;
    ok = table.Begin(book, ImportTableName(path));
    if (ok) {
      XbaseReader reader(table, header, options, dialect, path);
      ok = reader.Read(in);
      if (ok) {
        table.NameFields(names, fields);
        ok = table.Finish(fields);
      }
      if (ok && !reader.Commit(error)) {
        book.errorCode = error;
        ok = false;
      }
    }
  }
  in.Close();
  if (!ok) {
    error = book.errorCode;
    book.Clear();
    book.errorCode = error;
  }
  return ok;
}

}  // namespace kelpdex
