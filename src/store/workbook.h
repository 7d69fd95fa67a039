// A document: a flat, doubly linked list of folders and worksheets in display order, where a
// node's level gives the tree, and the tables every cell refers to by number.
#pragma once

#include <array>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "core/document_kind.h"
#include "core/error_code.h"
#include "core/password.h"
#include "store/cell_store.h"
#include "store/field_default.h"
#include "store/format_store.h"
#include "store/record_set.h"
#include "store/sheet_records.h"
#include "store/style_table.h"
#include "store/text_file_options.h"
#include "store/undo_recorder.h"
#include "store/undo_slot.h"

namespace kelpdex {

constexpr uint8_t kWorksheetNode = 1;
constexpr uint8_t kFolderNode = 2;
constexpr size_t kNodeNameSize = 128;  // 127 characters and the terminator
constexpr size_t kMaxPathLength = 255;
constexpr uint32_t kDropDownListSlots = 100;
constexpr int32_t kDefaultUndoLevel = 20;

class WorkbookNode {
 public:
  virtual ~WorkbookNode() = default;
  WorkbookNode(const WorkbookNode&) = delete;
  WorkbookNode& operator=(const WorkbookNode&) = delete;

  std::string_view Name() const { return name; }
  // Names longer than 127 bytes are cut.
  void SetName(std::string_view text);
  bool IsFolder() const { return nodeType == kFolderNode; }
  bool IsWorksheet() const { return nodeType == kWorksheetNode; }

  char name[kNodeNameSize] = {};
  uint8_t nodeType;
  uint16_t level = 1;  // 1 at the root
  uint8_t open = 0;
  WorkbookNode* previous = nullptr;
  WorkbookNode* next = nullptr;

 protected:
  WorkbookNode(uint8_t type, std::string_view text) : nodeType(type) { SetName(text); }
};

class Folder : public WorkbookNode {
 public:
  explicit Folder(std::string_view text) : WorkbookNode(kFolderNode, text) {}
};

// A Long Text or Images/Files value of a cell that waits for the side file: it moves with its
// record and its field.
struct SheetObject {
  uint32_t row = 0;
  uint16_t column = 0;
  FieldType type = FieldType::kUnknown;  // kLongText or kFiles
  std::string content;
};

class Worksheet : public WorkbookNode {
 public:
  explicit Worksheet(std::string_view text) : WorkbookNode(kWorksheetNode, text) {}

  // Row and column changes of cells and formats together. False with code 35 (rows) or 34
  // (columns) when a cell would be pushed off the sheet.
  bool InsertRows(uint32_t firstRow, uint32_t lastRow, ErrorCode& error);
  void DeleteRow(uint32_t row);
  bool InsertColumn(uint16_t column, ErrorCode& error);
  void DeleteColumn(uint16_t column);
  // Rows at once, `rows` ascending and distinct, cells, formats and objects together.
  void RemoveRows(const uint32_t* rows, size_t count);
  bool InsertRowsBefore(const uint32_t* rows, size_t count, ErrorCode& error);
  // The rows in use: the last row with a cell or an object, plus 1; 0 for an empty sheet.
  uint32_t UsedRows() const;

  CellStore cells;
  FormatStore formats;
  std::vector<SheetObject> objects;
  std::vector<ContainerRecord> containers;
  std::array<uint8_t, kPageSettingsSize> pageSettings = DefaultPageSettings();
  std::array<uint8_t, kSheetSettingsSize> sheetSettings = DefaultSheetSettings();
};

struct DropDownList {
  bool used = false;
  std::string name;
  std::vector<std::string> items;
};
using DropDownLists = std::array<DropDownList, kDropDownListSlots>;

// Takes the first free slot of `lists`, named "List %d." with the first free number. False when
// every slot is used. The list editor works on a copy with this until its OK.
bool AddDropDownList(DropDownLists& lists, uint32_t& slot);

class Workbook {
 public:
  Workbook() = default;
  ~Workbook();
  Workbook(const Workbook&) = delete;
  Workbook& operator=(const Workbook&) = delete;

  // Deletes every node and returns the tables to their state in a new document.
  void Clear();
  // Exchanges the whole document with another workbook, as a load does once it has read a file
  // completely. The undo recorder stays with this workbook.
  void SwapContents(Workbook& other);
  // Empties every undo and redo step.
  void ClearUndoSlots();

  // The node whose path ("\folder\sheet") matches, compared without regard to case, starting at
  // `start` or the first node; nullptr if none.
  WorkbookNode* FindNode(std::string_view path, WorkbookNode* start = nullptr) const;
  // The path of a node, with its own name or only its folder's path. False if it would pass 255
  // bytes.
  bool PathOfNode(const WorkbookNode* node, std::string& path, bool withName) const;
  // Inserts a node, or a run of nodes linked through `next`, behind `after`; into a folder as
  // its last child; at the end of the list when `after` is null. The workbook owns them then.
  void AttachNode(WorkbookNode* node, WorkbookNode* after);
  // Takes a node and its descendants out of the list and hands them to the caller. Refuses when
  // no worksheet would be left.
  bool DetachNode(WorkbookNode* node);
  // Deletes a run of detached nodes.
  static void DeleteNodes(WorkbookNode* run);

  Worksheet* FindCatalogue(std::string_view table) const;
  Worksheet* FindTable(std::string_view table) const;
  // The data worksheet of the table at `index` among the tables; nullptr past the end.
  Worksheet* TableByIndex(uint32_t index) const;
  uint32_t TableCount() const;

  // Takes the first free slot, named "List %d." with the first free number. False with code 27
  // when all slots are used.
  bool AddDropDownList(uint32_t& slot);
  void RemoveDropDownList(uint32_t slot);

  int32_t folderCount = 0;
  int32_t worksheetCount = 0;
  Worksheet* currentSheet = nullptr;
  // The current table's records in display order, and its Text and Number fields.
  RecordSet records;
  std::vector<FieldDefault> fieldDefaults;
  // Takes the snapshot of each change; null records nothing.
  UndoRecorder* undo = nullptr;
  // The undo stack's levels, inline so that recording a one-cell edit allocates only the old
  // cell. `undoTop` is the slot of the last action, -1 when there is none; `undoLevel` the levels
  // the settings allow.
  std::array<UndoSlot, kUndoSlots> undoSlots;
  int32_t undoTop = -1;
  int32_t undoLevel = kDefaultUndoLevel;
  WorkbookNode* firstNode = nullptr;
  StyleTable styles;
  DropDownLists dropDownLists;
  // Who saved the document last and when (the generic date text of the file).
  std::string lastSavedBy;
  std::string lastSavedAt;
  // The tree and inspect panes as the document was left.
  uint16_t treePaneVisible = 1;
  uint16_t treePaneWidth = 0;
  uint16_t inspectPaneVisible = 0;
  uint16_t inspectPaneHeight = 0;
  std::vector<InspectedCell> inspectCells;
  // Opened as a read-only copy: it may not be saved over its file.
  bool readOnly = false;
  // The document's file and how it is kept. The lifecycle sets these; loads and Clear leave them.
  std::string fileName;  // the full path, empty for a new document
  DocumentKind openKind = DocumentKind::kNative;
  NativeFormat fileFormat = NativeFormat::kDefault;
  // How its text file is read and written, when it came from one or went to one.
  TextFileOptions textOptions;
  uint8_t protectionMode = 0;  // 0 none, 1 a read-only copy ahead of the cipher text, 2 enciphered
  // The password the next save derives its key from; empty when none was given. Wiped on reset.
  Password password;
  bool modified = false;  // differs from its file
  // A Long Text or Images/Files value in the side file was replaced, leaving a dead record there
  // for the next compaction.
  bool sideValuesReplaced = false;
  ErrorCode errorCode = err::kNone;
};

}  // namespace kelpdex
