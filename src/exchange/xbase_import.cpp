#include <atomic>
#include <charconv>
#include <cstring>
#include <thread>
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

// The padding of a field, blanks or zeros, eight bytes at a time: most of a wide character
// field is padding, and this scan was most of an import's time byte by byte.
constexpr uint64_t kBlanks = 0x2020202020202020ull;
bool AllPadding(const uint8_t* bytes) {
  uint64_t word;
  std::memcpy(&word, bytes, 8);
  return (word & ~kBlanks) == 0;  // each byte 0x20 or 0
}

std::string_view RightTrimmed(const uint8_t* bytes, size_t size) {
  while (size >= 8 && AllPadding(bytes + size - 8)) size -= 8;
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

// Long Text values of an import, appended to the document's side file in record order; the
// file stays as it was unless Commit runs.
class SideTexts {
 public:
  explicit SideTexts(const std::string& path) : path_(SideFilePath(path)) {}
  ~SideTexts() {
    if (!open_) return;
    side_.Abandon();
    if (!existed_) platform::DeleteFile(path_);
  }
  bool Append(std::string_view text, uint32_t& offset, ErrorCode& error) {
    if (!open_) {
      existed_ = platform::FileExists(path_);
      if (!side_.Open(path_, error)) return false;
      open_ = true;
    }
    return side_.AppendLongText(text, offset, error);
  }
  bool Commit(ErrorCode& error) {
    if (!open_) return true;
    open_ = false;
    return side_.Close(error);
  }

 private:
  std::string path_;
  SideFileWriter side_;
  bool open_ = false;
  bool existed_ = false;
};

// Reads records into the table, or, for the second half of a file on a worker thread, into a
// chain of its own with rows counted from 0. Only a first reader meets memos and Long Text, which
// go to files in record order.
template <typename Sink>
class XbaseReader {
 public:
  XbaseReader(Sink& sink, const XbaseHeader& header, const XbaseImportOptions& options,
              XbaseMemoReader* memos, SideTexts* side)
      : sink_(sink), header_(header), options_(options), memos_(memos), side_(side) {}

  // Up to `limit` records, or to the end mark or the end of the file. A worker's reader gives
  // up when `stop` is set rather than asking the progress sink.
  bool Read(FileStream& in, uint64_t limit, const std::atomic<bool>* stop);
  uint32_t rows() const { return rows_; }
  // Whether the reader stopped at the end mark or a cut record before its limit.
  bool endedEarly() const { return endedEarly_; }
  const std::vector<uint32_t>& deleted() const { return deleted_; }

 private:
  bool Fail(ErrorCode code) {
    FailSink(sink_, code);
    return false;
  }
  bool Field(uint32_t row, uint16_t column, const XbaseField& field, const uint8_t* bytes);
  bool LongText(uint32_t row, uint16_t column, std::string_view text);

  Sink& sink_;
  const XbaseHeader& header_;
  const XbaseImportOptions& options_;
  XbaseMemoReader* memos_;
  SideTexts* side_;
  uint32_t rows_ = 0;
  bool endedEarly_ = false;
  std::vector<uint32_t> deleted_;
  std::string text_;
};

template <typename Sink>
bool XbaseReader<Sink>::Read(FileStream& in, uint64_t limit, const std::atomic<bool>* stop) {
  std::vector<uint8_t> record(header_.recordSize);
  uint32_t row = 0;
  endedEarly_ = true;
  for (;;) {
    if (row >= limit) {
      endedEarly_ = false;
      break;
    }
    // A record the buffer holds whole is read in place; one across a refill is copied.
    const uint8_t* bytes = in.Contiguous(record.size());
    if (bytes != nullptr) {
      in.Advance(record.size());
    } else {
      size_t n = in.ReadSome(record.data(), record.size());
      // A record cut by the end of the file is dropped with it; the count in the header is not
      // trusted, the bytes are.
      if (n < record.size()) break;
      bytes = record.data();
    }
    if (bytes[0] == 0x1A || row >= kRowLimit) break;
    if ((row & 0xFFF) == 0xFFF) {
      if (stop != nullptr ? stop->load(std::memory_order_relaxed) : ProgressCancelled()) {
        return false;
      }
    }
    const uint8_t* at = bytes + 1;
    for (size_t i = 0; i < header_.fields.size(); ++i) {
      const XbaseField& field = header_.fields[i];
      if (!Field(row, static_cast<uint16_t>(i), field, at)) return false;
      at += field.length;
    }
    if (bytes[0] == '*') deleted_.push_back(row);
    ++row;
  }
  rows_ = row;
  if (!in.ok()) return Fail(in.error());
  return true;
}

// Shows the listed records, `rowOffset` rows down, as deleted: in the table's default style in
// red, which is also what an export turns back into the delete flag.
bool MarkDeleted(ImportedTable& table, size_t fieldCount, const std::vector<uint32_t>& rows,
                 uint32_t rowOffset, int& redStyle) {
  if (rows.empty()) return true;
  Workbook& book = *table.book();
  if (redStyle < 0) {
    StyleRecord red = book.styles.Style(0);
    // The native XML form keeps a font colour only with the style's font reference.
    red.bytes[style::kFontSetAt] = 1;
    red.bytes[style::kFontColourSetAt] = 1;
    StoreU32(red.bytes + style::kFontColourAt, kRed);
    uint16_t id = 0;
    ErrorCode error = err::kNone;
    if (!book.styles.FindOrAddStyle(red, id, error)) {
      book.errorCode = error;
      return false;
    }
    redStyle = id;
  }
  StyleRun run;
  run.firstColumn = 0;
  run.lastColumn = static_cast<uint16_t>(fieldCount - 1);
  run.styleId = static_cast<uint16_t>(redStyle);
  for (uint32_t row : rows) {
    run.row = row + rowOffset;
    if (!table.table().data->formats.ApplyStyleRun(run)) {
      book.errorCode = err::kOutOfMemory;
      return false;
    }
  }
  return true;
}

template <typename Sink>
bool XbaseReader<Sink>::LongText(uint32_t row, uint16_t column, std::string_view text) {
  if (text.empty()) return true;
  // A split read is only chosen for a table without Long Text.
  if (side_ == nullptr) return Fail(err::kInvalidBinaryFormat);
  ErrorCode error = err::kNone;
  uint32_t offset = 0;
  if (!side_->Append(text, offset, error)) return Fail(error);
  return sink_.AppendNumber(row, column, offset);
}

template <typename Sink>
bool XbaseReader<Sink>::Field(uint32_t row, uint16_t column, const XbaseField& field,
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
      return sink_.AppendText(row, column, text);
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
        return sink_.AppendText(row, column, std::string_view(), kValueError);
      }
      char date[16];
      std::snprintf(date, sizeof date, "%04u-%02u-%02u", year, month, day);
      return sink_.AppendText(row, column, date);
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
        return sink_.AppendText(row, column, text);
      }
      return sink_.AppendNumber(row, column, value);
    }
    case 'L':
      switch (bytes[0]) {
        case 'Y':
        case 'y':
        case 'T':
        case 't':
          return sink_.AppendNumber(row, column, 1);
        case 'N':
        case 'n':
        case 'F':
        case 'f':
          return sink_.AppendNumber(row, column, 0);
        default:
          return true;
      }
    case 'M': {
      bool ok = false;
      uint32_t block = Digits(Trimmed(bytes, field.length), ok);
      if (!ok || block == 0) return true;
      ErrorCode error = err::kNone;
      if (memos_ == nullptr) return Fail(err::kInvalidBinaryFormat);
      if (!memos_->Read(block, text_, error)) return Fail(error);
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
        return sink_.AppendText(row, column, std::string_view(), kValueError);
      }
      at.hasTime = true;
      at.hour = static_cast<int32_t>(millis / 3600000);
      at.minute = static_cast<int32_t>(millis / 60000 % 60);
      at.second = static_cast<int32_t>(millis / 1000 % 60);
      return sink_.AppendText(row, column, FormatGenericDate(at));
    }
    default:
      return sink_.AppendText(row, column, "Binary data");
  }
}

// Whether a field's values go to the memo or side file, which are read and appended in record
// order by one thread.
bool NeedsOrder(const XbaseField& field) {
  return field.type == 'M' || (field.type == 'C' && field.length > kLongCharacterField);
}

// The records, from the stream's place after the header. A large file of fixed-size records is
// read in two halves at once, the second on a worker thread into a chain of its own that then
// goes behind the first; the result is the same as one reader's.
bool ReadRecords(ImportedTable& table, FileStream& in, const std::string& path,
                 const XbaseHeader& header, const XbaseImportOptions& options,
                 XbaseMemoReader& memos, SideTexts& side) {
  uint64_t count = in.fileSize() > header.headerSize
                       ? (in.fileSize() - header.headerSize) / header.recordSize
                       : 0;
  bool split = in.fileSize() >= FileStream::kSplitMinimum && count >= 2 && count <= kRowLimit;
  for (const XbaseField& field : header.fields) split = split && !NeedsOrder(field);
  XbaseReader<ImportedTable> reader(table, header, options, &memos, &side);
  int redStyle = -1;
  FileStream rest;
  uint64_t half = count / 2;
  if (split) {
    split = rest.Open(path, StreamMode::kRead, false) &&
            rest.SeekRead(header.headerSize + half * header.recordSize);
    rest.SetQuiet(true);
  }
  if (!split) {
    return reader.Read(in, UINT64_MAX, nullptr) &&
           MarkDeleted(table, header.fields.size(), reader.deleted(), 0, redStyle);
  }
  ChainSink sink;
  XbaseReader<ChainSink> second(sink, header, options, nullptr, nullptr);
  std::atomic<bool> stop{false};
  bool secondOk = false;
  std::thread worker([&] { secondOk = second.Read(rest, UINT64_MAX, &stop); });
  bool firstOk = reader.Read(in, half, nullptr);
  if (!firstOk) stop = true;
  worker.join();
  if (!firstOk) return false;
  // An end mark in the first half ends the table there, as it would for one reader.
  if (reader.endedEarly()) {
    return MarkDeleted(table, header.fields.size(), reader.deleted(), 0, redStyle);
  }
  if (!secondOk) {
    table.book()->errorCode = sink.error() != err::kNone ? sink.error() : rest.error();
    return false;
  }
  table.AppendChain(sink.chain(), reader.rows());
  return MarkDeleted(table, header.fields.size(), reader.deleted(), 0, redStyle) &&
         MarkDeleted(table, header.fields.size(), second.deleted(), reader.rows(), redStyle);
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
      XbaseMemoReader memos(XbaseMemoPath(path, dialect), dialect);
      SideTexts side(path);
      ok = ReadRecords(table, in, path, header, options, memos, side);
      if (ok) {
        table.NameFields(names, fields);
        ok = table.Finish(fields);
      }
      if (ok && !side.Commit(error)) {
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
