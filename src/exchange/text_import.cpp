#include <algorithm>
#include <atomic>
#include <charconv>
#include <cstdio>
#include <cstring>
#include <thread>
#include <vector>

#include "core/locale_settings.h"
#include "core/progress.h"
#include "exchange/import_table.h"
#include "exchange/text_exchange.h"
#include "persist/file_stream.h"
#include "store/block_chain.h"
#include "store/cell_record.h"
#include "text/oem.h"
#include "text/utf8.h"

namespace kelpdex {

bool ParseTextWidths(std::string_view list, TextFileOptions& options) {
  options.widths.fill(0);
  size_t count = 0;
  size_t start = 0;
  while (start <= list.size()) {
    size_t comma = list.find(',', start);
    std::string_view item =
        list.substr(start, comma == std::string_view::npos ? list.size() - start : comma - start);
    unsigned value = 0;
    auto [end, ec] = std::from_chars(item.data(), item.data() + item.size(), value);
    if (ec != std::errc() || end != item.data() + item.size() || value == 0 || value > 65535 ||
        count >= options.widths.size()) {
      return false;
    }
    options.widths[count++] = static_cast<uint16_t>(value);
    if (comma == std::string_view::npos) break;
    start = comma + 1;
  }
  return count > 0;
}

namespace {

// A cell's text as a number by the import's rule: an optional "-" and blanks, digits with the
// locale's decimal character, an exponent, then trailing blanks; nothing else may be left.
bool ReadsAsNumber(const char* s, size_t n, char decimal, double& value) {
  char buffer[kTextCellMax + 2];
  size_t i = 0, b = 0;
  if (i < n && s[i] == '-') {
    buffer[b++] = '-';
    ++i;
    while (i < n && s[i] == ' ') ++i;
  }
  size_t digits = 0;
  while (i < n && s[i] >= '0' && s[i] <= '9') buffer[b++] = s[i++], ++digits;
  if (i < n && s[i] == decimal) {
    buffer[b++] = '.';
    ++i;
    while (i < n && s[i] >= '0' && s[i] <= '9') buffer[b++] = s[i++], ++digits;
  }
  if (digits == 0) return false;
  if (i < n && (s[i] == 'E' || s[i] == 'e')) {
    size_t j = i + 1;
    if (j < n && (s[j] == '+' || s[j] == '-')) ++j;
    if (j >= n || s[j] < '0' || s[j] > '9') return false;
    buffer[b++] = 'e';
    for (size_t k = i + 1; k < j; ++k) buffer[b++] = s[k];
    while (j < n && s[j] >= '0' && s[j] <= '9') buffer[b++] = s[j++];
    i = j;
  }
  while (i < n && s[i] == ' ') ++i;
  if (i != n) return false;
  auto [end, ec] = std::from_chars(buffer, buffer + b, value);
  return ec == std::errc() && end == buffer + b;
}

template <typename Sink>
class TextReader {
 public:
  TextReader(Sink& table, const TextFileOptions& options, TextImportReport& report)
      : table_(table),
        options_(options),
        report_(report),
        decimal_(currentLocale.decimalSeparator) {
    while (widthCount_ < options.widths.size() && options.widths[widthCount_] != 0) ++widthCount_;
  }

  // Reads up to `limit` bytes of the stream, or to its end. A reader of the second half of a
  // file reads lines counted from 0, with no header line, and asks `stop` whether to give up
  // rather than the progress sink.
  bool Read(FileStream& in, uint64_t limit = UINT64_MAX);
  void SecondHalf(const std::atomic<bool>* stop) {
    stop_ = stop;
    secondHalf_ = true;
  }
  // Whether the bytes read ended a line outside quotes, where another reader may go on.
  bool endedAtLineStart() const { return endedAtLineStart_; }
  // Lines read, counted as rows: with the header line left out.
  uint64_t rows() const { return options_.headerLine && !secondHalf_ ? line_ - 1 : line_; }
  uint8_t columnBits(size_t column) const { return columnBits_[column]; }
  // What a second half read joins this reader's account, as one reader would have read both.
  void Join(const TextReader<ChainSink>& second);

  // The fields the cells asked for: Number where a column held numbers alone.
  std::vector<FieldSpec> Fields() const;
  const std::vector<std::string>& names() const { return names_; }

 private:
  // The cell limit of the column being read in fixed mode; 0 for none.
  uint32_t Width() const { return column_ < widthCount_ ? options_.widths[column_] : 0; }
  void Add(uint8_t c) {
    ++taken_;
    if (length_ < kTextCellMax) cell_[length_++] = static_cast<char>(c < 32 ? ' ' : c);
  }
  // Add for a run of bytes, which the reader finds in one scan rather than byte by byte.
  void AddRun(const uint8_t* bytes, size_t n) {
    taken_ += static_cast<uint32_t>(n);
    size_t kept = std::min(n, kTextCellMax - length_);
    for (size_t k = 0; k < kept; ++k) {
      cell_[length_ + k] = static_cast<char>(bytes[k] < 32 ? ' ' : bytes[k]);
    }
    length_ += kept;
  }
  bool EndCell();
  void EndLine() {
    ++line_;
    column_ = 0;
  }
  bool Store(std::string_view text);

  template <typename>
  friend class TextReader;

  Sink& table_;
  const TextFileOptions& options_;
  TextImportReport& report_;
  const char decimal_;
  size_t widthCount_ = 0;
  char cell_[kTextCellMax];
  size_t length_ = 0;
  uint32_t taken_ = 0;  // bytes of the cell read, kept or not
  uint64_t line_ = 0;
  uint32_t column_ = 0;
  int32_t highestColumn_ = -1;
  std::vector<uint8_t> columnBits_ = std::vector<uint8_t>(kColumnLimit, 0);
  std::vector<std::string> names_;
  std::string converted_;
  const std::atomic<bool>* stop_ = nullptr;
  bool secondHalf_ = false;
  bool endedAtLineStart_ = false;
};

template <typename Sink>
bool TextReader<Sink>::Read(FileStream& in, uint64_t limit) {
  enum class State : uint8_t { kCellStart, kBare, kQuoted, kQuoteInQuoted };
  State state = State::kCellStart;
  bool afterCr = false;
  bool fixed = options_.fixedWidths;
  const uint8_t separator = static_cast<uint8_t>(options_.separator);
  const uint8_t quote = static_cast<uint8_t>(options_.quote);
  // The bytes that end a bare run: the separator and the line ends.
  bool stops[256] = {};
  stops[separator] = stops[uint8_t{'\r'}] = stops[uint8_t{'\n'}] = true;
  bool first = !secondHalf_;
  uint64_t left = limit;
  for (;;) {
    size_t size = 0;
    const uint8_t* bytes = in.Span(size);
    if (size == 0 || left == 0) break;
    if (size > left) size = static_cast<size_t>(left);
    left -= size;
    if (stop_ != nullptr ? stop_->load(std::memory_order_relaxed) : ProgressCancelled()) {
      return false;
    }
    size_t i = 0;
    // A byte-order mark says UTF-8 and is no part of the first cell.
    if (first && options_.encoding == TextEncoding::kUtf8 && size >= 3 && bytes[0] == 0xEF &&
        bytes[1] == 0xBB && bytes[2] == 0xBF) {
      i = 3;
    }
    first = false;
    for (; i < size; ++i) {
      uint8_t c = bytes[i];
      if (afterCr) {
        afterCr = false;
        if (c == '\n') continue;
      }
      if (fixed) {
        if (c == '\r' || c == '\n') {
          if (!EndCell()) return false;
          EndLine();
          afterCr = c == '\r';
          continue;
        }
        Add(c);
        uint32_t width = Width();
        if (width != 0 && taken_ >= width) {
          if (!EndCell()) return false;
          ++column_;
        }
        continue;
      }
      switch (state) {
        case State::kQuoted:
          if (c == quote) {
            state = State::kQuoteInQuoted;
          } else {
            size_t end = i + 1;
            while (end < size && bytes[end] != quote) ++end;
            AddRun(bytes + i, end - i);
            i = end - 1;
          }
          continue;
        case State::kQuoteInQuoted:
          if (c == quote) {
            Add(c);
            state = State::kQuoted;
            continue;
          }
          // The quoting is over; this byte is read as any outside quotes.
          break;
        case State::kCellStart:
          if (c == quote) {
            state = State::kQuoted;
            continue;
          }
          break;
        case State::kBare:
          break;
      }
      if (c == separator) {
        if (!EndCell()) return false;
        ++column_;
        state = State::kCellStart;
      } else if (c == '\r' || c == '\n') {
        if (!EndCell()) return false;
        EndLine();
        afterCr = c == '\r';
        state = State::kCellStart;
      } else {
        // The plain bytes up to the next separator or line end go in as one run.
        size_t end = i + 1;
        while (end < size && !stops[bytes[end]]) ++end;
        AddRun(bytes + i, end - i);
        i = end - 1;
        state = State::kBare;
      }
    }
    in.Advance(size);
  }
  if (!in.ok()) {
    FailSink(table_, in.error());
    return false;
  }
  endedAtLineStart_ = !afterCr && taken_ == 0 && state == State::kCellStart && column_ == 0;
  if (limit != UINT64_MAX) return true;
  // A last line without its line end.
  if (taken_ != 0 || state != State::kCellStart || column_ != 0) return EndCell();
  return true;
}

template <typename Sink>
bool TextReader<Sink>::EndCell() {
  size_t length = length_;
  length_ = 0;
  taken_ = 0;
  bool header = options_.headerLine && line_ == 0 && !secondHalf_;
  if (length == 0 && !header) return true;
  if (column_ >= kColumnLimit) {
    if (static_cast<int64_t>(column_) > report_.highestDroppedColumn) {
      report_.highestDroppedColumn = static_cast<int32_t>(column_);
    }
    return true;
  }
  uint64_t row = options_.headerLine && !secondHalf_ ? line_ - 1 : line_;
  if (!header && row >= kRowLimit) {
    if (static_cast<int64_t>(row) > report_.highestDroppedRow) report_.highestDroppedRow = row;
    return true;
  }
  std::string_view text(cell_, length);
  switch (options_.encoding) {
    case TextEncoding::kUtf8: {
      // Malformed sequences and characters the code page lacks become '?', as any text from
      // outside does.
      if (!text::IsAscii(text)) {
        converted_ = text::Utf8ToCp1252(text);
        text = converted_;
      }
      break;
    }
    case TextEncoding::kOem:
      text::OemToCharInPlace(cell_, length);
      break;
    case TextEncoding::kAnsi:
      break;
  }
  if (header) {
    if (names_.size() <= column_) names_.resize(column_ + 1);
    names_[column_] = text;
    if (static_cast<int32_t>(column_) > highestColumn_) highestColumn_ = column_;
    return true;
  }
  uint16_t column = static_cast<uint16_t>(column_);
  if (static_cast<int32_t>(column) > highestColumn_) highestColumn_ = column;
  double value;
  if (options_.numbers && (columnBits_[column] & 1) == 0 &&
      ReadsAsNumber(text.data(), text.size(), decimal_, value)) {
    columnBits_[column] |= 2;
    return table_.AppendNumber(static_cast<uint32_t>(row), column, value);
  }
  columnBits_[column] |= 1;
  return table_.AppendText(static_cast<uint32_t>(row), column, text);
}

template <typename Sink>
void TextReader<Sink>::Join(const TextReader<ChainSink>& second) {
  for (size_t c = 0; c < columnBits_.size(); ++c) columnBits_[c] |= second.columnBits_[c];
  highestColumn_ = std::max(highestColumn_, second.highestColumn_);
  report_.highestDroppedColumn =
      std::max(report_.highestDroppedColumn, second.report_.highestDroppedColumn);
}

template <typename Sink>
std::vector<FieldSpec> TextReader<Sink>::Fields() const {
  std::vector<FieldSpec> fields(static_cast<size_t>(highestColumn_ + 1));
  for (size_t i = 0; i < fields.size(); ++i) {
    fields[i].name = DefaultFieldName(static_cast<uint16_t>(i));
    if (columnBits_[i] == 2) {
      fields[i].type = FieldType::kNumber;
    } else {
      fields[i].type = FieldType::kText;
      fields[i].link = true;
    }
  }
  return fields;
}

}  // namespace

namespace {

// The byte after the first line feed from the middle of a plain file on: where its second half
// begins if that line feed ends a line outside quotes, which the first half's reader tells.
// 0 when there is none.
uint64_t SplitPoint(FileStream& probe) {
  uint64_t size = probe.fileSize();
  uint64_t at = size / 2;
  if (!probe.SeekRead(at)) return 0;
  for (;;) {
    size_t n = 0;
    const uint8_t* bytes = probe.Span(n);
    if (n == 0) return 0;
    if (const void* lf = std::memchr(bytes, '\n', n)) {
      return at + static_cast<uint64_t>(static_cast<const uint8_t*>(lf) - bytes) + 1;
    }
    at += n;
    probe.Advance(n);
  }
}

// Both halves at once, the second on a worker thread into a chain of its own. False with
// `fallBack` when the halves cannot be joined as one reader would have read the file: the split
// fell inside a quoted cell, a column held text in the first half and numbers in the second
// (which the Numbers rule would have kept as texts), or the rows pass the limit.
bool ReadInHalves(FileStream& in, const std::string& path, uint64_t split, ImportedTable& table,
                  TextReader<ImportedTable>& reader, const TextFileOptions& options,
                  bool& fallBack) {
  fallBack = false;
  FileStream rest;
  if (!rest.Open(path, StreamMode::kRead, false) || !rest.SeekRead(split)) {
    fallBack = true;
    return false;
  }
  rest.SetQuiet(true);
  ChainSink sink;
  TextImportReport restReport;
  TextReader<ChainSink> second(sink, options, restReport);
  std::atomic<bool> stop{false};
  second.SecondHalf(&stop);
  bool secondOk = false;
  std::thread worker([&] { secondOk = second.Read(rest); });
  bool firstOk = reader.Read(in, split);
  if (!firstOk) stop = true;
  worker.join();
  if (!firstOk) return false;
  if (!secondOk) {
    if (sink.error() == err::kNone) return false;  // stopped with the first
    table.book()->errorCode = sink.error();
    return false;
  }
  bool clash = false;
  for (size_t c = 0; c < kColumnLimit && !clash; ++c) {
    clash = (reader.columnBits(c) & 1) != 0 && (second.columnBits(c) & 2) != 0;
  }
  if (!reader.endedAtLineStart() || clash || reader.rows() + second.rows() > kRowLimit) {
    fallBack = true;
    return false;
  }
  table.AppendChain(sink.chain(), static_cast<uint32_t>(reader.rows()));
  reader.Join(second);
  return true;
}

bool ReadTextFile(Workbook& book, const std::string& path, const TextFileOptions& options,
                  TextImportReport& dropped, bool allowSplit, bool& fallBack) {
  fallBack = false;
  FileStream in;
  // gzip's transparent read: a compressed text file reads as its plain bytes.
  if (!in.Open(path, StreamMode::kRead, true)) {
    book.errorCode = in.error();
    return false;
  }
  uint64_t split = 0;
  // The first read tells gzip from plain; a large plain file is opened again without the gzip
  // layer, whose reads have no place in the file to seek to.
  if (allowSplit && in.Peek() >= 0 && !in.compressedRead() &&
      in.fileSize() >= FileStream::kSplitMinimum) {
    in.Close();
    if (!in.Open(path, StreamMode::kRead, false)) {
      book.errorCode = in.error();
      return false;
    }
    split = SplitPoint(in);
    if (!in.SeekRead(0)) {
      book.errorCode = in.error();
      return false;
    }
  } else if (!in.Rewind()) {
    book.errorCode = in.error();
    return false;
  }
  ImportedTable table;
  if (!table.Begin(book, ImportTableName(path))) return false;
  TextReader<ImportedTable> reader(table, options, dropped);
  bool ok = split != 0 ? ReadInHalves(in, path, split, table, reader, options, fallBack)
                       : reader.Read(in);
  if (!ok) return false;
  std::vector<FieldSpec> fields = reader.Fields();
  if (options.headerLine) table.NameFields(reader.names(), fields);
  return table.Finish(fields);
}

}  // namespace

bool ImportText(Workbook& book, const std::string& path, const TextFileOptions& options,
                TextImportReport* report) {
  TextImportReport ignored;
  TextImportReport& dropped = report != nullptr ? *report : ignored;
  dropped = TextImportReport();
  book.errorCode = err::kNone;
  bool fallBack = false;
  bool ok = ReadTextFile(book, path, options, dropped, true, fallBack);
  if (!ok && fallBack) {
    // The halves could not be joined: the file is read again from the start by one reader.
    book.Clear();
    book.errorCode = err::kNone;
    dropped = TextImportReport();
    ok = ReadTextFile(book, path, options, dropped, false, fallBack);
  }
  if (!ok) {
    ErrorCode error = book.errorCode;
    book.Clear();
    book.errorCode = error;
  }
  return ok;
}

}  // namespace kelpdex
