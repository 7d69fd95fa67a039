#include <atomic>
#include <charconv>
#include <cstdio>
#include <cstring>
#include <system_error>
#include <thread>
#include <vector>

#include "core/progress.h"
#include "exchange/xbase.h"
#include "format/cell_text.h"
#include "format/generic_date.h"
#include "format/number_text.h"
#include "persist/document_file.h"
#include "persist/side_values.h"
#include "platform/os.h"
#include "store/bytes.h"
#include "store/catalogue.h"
#include "store/field_row.h"
#include "text/oem.h"

namespace kelpdex {

namespace {

// `value` in fixed notation with `decimals` digits after the point, as "%.*f" writes it, without
// the cost of printf's general machinery; 0 when it does not fit in `room`.
size_t FormatFixed(char* out, size_t room, double value, int decimals) {
  auto [end, ec] = std::to_chars(out, out + room, value, std::chars_format::fixed, decimals);
  return ec == std::errc() ? static_cast<size_t>(end - out) : 0;
}

constexpr uint32_t kRed = 255;
constexpr uint32_t kMaxRecordSize = 65534;

bool IsMemo(const XbaseField& field) {
  return field.type == 'M';
}

// The rows of the records in force, in their order: the record set where it is the table's,
// else every used row.
std::vector<uint32_t> RecordRows(const Workbook& book, const Worksheet& data) {
  std::vector<uint32_t> rows;
  if (book.records.allocated() && book.currentSheet == &data) {
    rows.assign(book.records.rows(), book.records.rows() + book.records.count());
  } else {
    uint32_t used = data.UsedRows();
    rows.resize(used);
    for (uint32_t i = 0; i < used; ++i) rows[i] = i;
  }
  return rows;
}

class XbaseWriter {
 public:
  XbaseWriter(const Workbook& book, Worksheet& data, const XbaseExportOptions& options,
              const std::vector<XbaseExportField>& fields)
      : book_(book),
        data_(data),
        options_(options),
        fields_(fields),
        formatter_(NumberStyle()),
        memo_(options.dialect, std::string(data.Name())),
        sidePath_(book.fileName.empty() ? std::string() : SideFilePath(book.fileName)) {
    uint16_t columns = 0;
    for (const XbaseExportField& item : fields_) {
      columns = std::max<uint16_t>(columns, static_cast<uint16_t>(item.column + 1));
    }
    rowCells_.resize(columns);
  }

  // A writer of the same export for another thread, with its own formatter and buffers.
  XbaseWriter Twin() const { return XbaseWriter(book_, data_, options_, fields_); }

  // The record of `row` into `out`, which holds the record size.
  bool Record(uint32_t row, char* out, ErrorCode& error);
  XbaseMemoWriter& memo() { return memo_; }

 private:
  bool Deleted(uint32_t row) const;
  // The cell as text: a text cell's bytes, any other as the grid would show it in General.
  std::string_view CellText(const CellRecord* cell);
  void Number(const XbaseField& field, const CellRecord* cell, char* out);

  const Workbook& book_;
  Worksheet& data_;
  const XbaseExportOptions& options_;
  const std::vector<XbaseExportField>& fields_;
  CellFormatter formatter_;
  XbaseMemoWriter memo_;
  std::string sidePath_;
  char scratch_[kDisplayTextMax];
  std::string text_;
  std::vector<CellRecord*> rowCells_;  // the record's cells by column, up to the last field's
};

bool XbaseWriter::Deleted(uint32_t row) const {
  const StyleRecord& style = book_.styles.Style(data_.formats.StyleAt(row, 0));
  return style.bytes[style::kFontColourSetAt] != 0 &&
         LoadU32(style.bytes + style::kFontColourAt) == kRed;
}

std::string_view XbaseWriter::CellText(const CellRecord* cell) {
  if (cell == nullptr) return {};
  if (cell::IsText(cell)) return cell::Text(cell);
  return std::string_view(scratch_, formatter_.Display(cell, scratch_));
}

void XbaseWriter::Number(const XbaseField& field, const CellRecord* cell, char* out) {
  int width = field.length;
  std::memset(out, ' ', field.length);
  double value = 0;
  if (cell == nullptr) return;
  if (cell::IsNumber(cell)) {
    value = cell::Number(cell);
  } else if (cell::IsFormula(cell) && (cell::FormulaFlags(cell) & cell::kCachedNumber)) {
    value = cell::CachedNumber(cell);
  } else if (!cell::IsText(cell) || !TextToNumber(cell::Text(cell), '.', value)) {
    return;
  }
  // "I" and "N" without decimals are whole numbers; "F" without decimals keeps six, as "%f" does.
  int decimals = field.decimals != 0 ? field.decimals : (field.type == 'F' ? 6 : 0);
  if (field.type == 'I') decimals = 0;
  char buffer[400];
  size_t n = FormatFixed(buffer, sizeof buffer, value, decimals);
  // A number too wide for its field is shown as stars, as dBase does, rather than cut into
  // another number.
  if (n == 0 || n > static_cast<size_t>(width)) {
    std::memset(out, '*', field.length);
    return;
  }
  std::memcpy(out + (width - n), buffer, n);  // right-aligned in the blanks
}

bool XbaseWriter::Record(uint32_t row, char* out, ErrorCode& error) {
  *out++ = Deleted(row) ? '*' : ' ';
  data_.cells.GetRowFast(row, static_cast<uint16_t>(rowCells_.size()), rowCells_.data());
  for (const XbaseExportField& item : fields_) {
    const XbaseField& field = item.field;
    char* at = out;
    out += field.length;
    std::memset(at, ' ', field.length);
    const CellRecord* cell = rowCells_[item.column];
    switch (field.type) {
      case 'C': {
        if (cell != nullptr && !cell::IsText(cell) && cell::IsNumber(cell)) {
          // Right-aligned in the field's blanks, as "%*.*f" pads; a longer one is cut.
          size_t n = FormatFixed(scratch_, sizeof scratch_, cell::Number(cell), field.decimals);
          size_t width = field.length;
          if (n <= width) {
            std::memcpy(at + (width - n), scratch_, n);
          } else {
            std::memcpy(at, scratch_, width);
          }
          break;
        }
        std::string_view text = CellText(cell);
        size_t n = text.size() < field.length ? text.size() : field.length;
        if (n > 0) std::memcpy(at, text.data(), n);
        if (options_.oem) text::CharToOemInPlace(at, n);
        break;
      }
      case 'D': {
        DateTimeRecord date;
        std::string_view text = CellText(cell);
        if (!text.empty() && ParseGenericDate(text, date, nullptr) && date.hasDate &&
            field.length >= 8) {
          char digits[16];
          std::snprintf(digits, sizeof digits, "%04d%02d%02d", date.year % 10000, date.month,
                        date.day);
          std::memcpy(at, digits, 8);
        }
        break;
      }
      case 'I':
      case 'N':
      case 'F':
      case 'Y':
        Number(field, cell, at);
        break;
      case 'L':
        if (cell != nullptr && cell::IsNumber(cell)) *at = cell::Number(cell) != 0 ? 'Y' : 'N';
        break;
      case 'M': {
        bool present = false;
        text_.clear();
        if (cell != nullptr && cell::IsText(cell)) {
          text_ = cell::Text(cell);
        } else if (!ReadLongTextValue(data_, sidePath_, row, item.column, text_, present, error)) {
          return false;
        }
        if (text_.empty()) break;
        if (options_.oem) text::CharToOemInPlace(text_);
        char block[16];
        std::snprintf(block, sizeof block, "%10u", memo_.Append(text_));
        std::memcpy(at, block, field.length < 10 ? field.length : 10);
        break;
      }
      default:  // B, G, P, T and others go out blank
        break;
    }
  }
  return true;
}

// Records [begin, end) of `rows` in order. On the thread that started the export (no `stop`)
// progress is told and a cancel is seen; a worker instead gives up when `stop` is set.
bool WriteRecords(XbaseWriter& writer, const std::vector<uint32_t>& rows, size_t begin, size_t end,
                  FileStream& out, uint32_t recordSize, std::atomic<bool>* stop, ErrorCode& error) {
  size_t share = end - begin;
  for (size_t i = begin; i < end; ++i) {
    if (((i - begin) & 0xFFF) == 0xFFF) {
      if (stop != nullptr) {
        if (stop->load(std::memory_order_relaxed)) return false;
      } else {
        // The part this thread writes stands for the whole job.
        ReportProgress((i - begin) * rows.size() / share, rows.size());
        if (ProgressCancelled()) {
          error = err::kNone;
          return false;
        }
      }
    }
    auto* room = reinterpret_cast<char*>(out.WriteRoom(recordSize));
    if (room == nullptr) {
      error = out.error();
      return false;
    }
    if (!writer.Record(rows[i], room, error)) return false;
    out.Wrote(recordSize);
  }
  return true;
}

// The records fill the file at fixed places, so the second half is written at its own offset by
// a worker thread through a second descriptor while this thread writes the first; the kernel's
// copying of the bytes, most of the time on a large table, then runs on two cores. The caller
// has made the row index whole, so that both writers only read the sheet.
bool WriteInHalves(XbaseWriter& first, const std::vector<uint32_t>& rows, uint32_t headerSize,
                   uint32_t recordSize, FileStream& out, ErrorCode& error) {
  size_t half = rows.size() / 2;
  FileStream rest;
  if (!out.Flush() ||
      !rest.OpenPart(out.path(), headerSize + static_cast<uint64_t>(half) * recordSize)) {
    error = out.ok() ? rest.error() : out.error();
    return false;
  }
  XbaseWriter second = first.Twin();
  std::atomic<bool> stop{false};
  ErrorCode restError = err::kNone;
  bool restOk = false;
  std::thread worker([&] {
    restOk = WriteRecords(second, rows, half, rows.size(), rest, recordSize, &stop, restError) &&
             rest.Flush();
    if (!restOk && restError == err::kNone) restError = rest.error();
  });
  bool firstOk = WriteRecords(first, rows, 0, half, out, recordSize, nullptr, error);
  if (!firstOk) stop = true;
  worker.join();
  if (!rest.Close() && restOk) {
    restOk = false;
    restError = rest.error();
  }
  if (!firstOk) return false;
  if (!restOk) {
    error = restError != err::kNone ? restError : err::kFileWrite;
    return false;
  }
  // The first writer goes on behind the second half, where the end mark belongs.
  if (!out.SeekWrite(headerSize + static_cast<uint64_t>(rows.size()) * recordSize)) {
    error = out.error();
    return false;
  }
  return true;
}

}  // namespace

bool BuildXbaseHeader(const Workbook& book, XbaseHeader& header, XbaseDialect dialect,
                      std::vector<XbaseExportField>* fields, ErrorCode& error) {
  Worksheet* data = book.currentSheet;
  Worksheet* catalogue = data != nullptr ? book.FindCatalogue(data->Name()) : nullptr;
  if (data == nullptr || catalogue == nullptr) {
    error = err::kInvalidDatabase;
    return false;
  }
  header = XbaseHeader();
  platform::LocalTime now = platform::GetLocalTime();
  header.year = static_cast<uint8_t>(now.year - 1900);
  header.month = static_cast<uint8_t>(now.month);
  header.day = static_cast<uint8_t>(now.day);
  header.recordCount = static_cast<uint32_t>(RecordRows(book, *data).size());
  bool wideNumbers = dialect == XbaseDialect::kDbase4 || dialect == XbaseDialect::kFoxPro;
  TableSpec table{const_cast<Workbook*>(&book), catalogue, data};
  uint16_t count = FieldCount(table);
  if (fields != nullptr) fields->clear();
  for (uint16_t i = 0; i < count; ++i) {
    XbaseField field;
    char name[16];
    std::snprintf(name, sizeof name, "field_%d", i + 1);
    field.name = name;
    FieldSpec fieldRow;
    if (ReadField(table, i, fieldRow) && !fieldRow.name.empty())
      field.name = fieldRow.name.substr(0, 10);
    switch (fieldRow.type) {
      case FieldType::kNumber:
        field.type = wideNumbers ? 'F' : 'N';
        field.length = wideNumbers ? 20 : 18;
        break;
      case FieldType::kLongText:
        field.type = 'M';
        field.length = 10;
        break;
      default:
        field.type = 'C';
        field.length = 128;
        break;
    }
    header.fields.push_back(field);
    if (fields != nullptr) fields->push_back(XbaseExportField{field, i});
  }
  return true;
}

bool ExportXbase(const Workbook& book, const std::string& path, const XbaseExportOptions& options,
                 ErrorCode& error) {
  XbaseHeader header;
  std::vector<XbaseExportField> fields;
  if (!BuildXbaseHeader(book, header, options.dialect, &fields, error)) return false;
  if (!options.fields.empty()) {
    fields = options.fields;
    header.fields.clear();
    for (const XbaseExportField& item : fields) header.fields.push_back(item.field);
  }
  if (header.fields.empty() || header.fields.size() > kXbaseMaxFields) {
    error = err::kInvalidBinaryFormat;
    return false;
  }
  uint32_t recordSize = 1;
  bool memo = false;
  for (const XbaseField& field : header.fields) {
    recordSize += field.length;
    memo = memo || IsMemo(field);
  }
  uint32_t headerSize = kXbaseHeaderSize + kXbaseDescriptorSize * header.fields.size() + 1;
  if (recordSize - 1 >= kMaxRecordSize || headerSize > 0xFFFF) {
    error = err::kTooManyFields;
    return false;
  }
  header.recordSize = static_cast<uint16_t>(recordSize);
  header.headerSize = static_cast<uint16_t>(headerSize);
  if (memo) {
    switch (options.dialect) {
      case XbaseDialect::kDbase3:
      case XbaseDialect::kClipper:
        header.version = 0x83;
        break;
      case XbaseDialect::kDbase4:
        header.version = 0x8B;
        break;
      case XbaseDialect::kFoxPro:
        header.version = 0xF5;
        break;
    }
  }
  Worksheet& data = *book.currentSheet;
  std::vector<uint32_t> rows = RecordRows(book, data);
  SafeFileWriter file;
  if (!file.Open(path, false, error)) return false;
  FileStream& out = file.stream();
  WriteXbaseHeader(out, header);
  XbaseWriter writer(book, data, options, fields);
  bool split = !memo &&
               static_cast<uint64_t>(rows.size()) * recordSize >= FileStream::kSplitMinimum &&
               data.cells.BuildRowIndex(0, data.UsedRows());
  if (split ? !WriteInHalves(writer, rows, header.headerSize, recordSize, out, error)
            : !WriteRecords(writer, rows, 0, rows.size(), out, recordSize, nullptr, error)) {
    return false;
  }
  uint8_t end = 0x1A;
  out.Write(&end, 1);
  if (!out.ok()) {
    error = out.error();
    return false;
  }
  std::string memoPath = XbaseMemoPath(path, options.dialect);
  if (memo) {
    SafeFileWriter memoFile;
    const std::string& bytes = writer.memo().Finish();
    if (!memoFile.Open(memoPath, false, error)) return false;
    memoFile.stream().Write(bytes.data(), bytes.size());
    // The memo file goes first: a table in place without its memos would point nowhere.
    if (!memoFile.Commit(error)) return false;
  }
  if (!file.Commit(error)) return false;
  // A memo file of an earlier export would be taken for this table's.
  if (!memo && platform::FileExists(memoPath)) platform::DeleteFile(memoPath);
  return true;
}

}  // namespace kelpdex
