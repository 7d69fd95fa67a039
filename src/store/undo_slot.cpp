#include "store/undo_slot.h"

#include "store/workbook.h"

namespace kelpdex {

namespace {

size_t SheetBytes(const Worksheet* sheet) {
  if (sheet == nullptr) return 0;
  size_t blocks = sheet->cells.blockCount() + sheet->cells.freeBlockCount() +
                  sheet->formats.blockCount() + sheet->formats.freeBlockCount() +
                  sheet->formats.rowWords().blockCount() +
                  sheet->formats.rowWords().freeBlockCount();
  size_t objects = 0;
  for (const SheetObject& o : sheet->objects) objects += sizeof o + o.content.capacity();
  return sizeof(Worksheet) + blocks * sizeof(RowBlock) + objects;
}

}  // namespace

UndoSlot::UndoSlot() = default;
UndoSlot::~UndoSlot() = default;
UndoSlot::UndoSlot(UndoSlot&&) noexcept = default;
UndoSlot& UndoSlot::operator=(UndoSlot&&) noexcept = default;

void UndoSlot::Clear() {
  *this = UndoSlot();
}

size_t UndoSlot::HeldBytes() const {
  return singleCell.capacity() + rows.capacity() * sizeof(uint32_t) +
         words.capacity() * sizeof(uint16_t) + columns.capacity() * sizeof(uint16_t) +
         SheetBytes(snapshot.get()) + SheetBytes(fieldBuffer.get()) +
         SheetBytes(fieldSnapshot.get()) + SheetBytes(catalogue.get()) +
         SheetBytes(dataSheet.get()) +
         (recordSet.allocated() ? RecordSet::kEntries * sizeof(uint32_t) : 0);
}

}  // namespace kelpdex
