#include <algorithm>
#include <cmath>
#include <cstring>
#include <memory>
#include <new>
#include <vector>

#include "persist/binary_format.h"
#include "persist/chart_matrix.h"
#include "persist/file_kind.h"
#include "persist/old_drop_downs.h"
#include "persist/protection.h"
#include "store/block_chain.h"
#include "store/bytes.h"
#include "store/catalogue.h"

namespace kelpdex {

namespace {

// Sizes that a healthy file never passes; beyond them the stream is taken as damaged rather than
// read until memory or the disk runs out.
constexpr uint32_t kMaxTreeItems = 1u << 20;
constexpr uint32_t kMaxInspectedCells = 1u << 20;
constexpr uint32_t kMaxContainers = 255;

uint64_t RecordKey(const uint8_t* r) {
  return (static_cast<uint64_t>(cell::Row(r)) << 16) | cell::Column(r);
}

// Reads the stream from a file, or pieces of it from bytes in memory, where running short is
// damage and the errors a stream would keep stay in the reader.
class Reader {
 public:
  Reader(FileStream& stream, StreamCipher* cipher, int version)
      : s_(&stream), cipher_(cipher), version_(version) {}
  explicit Reader(std::string_view bytes)
      : cipher_(nullptr), version_(binary::kVersion), memory_(bytes) {}

  bool ReadStream(Workbook& book);
  bool ReadStyleSections(DropDownLists& lists, StyleTable& styles) {
    return ReadDropDownLists(lists) && ReadStyles(styles);
  }
  bool ReadSheetLayout(Worksheet& sheet, uint16_t styleCount) {
    return ReadSheetFormats(sheet, styleCount) && ReadSheetSettings(sheet);
  }
  bool bad() const { return bad_; }
  // Reading from memory: whether every byte was taken, and the error that is not damage.
  bool atEnd() const { return memory_.empty(); }
  ErrorCode error() const { return error_; }
  // The bytes of the stream taken so far: where a read-only copy ends in its file.
  uint64_t consumed() const { return consumed_; }

 private:
  bool Bytes(void* out, size_t size) {
    if (bad_) return false;
    consumed_ += size;
    if (s_ == nullptr) {
      if (size > memory_.size()) return Damaged();
      std::memcpy(out, memory_.data(), size);
      memory_.remove_prefix(size);
      return true;
    }
    return s_->ReadBlock(static_cast<uint8_t*>(out), size, cipher_);
  }
  bool U8(uint8_t& v) { return Bytes(&v, 1); }
  bool U16(uint16_t& v) {
    uint8_t b[2];
    if (!Bytes(b, 2)) return false;
    v = LoadU16(b);
    return true;
  }
  bool U32(uint32_t& v) {
    uint8_t b[4];
    if (!Bytes(b, 4)) return false;
    v = LoadU32(b);
    return true;
  }
  bool Text(std::string& out, size_t size) {
    out.resize(size);
    return size == 0 || Bytes(out.data(), size);
  }
  // A zero-padded field, up to its first zero.
  bool Padded(std::string& out, size_t size) {
    std::vector<char> field(size);
    if (!Bytes(field.data(), size)) return false;
    out.assign(field.data(), strnlen(field.data(), size));
    return true;
  }
  bool Damaged() {
    bad_ = true;
    return false;
  }
  void SetError(ErrorCode code) {
    if (s_ != nullptr) {
      s_->SetError(code);
    } else if (error_ == err::kNone) {
      error_ = code;
    }
  }
  // A fresh block (null when memory ran out) joins the chain and takes `used` bytes from the
  // stream. Null on failure; a block that joined stays in the chain, empty, for its store to free.
  // The store adopts the chain whether or not the read went well, so the blocks always have an
  // owner.
  RowBlock* TakeBlockAndRead(RowBlock* b, BlockChain& chain, uint16_t used) {
    if (b == nullptr) {
      SetError(err::kOutOfMemory);
      return nullptr;
    }
    chain.Append(b);
    b->used = used;
    if (!Bytes(b->data, used)) {
      b->used = 0;
      return nullptr;
    }
    return b;
  }

  bool ReadDropDownLists(DropDownLists& lists);
  bool ReadOldDropDownBlock(Workbook& book);
  bool ReadStyles(StyleTable& styles);
  bool ReadTree(Workbook& book);
  bool ReadWorksheet(Worksheet& sheet, uint16_t styleCount);
  bool ReadSheetFormats(Worksheet& sheet, uint16_t styleCount);
  bool ReadSheetSettings(Worksheet& sheet);
  bool ReadContainers(Worksheet& sheet);
  bool ReadColumnRuns(FormatStore& formats);
  bool ReadRowRuns(FormatStore& formats);
  bool ReadRunBlocks(FormatStore& formats, uint16_t styleCount);
  bool ReadCellBlocks(CellStore& cells);

  FileStream* s_ = nullptr;
  StreamCipher* cipher_;
  int version_;
  std::string_view memory_;
  ErrorCode error_ = err::kNone;
  bool bad_ = false;
  uint64_t consumed_ = 0;
  uint32_t containerId_ = 0;  // the running ids of older files
};

bool Reader::ReadDropDownLists(DropDownLists& lists) {
  uint16_t count = 0;
  if (!U16(count)) return false;
  if (count > kDropDownListSlots) return Damaged();
  for (uint16_t i = 0; i < count; ++i) {
    uint16_t slot = 0, nameLength = 0;
    uint32_t items = 0;
    if (!U16(slot)) return false;
    if (slot >= kDropDownListSlots || lists[slot].used) return Damaged();
    DropDownList& list = lists[slot];
    list.used = true;
    if (!U16(nameLength) || !Text(list.name, nameLength) || !U32(items)) return false;
    for (uint32_t k = 0; k < items; ++k) {
      uint16_t length = 0;
      std::string item;
      if (!U16(length) || !Text(item, length)) return false;
      list.items.push_back(std::move(item));
    }
  }
  return true;
}

// Versions 1 and 2 kept drop-down lists as 34-byte records, each an item of a numbered list.
bool Reader::ReadOldDropDownBlock(Workbook& book) {
  uint32_t count = 0;
  if (!U32(count)) return false;
  for (uint32_t i = 0; i < count; ++i) {
    uint8_t r[binary::kOldDropDownRecordSize];
    if (!Bytes(r, sizeof r)) return false;
    uint16_t number = LoadU16(r);
    uint16_t flags = LoadU16(r + 2);
    uint16_t length = LoadU16(r + 4);
    if ((flags & 2) || number < 1 || number > kDropDownListSlots) continue;
    DropDownList& list = book.dropDownLists[number - 1];
    if (!list.used) {
      list.used = true;
      list.name = "List " + std::to_string(number) + ".";
    }
    list.items.emplace_back(reinterpret_cast<const char*>(r + 6), std::min<uint16_t>(length, 28));
  }
  return true;
}

bool Reader::ReadStyles(StyleTable& table) {
  uint8_t fontCount = 0;
  if (!U8(fontCount)) return false;
  if (fontCount == 0 || fontCount > kMaxFonts) return Damaged();
  std::vector<FontRecord> fonts(fontCount);
  for (FontRecord& f : fonts) {
    if (!Bytes(f.bytes, kFontRecordSize)) return false;
  }
  uint16_t styleCount = 0;
  if (!U16(styleCount)) return false;
  if (styleCount == 0 || styleCount > kMaxStyles) return Damaged();
  std::vector<StyleRecord> styles(styleCount);
  for (StyleRecord& st : styles) {
    if (!Bytes(st.bytes, kStyleRecordSize)) return false;
  }
  table.LoadFonts(fonts.data(), fontCount);
  table.LoadStyles(styles.data(), styleCount);
  return true;
}

bool Reader::ReadContainers(Worksheet& sheet) {
  uint32_t count = 0;
  if (!U32(count)) return false;
  if (count > kMaxContainers) return Damaged();
  sheet.containers.resize(count);
  for (ContainerRecord& c : sheet.containers) {
    if (!Bytes(c.bytes.data(), c.bytes.size())) return false;
    if (version_ < 3) StoreU32(c.bytes.data() + container::kIdAt, ++containerId_);
    c.charts.resize(c.bytes[container::kChartCountAt]);
    for (ChartRecord& chart : c.charts) {
      if (!Bytes(chart.bytes.data(), chart.bytes.size())) return false;
      if (version_ >= 3) {
        if (!Bytes(chart.matrix.data(), chart.matrix.size())) return false;
      } else {
        // Older charts kept three rotation angles in degrees instead of the matrix.
        double degrees[3];
        for (int axis = 0; axis < 3; ++axis) {
          float angle = 0;
          std::memcpy(&angle, chart.bytes.data() + chart::kRotationAt + 4 * axis, 4);
          degrees[axis] = angle;
        }
        StoreRotationMatrix(degrees, chart.matrix.data());
      }
      chart.series.resize(chart.bytes[chart::kSeriesCountAt]);
      for (auto& series : chart.series) {
        if (!Bytes(series.data(), series.size())) return false;
      }
    }
  }
  return true;
}

bool Reader::ReadColumnRuns(FormatStore& formats) {
  uint32_t column = 0;
  while (column < kColumnLimit) {
    uint16_t run = 0;
    ColumnFormat format;
    if (!U16(run) || !U16(format.words[0]) || !U16(format.words[1])) return false;
    // The first version kept no automatic row height.
    if (version_ >= 2 && !U16(format.words[2])) return false;
    if (run == 0 || run > kColumnLimit - column) return Damaged();
    for (uint32_t k = 0; k < run; ++k) formats.Column(static_cast<uint16_t>(column + k)) = format;
    column += run;
  }
  return true;
}

bool Reader::ReadRowRuns(FormatStore& formats) {
  uint32_t rows = 0;
  if (!U32(rows)) return false;
  if (rows > kRowLimit) return Damaged();
  uint32_t row = 0;
  while (row < rows) {
    uint32_t run = 0;
    uint16_t word = 0;
    if (!U32(run) || !U16(word)) return false;
    if (run == 0 || run > rows - row) return Damaged();
    // Rows of word 0 need no storage unless words behind them do.
    if ((word != 0 || row + run == rows) && !formats.rowWords().Fill(row, run, word)) {
      SetError(err::kOutOfMemory);
      return false;
    }
    row += run;
  }
  return true;
}

bool Reader::ReadRunBlocks(FormatStore& formats, uint16_t styleCount) {
  uint32_t count = 0;
  if (!U32(count)) return false;
  BlockChain chain;
  uint64_t lastKey = 0;
  bool any = false;
  bool failed = false;
  for (uint32_t i = 0; i < count && !failed; ++i) {
    uint16_t used = 0;
    if (!U16(used)) {
      failed = true;
    } else if (used == 0 || used > FormatStore::kRunCapacity || used % FormatStore::kRunSize != 0) {
      failed = !Damaged();
    }
    if (failed) break;
    RowBlock* b = TakeBlockAndRead(formats.TakeSpareBlock(), chain, used);
    if (b == nullptr) {
      failed = true;
      break;
    }
    for (uint32_t off = 0; off < used; off += FormatStore::kRunSize) {
      const uint8_t* r = b->data + off;
      uint16_t first = LoadU16(r), last = LoadU16(r + 2), style = LoadU16(r + 8);
      uint32_t row = LoadU32(r + 4);
      uint64_t key = (static_cast<uint64_t>(row) << 16) | first;
      if (first > last || last > kLastColumn || row > kLastRow || style >= styleCount ||
          (any && key <= lastKey)) {
        failed = !Damaged();
        break;
      }
      lastKey = (static_cast<uint64_t>(row) << 16) | last;
      any = true;
    }
  }
  formats.AdoptRunChain(chain.Release());
  return !failed;
}

// One record at `r` with `room` bytes left in its block: its size, or 0 when it does not hold
// together.
uint32_t CheckedRecordSize(const uint8_t* r, uint32_t room) {
  uint8_t tag = r[0];
  uint32_t size;
  if (tag & cell::kText) {
    if (room < cell::kTextHeader) return 0;
    size = cell::kTextHeader + LoadU16(r + 7);
  } else if (tag & cell::kNumber) {
    size = cell::kNumberSize;
  } else if (tag & cell::kFormula) {
    if (room < cell::kFormulaHeader) return 0;
    size = cell::kFormulaHeader + LoadU16(r + cell::kFormulaLengthAt);
    if (r[cell::kFlagsAt] & cell::kCachedString) {
      if (size + 2 > room) return 0;
      size += 2 + LoadU16(r + size);
    }
    if (r[cell::kFlagsAt] & cell::kArrayHead) {
      uint32_t columns = LoadU16(r + cell::kArrayColumnsAt);
      uint32_t rows = LoadU32(r + cell::kArrayRowsAt);
      if (columns == 0 || rows == 0 || cell::Column(r) + columns - 1 > kLastColumn ||
          rows > kRowLimit || cell::Row(r) + (rows - 1) > kLastRow) {
        return 0;
      }
    }
  } else {
    return 0;
  }
  return size <= room ? size : 0;
}

bool Reader::ReadCellBlocks(CellStore& cells) {
  uint32_t count = 0;
  if (!U32(count)) return false;
  BlockChain chain;
  uint64_t lastKey = 0;
  bool any = false;
  bool failed = false;
  for (uint32_t i = 0; i < count && !failed; ++i) {
    uint16_t used = 0;
    if (!U16(used)) {
      failed = true;
      break;
    }
    if (used == 0 || used > kBlockPayload) {
      Damaged();
      failed = true;
      break;
    }
    // Blocks are read straight into their final storage, spares first. Spares come in slabs of
    // up to 64 MB, never far ahead of the blocks the file really holds.
    constexpr uint32_t kSlabBlocks = 8192;
    if (cells.freeBlockCount() == 0 && count - i >= 256) {
      cells.ReserveSpareBlocks(std::min(count - i, kSlabBlocks));
    }
    RowBlock* b = TakeBlockAndRead(cells.TakeSpareBlock(), chain, used);
    if (b == nullptr) {
      failed = true;
      break;
    }
    for (uint32_t off = 0; off < used;) {
      const uint8_t* r = b->data + off;
      uint32_t size = CheckedRecordSize(r, used - off);
      if (size == 0 || cell::Row(r) > kLastRow || cell::Column(r) > kLastColumn ||
          (any && RecordKey(r) <= lastKey)) {
        Damaged();
        failed = true;
        break;
      }
      lastKey = RecordKey(r);
      any = true;
      off += size;
    }
  }
  // Failed or not, the store takes the chain: it owns the blocks and gives them back.
  cells.AdoptChain(chain.Release());
  return !failed;
}

bool Reader::ReadSheetFormats(Worksheet& sheet, uint16_t styleCount) {
  return ReadContainers(sheet) && ReadColumnRuns(sheet.formats) && ReadRowRuns(sheet.formats) &&
         ReadRunBlocks(sheet.formats, styleCount);
}

bool Reader::ReadSheetSettings(Worksheet& sheet) {
  return Bytes(sheet.pageSettings.data(), sheet.pageSettings.size()) &&
         Bytes(sheet.sheetSettings.data(), sheet.sheetSettings.size());
}

bool Reader::ReadWorksheet(Worksheet& sheet, uint16_t styleCount) {
  return ReadSheetFormats(sheet, styleCount) && ReadCellBlocks(sheet.cells) &&
         ReadSheetSettings(sheet);
}

bool Reader::ReadTree(Workbook& book) {
  uint32_t count = 0;
  // The first version has no count: items follow until the end of the file.
  bool untilEnd = version_ < 2;
  if (!untilEnd) {
    if (!U32(count)) return false;
    if (count > kMaxTreeItems) return Damaged();
  }
  WorkbookNode* last = nullptr;
  for (uint32_t i = 0; untilEnd || i < count; ++i) {
    if (untilEnd && s_->AtEnd()) break;
    uint8_t nameLength = 0, kind = 0, flag = 0;
    uint16_t level = 0;
    std::string name;
    if (!U8(nameLength) || !Text(name, nameLength) || !U16(level) || !U8(kind) || !U8(flag)) {
      return false;
    }
    uint16_t maxLevel =
        last == nullptr ? 1 : static_cast<uint16_t>(last->level + (last->IsFolder() ? 1 : 0));
    if (level < 1 || level > maxLevel || (kind != kWorksheetNode && kind != kFolderNode)) {
      return Damaged();
    }
    WorkbookNode* node;
    if (kind == kFolderNode) {
      auto* folder = new (std::nothrow) Folder(name);
      if (folder == nullptr) {
        SetError(err::kOutOfMemory);
        return false;
      }
      folder->open = flag;
      node = folder;
      ++book.folderCount;
    } else {
      auto* sheet = new (std::nothrow) Worksheet(name);
      if (sheet == nullptr) {
        SetError(err::kOutOfMemory);
        return false;
      }
      node = sheet;
      ++book.worksheetCount;
      if (flag == 1) book.currentSheet = sheet;
    }
    node->level = level;
    // Linked as read, so that whatever was read is freed with the workbook if the rest fails.
    node->previous = last;
    if (last != nullptr) {
      last->next = node;
    } else {
      book.firstNode = node;
    }
    last = node;
    if (kind == kWorksheetNode &&
        !ReadWorksheet(*static_cast<Worksheet*>(node), book.styles.styleCount())) {
      return false;
    }
  }
  return true;
}

bool Reader::ReadStream(Workbook& book) {
  uint16_t treeVisible = 0, treeWidth = 0, inspectVisible = 0, inspectHeight = 0;
  if (!Padded(book.lastSavedBy, binary::kUserNameSize) ||
      !Padded(book.lastSavedAt, binary::kDateSize) || !U16(treeVisible) || !U16(treeWidth) ||
      !U16(inspectVisible) || !U16(inspectHeight)) {
    return false;
  }
  book.treePaneVisible = treeVisible;
  book.treePaneWidth = treeWidth;
  book.inspectPaneVisible = inspectVisible;
  book.inspectPaneHeight = inspectHeight;
  if (version_ < 3 && !ReadOldDropDownBlock(book)) return false;
  if (!ReadDropDownLists(book.dropDownLists) || !ReadStyles(book.styles)) return false;
  uint32_t inspected = 0;
  if (!U32(inspected)) return false;
  if (inspected > kMaxInspectedCells) return Damaged();
  book.inspectCells.resize(inspected);
  for (InspectedCell& c : book.inspectCells) {
    if (!Bytes(c.bytes.data(), c.bytes.size())) return false;
  }
  return ReadTree(book);
}

// The checks after a load: a current table whose catalogue exists, and every catalogue with its
// table; then the record set and the fields of the current table.
bool CheckTables(Workbook& book) {
  Worksheet* current = book.currentSheet;
  if (current == nullptr || current->level != 1 || book.FindTable(current->Name()) != current ||
      book.FindCatalogue(current->Name()) == nullptr) {
    book.errorCode = err::kInvalidDatabase;
    return false;
  }
  WorkbookNode* system = book.FindNode("\\system");
  if (system == nullptr || !system->IsFolder()) {
    book.errorCode = err::kInvalidDatabase;
    return false;
  }
  for (WorkbookNode* n = system->next; n != nullptr && n->level > system->level; n = n->next) {
    TableSpec compiled;
    if (n->IsWorksheet() && !CompileTableSpec(book, n->Name(), compiled)) return false;
  }
  return true;
}

}  // namespace

bool ReadBinaryStyles(std::string_view bytes, DropDownLists& lists, StyleTable& styles) {
  DropDownLists read;
  Reader reader(bytes);
  if (!reader.ReadStyleSections(read, styles) || !reader.atEnd()) return false;
  lists = std::move(read);
  return true;
}

bool ReadBinarySheetLayout(std::string_view bytes, Worksheet& sheet, uint16_t styleCount,
                           ErrorCode& error) {
  sheet.formats.Reset(false);
  sheet.containers.clear();
  Reader reader(bytes);
  if (reader.ReadSheetLayout(sheet, styleCount) && reader.atEnd()) return true;
  error = reader.error() != err::kNone ? reader.error() : err::kInvalidBinaryFormat;
  return false;
}

bool ReadBinaryDocument(FileStream& stream, Workbook& book, const char* password,
                        const std::string& documentPath) {
  auto fail = [&](ErrorCode code) {
    book.errorCode = code;
    return false;
  };
  if (!stream.Rewind()) return fail(stream.error());
  uint8_t head[kBinaryHeaderSize];
  if (!stream.Read(head, sizeof head)) return fail(stream.error());
  int version = head[0] - '0';
  bool digits = version >= 1 && version <= 3;
  for (uint8_t c : head) digits &= c >= '0' && c <= '9';
  if (!digits) return fail(err::kInvalidBinaryFormat);
  bool keyed = head[1] >= '1';
  bool readOnlyCopy = keyed && head[2] == '1';
  bool withKey = keyed && password != nullptr;
  if (keyed && !readOnlyCopy && !withKey) return fail(err::kInvalidPassword);

  // Everything is read into a new workbook, which takes the old one's place only when whole.
  auto fresh = std::make_unique<Workbook>();
  uint64_t start = kBinaryHeaderSize;
  if (readOnlyCopy) {
    Reader copy(stream, nullptr, version);
    bool ok = copy.ReadStream(*fresh);
    if (!stream.ok()) return fail(stream.error());
    if (!ok || copy.bad()) return fail(err::kInvalidBinaryFormat);
    start += copy.consumed();
    // With the password the full copy behind stands in for this one.
    if (withKey) fresh = std::make_unique<Workbook>();
  }
  Rc4Cipher cipher;
  if (withKey) {
    ErrorCode error = err::kNone;
    if (!StartProtectedStream(stream, start, password, head[1], cipher, error)) return fail(error);
  }
  if (!readOnlyCopy || withKey) {
    Reader reader(stream, withKey ? &cipher : nullptr, version);
    bool ok = reader.ReadStream(*fresh);
    if (!stream.ok()) return fail(stream.error());
    if (!ok || reader.bad()) return fail(err::kInvalidBinaryFormat);
  }
  cipher.Stop();
  if (version < 3 && !documentPath.empty()) ReadOldDropDownFile(documentPath, *fresh);
  if (!CheckTables(*fresh)) return fail(fresh->errorCode);
  fresh->readOnly = readOnlyCopy && !withKey;
  book.SwapContents(*fresh);
  book.protectionMode = keyed ? (readOnlyCopy ? 1 : 2) : 0;
  // The next save derives its key from the password that opened the file.
  if (!withKey || !book.password.Set(password)) book.password.Wipe();
  book.errorCode = err::kNone;
  return true;
}

}  // namespace kelpdex
