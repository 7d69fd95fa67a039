#include "store/workbook.h"

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <memory>

#include "text/code_page.h"

namespace kelpdex {

namespace {

// The last node of `node`'s subtree: the node itself, or its folder's last descendant.
WorkbookNode* LastDescendant(WorkbookNode* node) {
  WorkbookNode* last = node;
  while (last->next != nullptr && last->next->level > node->level) last = last->next;
  return last;
}

}  // namespace

void WorkbookNode::SetName(std::string_view text) {
  size_t n = std::min(text.size(), kNodeNameSize - 1);
  std::memcpy(name, text.data(), n);
  name[n] = '\0';
}

bool Worksheet::InsertRows(uint32_t firstRow, uint32_t lastRow, ErrorCode& error) {
  if (!cells.CanInsertRows(firstRow, lastRow)) {
    error = err::kNoEmptyRows;
    return false;
  }
  formats.InsertRows(firstRow, lastRow);
  cells.InsertRows(firstRow, lastRow);
  for (SheetObject& object : objects) {
    if (object.row >= firstRow) object.row += lastRow - firstRow + 1;
  }
  return true;
}

void Worksheet::DeleteRow(uint32_t row) {
  RemoveRows(&row, 1);
}

bool Worksheet::InsertColumn(uint16_t column, ErrorCode& error) {
  if (!cells.CanInsertColumn(column)) {
    error = err::kNoEmptyColumns;
    return false;
  }
  formats.InsertColumn(column);
  cells.InsertColumn(column);
  for (SheetObject& object : objects) {
    if (object.column >= column) ++object.column;
  }
  return true;
}

void Worksheet::DeleteColumn(uint16_t column) {
  cells.DeleteColumn(column);
  formats.DeleteColumn(column);
  size_t kept = 0;
  for (SheetObject& object : objects) {
    if (object.column == column) continue;
    if (object.column > column) --object.column;
    objects[kept++] = std::move(object);
  }
  objects.resize(kept);
}

void Worksheet::RemoveRows(const uint32_t* rows, size_t count) {
  if (count == 0) return;
  cells.RemoveRows(rows, count);
  formats.RemoveRows(rows, count);
  const uint32_t* end = rows + count;
  size_t kept = 0;
  for (SheetObject& object : objects) {
    const uint32_t* at = std::lower_bound(rows, end, object.row);
    if (at != end && *at == object.row) continue;
    object.row -= static_cast<uint32_t>(at - rows);
    objects[kept++] = std::move(object);
  }
  objects.resize(kept);
}

bool Worksheet::InsertRowsBefore(const uint32_t* rows, size_t count, ErrorCode& error) {
  if (count == 0) return true;
  if (!cells.CanInsertRows(0, static_cast<uint32_t>(count) - 1) || UsedRows() + count > kRowLimit) {
    error = err::kNoEmptyRows;
    return false;
  }
  cells.InsertRowsBefore(rows, count);
  formats.InsertRowsBefore(rows, count);
  const uint32_t* end = rows + count;
  for (SheetObject& object : objects) {
    object.row += static_cast<uint32_t>(std::upper_bound(rows, end, object.row) - rows);
  }
  return true;
}

uint32_t Worksheet::UsedRows() const {
  uint32_t used = 0;
  uint32_t last = 0;
  if (cells.LastRecordRow(last)) used = last + 1;
  for (const SheetObject& object : objects) used = std::max(used, object.row + 1);
  return used;
}

Workbook::~Workbook() {
  DeleteNodes(firstNode);
}

void Workbook::DeleteNodes(WorkbookNode* run) {
  while (run != nullptr) {
    WorkbookNode* next = run->next;
    delete run;
    run = next;
  }
}

void Workbook::ClearUndoSlots() {
  for (UndoSlot& slot : undoSlots) slot.Clear();
  undoTop = -1;
}

void Workbook::Clear() {
  DeleteNodes(firstNode);
  firstNode = nullptr;
  currentSheet = nullptr;
  folderCount = 0;
  worksheetCount = 0;
  styles.Reset();
  for (DropDownList& list : dropDownLists) list = DropDownList();
  records.SetCount(0);
  records.SetOrdered(true);
  fieldDefaults.clear();
  ClearUndoSlots();
  lastSavedBy.clear();
  lastSavedAt.clear();
  treePaneVisible = 1;
  treePaneWidth = 0;
  inspectPaneVisible = 0;
  inspectPaneHeight = 0;
  inspectCells.clear();
  readOnly = false;
  errorCode = err::kNone;
}

void Workbook::SwapContents(Workbook& other) {
  std::swap(folderCount, other.folderCount);
  std::swap(worksheetCount, other.worksheetCount);
  std::swap(currentSheet, other.currentSheet);
  std::swap(firstNode, other.firstNode);
  std::swap(records, other.records);
  std::swap(fieldDefaults, other.fieldDefaults);
  // The recorder belongs to whoever edits this workbook and stays. The old document's undo steps
  // leave with it; the levels in force are a setting and stay too.
  std::swap(undoSlots, other.undoSlots);
  std::swap(undoTop, other.undoTop);
  std::swap(lastSavedBy, other.lastSavedBy);
  std::swap(lastSavedAt, other.lastSavedAt);
  std::swap(treePaneVisible, other.treePaneVisible);
  std::swap(treePaneWidth, other.treePaneWidth);
  std::swap(inspectPaneVisible, other.inspectPaneVisible);
  std::swap(inspectPaneHeight, other.inspectPaneHeight);
  std::swap(inspectCells, other.inspectCells);
  std::swap(readOnly, other.readOnly);
  std::swap(errorCode, other.errorCode);
  std::swap(dropDownLists, other.dropDownLists);
  // The style table is large and fixed; a member-wise exchange keeps it in place.
  auto table = std::make_unique<StyleTable>(styles);
  styles = other.styles;
  other.styles = *table;
}

bool Workbook::PathOfNode(const WorkbookNode* node, std::string& path, bool withName) const {
  path.clear();
  if (withName) {
    path = "\\";
    path += node->Name();
  }
  // The folders above a node are the earlier folders of ever smaller level.
  uint16_t level = node->level;
  for (const WorkbookNode* p = node->previous; p != nullptr && level > 1; p = p->previous) {
    if (!p->IsFolder() || p->level >= level) continue;
    path.insert(0, p->Name());
    path.insert(0, "\\");
    level = p->level;
  }
  return path.size() <= kMaxPathLength;
}

WorkbookNode* Workbook::FindNode(std::string_view path, WorkbookNode* start) const {
  std::string built;
  for (WorkbookNode* node = start != nullptr ? start : firstNode; node != nullptr;
       node = node->next) {
    if (!PathOfNode(node, built, true)) continue;
    if (text::EqualNoCase(built, path)) return node;
  }
  return nullptr;
}

void Workbook::AttachNode(WorkbookNode* node, WorkbookNode* after) {
  WorkbookNode* last = node;
  while (last->next != nullptr) last = last->next;
  int32_t shift = 0;
  WorkbookNode* before = nullptr;
  if (after == nullptr) {
    if (firstNode != nullptr) {
      before = firstNode;
      while (before->next != nullptr) before = before->next;
    }
  } else if (after->IsFolder()) {
    shift = after->level + 1 - node->level;
    before = LastDescendant(after);
  } else {
    shift = after->level - node->level;
    before = after;
  }
  for (WorkbookNode* n = node; n != nullptr; n = n->next) {
    n->level = static_cast<uint16_t>(n->level + shift);
    if (n->IsFolder()) {
      ++folderCount;
    } else {
      ++worksheetCount;
    }
  }
  node->previous = before;
  if (before == nullptr) {
    last->next = firstNode;
    if (firstNode != nullptr) firstNode->previous = last;
    firstNode = node;
  } else {
    last->next = before->next;
    if (before->next != nullptr) before->next->previous = last;
    before->next = node;
  }
}

bool Workbook::DetachNode(WorkbookNode* node) {
  WorkbookNode* last = LastDescendant(node);
  int32_t folders = 0;
  int32_t sheets = 0;
  bool holdsCurrent = false;
  for (WorkbookNode* n = node;; n = n->next) {
    if (n->IsFolder()) {
      ++folders;
    } else {
      ++sheets;
    }
    holdsCurrent |= n == currentSheet;
    if (n == last) break;
  }
  if (sheets >= worksheetCount) return false;
  if (node->previous != nullptr) {
    node->previous->next = last->next;
  } else {
    firstNode = last->next;
  }
  if (last->next != nullptr) last->next->previous = node->previous;
  node->previous = nullptr;
  last->next = nullptr;
  folderCount -= folders;
  worksheetCount -= sheets;
  if (holdsCurrent) currentSheet = nullptr;
  return true;
}

Worksheet* Workbook::FindCatalogue(std::string_view table) const {
  std::string path = "\\system\\";
  path += table;
  WorkbookNode* node = FindNode(path);
  return node != nullptr && node->IsWorksheet() ? static_cast<Worksheet*>(node) : nullptr;
}

Worksheet* Workbook::FindTable(std::string_view table) const {
  std::string path = "\\";
  path += table;
  // A table called "system" loses to the folder, which stands first.
  WorkbookNode* node = FindNode(path);
  return node != nullptr && node->IsWorksheet() ? static_cast<Worksheet*>(node) : nullptr;
}

Worksheet* Workbook::TableByIndex(uint32_t index) const {
  uint32_t seen = 0;
  for (WorkbookNode* node = firstNode; node != nullptr; node = node->next) {
    if (node->level != 1 || !node->IsWorksheet()) continue;
    if (seen++ == index) return static_cast<Worksheet*>(node);
  }
  return nullptr;
}

uint32_t Workbook::TableCount() const {
  uint32_t count = 0;
  for (WorkbookNode* node = firstNode; node != nullptr; node = node->next) {
    count += node->level == 1 && node->IsWorksheet();
  }
  return count;
}

bool AddDropDownList(DropDownLists& lists, uint32_t& slot) {
  uint32_t freeSlot = kDropDownListSlots;
  for (uint32_t i = 0; i < kDropDownListSlots && freeSlot == kDropDownListSlots; ++i) {
    if (!lists[i].used) freeSlot = i;
  }
  if (freeSlot == kDropDownListSlots) return false;
  char name[32];
  for (int number = 1;; ++number) {
    std::snprintf(name, sizeof name, "List %d.", number);
    bool taken = false;
    for (const DropDownList& list : lists) taken |= list.used && list.name == name;
    if (!taken) break;
  }
  lists[freeSlot].used = true;
  lists[freeSlot].name = name;
  lists[freeSlot].items.clear();
  slot = freeSlot;
  return true;
}

bool Workbook::AddDropDownList(uint32_t& slot) {
  if (kelpdex::AddDropDownList(dropDownLists, slot)) return true;
  errorCode = err::kTooManyDropDownLists;
  return false;
}

void Workbook::RemoveDropDownList(uint32_t slot) {
  if (slot < kDropDownListSlots) dropDownLists[slot] = DropDownList();
}

}  // namespace kelpdex
