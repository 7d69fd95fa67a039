#include <algorithm>
#include <cstring>
#include <vector>

#include "persist/binary_format.h"
#include "persist/file_kind.h"
#include "persist/protection.h"
#include "persist/rc4_cipher.h"
#include "store/bytes.h"

namespace kelpdex {

namespace {

// Little-endian values into the stream, through the cipher when there is one; or into a digest
// alone, which then sees exactly the bytes the stream would hold.
class Out {
 public:
  Out(FileStream& stream, StreamCipher* cipher) : stream_(&stream), cipher_(cipher) {}
  explicit Out(Md5Digest& digest) : digest_(&digest) {}

  void Bytes(const void* data, size_t size) {
    if (digest_ != nullptr) {
      digest_->Update(data, size);
    } else {
      stream_->WriteBlock(static_cast<const uint8_t*>(data), size, cipher_);
    }
  }
  void U8(uint8_t v) { Bytes(&v, 1); }
  void U16(uint16_t v) {
    uint8_t b[2];
    StoreU16(b, v);
    Bytes(b, 2);
  }
  void U32(uint32_t v) {
    uint8_t b[4];
    StoreU32(b, v);
    Bytes(b, 4);
  }
  // A text in a zero-padded field of `size` bytes.
  void Padded(std::string_view text, size_t size) {
    std::vector<uint8_t> field(size, 0);
    std::memcpy(field.data(), text.data(), std::min(text.size(), size));
    Bytes(field.data(), size);
  }
  bool ok() const { return stream_ == nullptr || stream_->ok(); }

 private:
  FileStream* stream_ = nullptr;
  StreamCipher* cipher_ = nullptr;
  Md5Digest* digest_ = nullptr;
};

void WriteDropDownLists(Out& out, const Workbook& book) {
  uint16_t used = 0;
  for (const DropDownList& list : book.dropDownLists) used += list.used;
  out.U16(used);
  for (uint16_t slot = 0; slot < kDropDownListSlots; ++slot) {
    const DropDownList& list = book.dropDownLists[slot];
    if (!list.used) continue;  // an empty slot takes no bytes
    out.U16(slot);
    out.U16(static_cast<uint16_t>(list.name.size()));
    out.Bytes(list.name.data(), list.name.size());
    out.U32(static_cast<uint32_t>(list.items.size()));
    for (const std::string& item : list.items) {
      uint16_t n = static_cast<uint16_t>(std::min<size_t>(item.size(), 0xFFFF));
      out.U16(n);
      out.Bytes(item.data(), n);
    }
  }
}

void WriteContainers(Out& out, const Worksheet& sheet) {
  out.U32(static_cast<uint32_t>(sheet.containers.size()));
  for (const ContainerRecord& c : sheet.containers) {
    std::array<uint8_t, kContainerSize> bytes = c.bytes;
    bytes[container::kChartCountAt] = static_cast<uint8_t>(c.charts.size());
    out.Bytes(bytes.data(), bytes.size());
    for (const ChartRecord& chart : c.charts) {
      std::array<uint8_t, kChartSize> record = chart.bytes;
      record[chart::kSeriesCountAt] = static_cast<uint8_t>(chart.series.size());
      out.Bytes(record.data(), record.size());
      out.Bytes(chart.matrix.data(), chart.matrix.size());
      for (const auto& series : chart.series) out.Bytes(series.data(), series.size());
    }
  }
}

void WriteColumnRuns(Out& out, const FormatStore& formats) {
  uint16_t column = 0;
  while (column < kColumnLimit) {
    const ColumnFormat& first = formats.Column(column);
    uint16_t run = 1;
    while (column + run < kColumnLimit &&
           std::memcmp(formats.Column(column + run).words, first.words, sizeof first.words) == 0) {
      ++run;
    }
    out.U16(run);
    for (uint16_t word : first.words) out.U16(word);
    column = static_cast<uint16_t>(column + run);
  }
}

void WriteRowRuns(Out& out, const FormatStore& formats) {
  uint32_t rows = formats.rowWords().rowCount();
  out.U32(rows);
  uint32_t row = 0;
  while (row < rows) {
    uint16_t word = formats.rowWords().Value(row);
    uint32_t run = 1;
    while (row + run < rows && formats.rowWords().Value(row + run) == word) ++run;
    out.U32(run);
    out.U16(word);
    row += run;
  }
}

// A block as a read-only copy holds it: formulas give way to their values, and no cell is Auto.
uint32_t ReadOnlyBlock(const RowBlock* block, uint8_t* out) {
  uint32_t used = 0;
  for (uint32_t off = 0; off < block->used;) {
    const uint8_t* r = block->data + off;
    uint32_t size = cell::Size(r);
    off += size;
    uint8_t tag = cell::Tag(r);
    uint8_t error = tag & cell::kErrorMask;
    uint32_t row = cell::Row(r);
    uint16_t column = cell::Column(r);
    if (cell::IsText(r) || cell::IsNumber(r)) {
      std::memcpy(out + used, r, size);
      out[used] = static_cast<uint8_t>(tag & ~cell::kAuto);
      used += size;
    } else if (cell::FormulaFlags(r) & cell::kCachedString) {
      used += cell::EncodeText(out + used, row, column, cell::CachedString(r), error);
    } else if ((cell::FormulaFlags(r) & cell::kCachedNumber) || error != 0) {
      used += cell::EncodeNumber(out + used, row, column, cell::CachedNumber(r), error);
    }
    // A formula never computed has no value to show, and is left out.
  }
  return used;
}

uint32_t CountUsedBlocks(const RowBlock* head) {
  uint32_t count = 0;
  for (const RowBlock* b = head; b != nullptr; b = b->next) count += b->used > 0;
  return count;
}

void WriteBlocks(Out& out, const RowBlock* head, bool readOnlyCopy) {
  out.U32(CountUsedBlocks(head));
  std::vector<uint8_t> copy(readOnlyCopy ? kBlockPayload : 0);
  for (const RowBlock* b = head; b != nullptr; b = b->next) {
    if (b->used == 0) continue;
    if (readOnlyCopy) {
      uint32_t used = ReadOnlyBlock(b, copy.data());
      out.U16(static_cast<uint16_t>(used));
      out.Bytes(copy.data(), used);
    } else {
      out.U16(b->used);
      out.Bytes(b->data, b->used);
    }
  }
}

void WriteWorksheet(Out& out, const Worksheet& sheet, bool readOnlyCopy) {
  WriteContainers(out, sheet);
  WriteColumnRuns(out, sheet.formats);
  WriteRowRuns(out, sheet.formats);
  WriteBlocks(out, sheet.formats.head(), false);
  WriteBlocks(out, sheet.cells.head(), readOnlyCopy);
  out.Bytes(sheet.pageSettings.data(), sheet.pageSettings.size());
  out.Bytes(sheet.sheetSettings.data(), sheet.sheetSettings.size());
}

bool WriteStream(Out& out, const Workbook& book, bool readOnlyCopy) {
  out.Padded(book.lastSavedBy, binary::kUserNameSize);
  out.Padded(book.lastSavedAt, binary::kDateSize);
  out.U16(book.treePaneVisible);
  out.U16(book.treePaneWidth);
  out.U16(book.inspectPaneVisible);
  out.U16(book.inspectPaneHeight);
  WriteDropDownLists(out, book);
  out.U8(book.styles.fontCount());
  for (uint8_t i = 0; i < book.styles.fontCount(); ++i) {
    out.Bytes(book.styles.Font(i).bytes, kFontRecordSize);
  }
  out.U16(book.styles.styleCount());
  for (uint16_t i = 0; i < book.styles.styleCount(); ++i) {
    out.Bytes(book.styles.Style(i).bytes, kStyleRecordSize);
  }
  out.U32(static_cast<uint32_t>(book.inspectCells.size()));
  for (const InspectedCell& c : book.inspectCells) out.Bytes(c.bytes.data(), c.bytes.size());

  uint32_t items = 0;
  for (const WorkbookNode* n = book.firstNode; n != nullptr; n = n->next) ++items;
  out.U32(items);
  for (const WorkbookNode* n = book.firstNode; n != nullptr && out.ok(); n = n->next) {
    std::string_view name = n->Name();
    out.U8(static_cast<uint8_t>(name.size()));
    out.Bytes(name.data(), name.size());
    out.U16(n->level);
    out.U8(n->nodeType);
    if (n->IsFolder()) {
      out.U8(n->open);
    } else {
      out.U8(n == book.currentSheet ? 1 : 0);
      WriteWorksheet(out, *static_cast<const Worksheet*>(n), readOnlyCopy);
    }
  }
  return out.ok();
}

}  // namespace

bool WriteBinaryStream(FileStream& stream, const Workbook& book, StreamCipher* cipher,
                       bool readOnlyCopy) {
  Out out(stream, cipher);
  return WriteStream(out, book, readOnlyCopy);
}

void ComputeDocumentDigest(const Workbook& book, uint8_t digest[16]) {
  Md5Digest hash;
  Out out(hash);
  WriteStream(out, book, false);
  hash.Final(digest);
}

bool WriteBinaryDocument(FileStream& stream, const Workbook& book) {
  stream.SetGzipContent(DeflateFor::kRecords);
  if (book.protectionMode != 0) return WriteProtectedDocument(stream, book);
  stream.Write("30000000000", kBinaryHeaderSize);
  WriteBinaryStream(stream, book, nullptr, false);
  return stream.Flush();
}

}  // namespace kelpdex
