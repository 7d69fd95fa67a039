#include <algorithm>
#include <cstring>
#include <string>
#include <vector>

#include "persist/binary_format.h"
#include "persist/file_kind.h"
#include "persist/protection.h"
#include "persist/rc4_cipher.h"
#include "store/bytes.h"

namespace kelpdex {

namespace {

// Little-endian values into the stream, through the cipher when there is one; or into a digest
// alone, which then sees exactly the bytes the stream would hold; or onto the end of a string.
class Out {
 public:
  Out(FileStream& stream, StreamCipher* cipher) : stream_(&stream), cipher_(cipher) {}
  explicit Out(Md5Digest& digest) : digest_(&digest) {}
  explicit Out(std::string& bytes) : bytes_(&bytes) {}

  void Bytes(const void* data, size_t size) {
    if (digest_ != nullptr) {
      digest_->Update(data, size);
    } else if (bytes_ != nullptr) {
      bytes_->append(static_cast<const char*>(data), size);
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
  std::string* bytes_ = nullptr;
};

void WriteDropDownLists(Out& out, const DropDownLists& lists) {
  uint16_t used = 0;
  for (const DropDownList& list : lists) used += list.used;
  out.U16(used);
  for (uint16_t slot = 0; slot < kDropDownListSlots; ++slot) {
    const DropDownList& list = lists[slot];
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
  // Words of 0 at the end are rows that never had one: they are left out, so that the bytes do
  // not depend on how far the words once grew.
  uint32_t rows = formats.rowWords().rowCount();
  while (rows > 0 && formats.rowWords().Value(rows - 1) == 0) --rows;
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

// A record as a read-only copy holds it: formulas give way to their values, and no cell is Auto.
// The size written to `out`; 0 for a formula never computed, which has no value to show.
uint32_t ReadOnlyRecord(const uint8_t* r, uint8_t* out) {
  uint32_t size = cell::Size(r);
  uint8_t tag = cell::Tag(r);
  uint8_t error = tag & cell::kErrorMask;
  uint32_t row = cell::Row(r);
  uint16_t column = cell::Column(r);
  if (cell::IsText(r) || cell::IsNumber(r)) {
    std::memcpy(out, r, size);
    out[0] = static_cast<uint8_t>(tag & ~cell::kAuto);
    return size;
  }
  if (cell::FormulaFlags(r) & cell::kCachedString) {
    return cell::EncodeText(out, row, column, cell::CachedString(r), error);
  }
  if ((cell::FormulaFlags(r) & cell::kCachedNumber) || error != 0) {
    return cell::EncodeNumber(out, row, column, cell::CachedNumber(r), error);
  }
  return 0;
}

// Calls visit(record, size) for every cell record of a chain in order, as a read-only copy holds
// it when asked.
template <typename Visit>
void EachCell(const RowBlock* head, bool readOnlyCopy, uint8_t* scratch, Visit visit) {
  for (const RowBlock* b = head; b != nullptr; b = b->next) {
    for (uint32_t off = 0; off < b->used;) {
      const uint8_t* r = b->data + off;
      uint32_t size = cell::Size(r);
      off += size;
      if (!readOnlyCopy) {
        visit(r, size);
      } else if (uint32_t copied = ReadOnlyRecord(r, scratch); copied != 0) {
        visit(scratch, copied);
      }
    }
  }
}

template <typename Visit>
void EachRun(const RowBlock* head, Visit visit) {
  for (const RowBlock* b = head; b != nullptr; b = b->next) {
    for (uint32_t off = 0; off + FormatStore::kRunSize <= b->used; off += FormatStore::kRunSize) {
      visit(b->data + off, FormatStore::kRunSize);
    }
  }
}

// Records leave in blocks filled as far as they go, whatever the blocks in memory hold after
// splits and edits: the same document always gives the same bytes, and no half-empty block
// reaches the file. The sizes come first, since the file gives the block count ahead of them.
template <typename Each>
std::vector<uint16_t> PackedSizes(uint32_t capacity, Each each) {
  std::vector<uint16_t> sizes;
  uint32_t fill = 0;
  each([&](const uint8_t*, uint32_t size) {
    if (fill + size > capacity) {
      sizes.push_back(static_cast<uint16_t>(fill));
      fill = 0;
    }
    fill += size;
  });
  if (fill > 0) sizes.push_back(static_cast<uint16_t>(fill));
  return sizes;
}

// A chain's records as they lie: one stream of bytes across its blocks, cut by `sizes` at record
// boundaries, so the bytes go out in pieces without being copied.
void WriteChainPacked(Out& out, const RowBlock* head, const std::vector<uint16_t>& sizes) {
  out.U32(static_cast<uint32_t>(sizes.size()));
  const RowBlock* b = head;
  uint32_t offset = 0;
  for (uint16_t size : sizes) {
    out.U16(size);
    for (uint32_t left = size; left > 0;) {
      while (offset >= b->used) {
        b = b->next;
        offset = 0;
      }
      uint32_t piece = std::min<uint32_t>(left, b->used - offset);
      out.Bytes(b->data + offset, piece);
      offset += piece;
      left -= piece;
    }
  }
}

// Records made on the way (a read-only copy's) are gathered into each block first.
template <typename Each>
void WriteMadePacked(Out& out, const std::vector<uint16_t>& sizes, Each each) {
  out.U32(static_cast<uint32_t>(sizes.size()));
  std::vector<uint8_t> block(kBlockPayload);
  size_t next = 0;
  uint32_t fill = 0;
  each([&](const uint8_t* r, uint32_t size) {
    if (fill + size > sizes[next]) {
      out.U16(sizes[next++]);
      out.Bytes(block.data(), fill);
      fill = 0;
    }
    std::memcpy(block.data() + fill, r, size);
    fill += size;
  });
  if (fill > 0) {
    out.U16(static_cast<uint16_t>(fill));
    out.Bytes(block.data(), fill);
  }
}

void WriteStyleTable(Out& out, const StyleTable& styles) {
  out.U8(styles.fontCount());
  for (uint8_t i = 0; i < styles.fontCount(); ++i) out.Bytes(styles.Font(i).bytes, kFontRecordSize);
  out.U16(styles.styleCount());
  for (uint16_t i = 0; i < styles.styleCount(); ++i) {
    out.Bytes(styles.Style(i).bytes, kStyleRecordSize);
  }
}

// What a sheet holds ahead of its cells: containers, column formats, row words, style runs.
void WriteSheetFormats(Out& out, const Worksheet& sheet) {
  WriteContainers(out, sheet);
  WriteColumnRuns(out, sheet.formats);
  WriteRowRuns(out, sheet.formats);
  WriteChainPacked(out, sheet.formats.head(),
                   PackedSizes(FormatStore::kRunCapacity,
                               [&](auto visit) { EachRun(sheet.formats.head(), visit); }));
}

void WriteSheetSettings(Out& out, const Worksheet& sheet) {
  out.Bytes(sheet.pageSettings.data(), sheet.pageSettings.size());
  out.Bytes(sheet.sheetSettings.data(), sheet.sheetSettings.size());
}

void WriteWorksheet(Out& out, const Worksheet& sheet, bool readOnlyCopy) {
  WriteSheetFormats(out, sheet);
  std::vector<uint8_t> scratch(readOnlyCopy ? kBlockPayload : 0);
  auto cells = [&](auto visit) {
    EachCell(sheet.cells.head(), readOnlyCopy, scratch.data(), visit);
  };
  std::vector<uint16_t> sizes = PackedSizes(kBlockPayload, cells);
  if (readOnlyCopy) {
    WriteMadePacked(out, sizes, cells);
  } else {
    WriteChainPacked(out, sheet.cells.head(), sizes);
  }
  WriteSheetSettings(out, sheet);
}

bool WriteStream(Out& out, const Workbook& book, bool readOnlyCopy) {
  out.Padded(book.lastSavedBy, binary::kUserNameSize);
  out.Padded(book.lastSavedAt, binary::kDateSize);
  out.U16(book.treePaneVisible);
  out.U16(book.treePaneWidth);
  out.U16(book.inspectPaneVisible);
  out.U16(book.inspectPaneHeight);
  WriteDropDownLists(out, book.dropDownLists);
  WriteStyleTable(out, book.styles);
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

void WriteBinaryStyles(const Workbook& book, std::string& out) {
  Out to(out);
  WriteDropDownLists(to, book.dropDownLists);
  WriteStyleTable(to, book.styles);
}

void WriteBinarySheetLayout(const Worksheet& sheet, std::string& out) {
  Out to(out);
  WriteSheetFormats(to, sheet);
  WriteSheetSettings(to, sheet);
}

bool WriteBinaryDocument(FileStream& stream, const Workbook& book) {
  stream.SetGzipContent(DeflateFor::kRecords);
  if (book.protectionMode != 0) return WriteProtectedDocument(stream, book);
  stream.Write("30000000000", kBinaryHeaderSize);
  WriteBinaryStream(stream, book, nullptr, false);
  return stream.Flush();
}

}  // namespace kelpdex
