// The packed, variable-length cell record. A record lives inside a block's payload and is only
// ever pointed at; its fields are read and written at fixed byte offsets.
//
//   offset 0  tag     bit 0 text, else bit 1 number, else formula (bit 2); bit 3 Auto;
//                     high nibble the error code (0x10 "#DIV/0!" .. 0xC0 "#SYNTAX!")
//   offset 1  column  u16
//   offset 3  row     u32
//   text:    7 u16 length, 9 bytes                                  size 9 + length
//   number:  7 f64 value                                            size 15
//   formula: 7 u16 arrayColumns, 9 u32 arrayRows, 13 calcState, 14 flags, 15..24 evaluator,
//            25 f64 cachedNumber, 33 u16 formulaLength, 35 text,
//            then (flags bit 0) u16 cachedStringLength and the string    size 35 + ...
#pragma once

#include <concepts>
#include <cstddef>
#include <cstdint>
#include <string_view>

#include "store/bytes.h"
#include "store/cell_error.h"

namespace kelpdex {

// Never defined: a CellRecord* is a typed pointer to the first byte of a packed record.
struct CellRecord;

constexpr uint32_t kRowLimit = 0x200000;  // rows 0 .. 0x1FFFFF
constexpr uint32_t kLastRow = kRowLimit - 1;
constexpr uint16_t kColumnLimit = 2047;  // columns 0 .. 0x7FE
constexpr uint16_t kLastColumn = kColumnLimit - 1;

namespace cell {

constexpr uint8_t kText = 0x01;
constexpr uint8_t kNumber = 0x02;
constexpr uint8_t kFormula = 0x04;
constexpr uint8_t kAuto = 0x08;
constexpr uint8_t kErrorMask = 0xF0;
constexpr uint8_t kFillError = 0x90;

constexpr uint32_t kTextHeader = 9;
constexpr uint32_t kNumberSize = 15;
constexpr uint32_t kFormulaHeader = 35;

// Formula flags.
constexpr uint8_t kCachedString = 0x01;
constexpr uint8_t kCachedNumber = 0x02;
constexpr uint8_t kArrayHead = 0x04;
constexpr uint8_t kEvaluationMarks = 0x30;

// Offsets of the formula fields.
constexpr uint32_t kArrayColumnsAt = 7;
constexpr uint32_t kArrayRowsAt = 9;
constexpr uint32_t kCalcStateAt = 13;
constexpr uint32_t kFlagsAt = 14;
constexpr uint32_t kEvaluatorAt = 15;
constexpr uint32_t kCachedNumberAt = 25;
constexpr uint32_t kFormulaLengthAt = 33;

inline const uint8_t* Bytes(const CellRecord* r) {
  return reinterpret_cast<const uint8_t*>(r);
}
inline uint8_t* Bytes(CellRecord* r) {
  return reinterpret_cast<uint8_t*>(r);
}
inline const uint8_t* Bytes(const uint8_t* r) {
  return r;
}
inline const CellRecord* At(const uint8_t* p) {
  return reinterpret_cast<const CellRecord*>(p);
}
inline CellRecord* At(uint8_t* p) {
  return reinterpret_cast<CellRecord*>(p);
}

// The readers take a record either as raw block bytes (the store's own walks) or as a
// CellRecord* (everyone else).
template <typename T>
concept RecordPointee = std::same_as<T, uint8_t> || std::same_as<T, CellRecord>;

template <RecordPointee T>
inline uint8_t Tag(const T* r) {
  return Bytes(r)[0];
}
template <RecordPointee T>
inline uint16_t Column(const T* r) {
  return LoadU16(Bytes(r) + 1);
}
template <RecordPointee T>
inline uint32_t Row(const T* r) {
  return LoadU32(Bytes(r) + 3);
}
template <RecordPointee T>
inline bool IsText(const T* r) {
  return (Tag(r) & kText) != 0;
}
template <RecordPointee T>
inline bool IsNumber(const T* r) {
  return (Tag(r) & (kText | kNumber)) == kNumber;
}
template <RecordPointee T>
inline bool IsFormula(const T* r) {
  return (Tag(r) & (kText | kNumber)) == 0;
}
template <RecordPointee T>
inline bool IsAuto(const T* r) {
  return (Tag(r) & kAuto) != 0;
}
template <RecordPointee T>
inline uint8_t ErrorNibble(const T* r) {
  return Tag(r) & kErrorMask;
}
template <RecordPointee T>
inline uint16_t TextLength(const T* r) {
  return LoadU16(Bytes(r) + 7);
}
template <RecordPointee T>
inline std::string_view Text(const T* r) {
  return std::string_view(reinterpret_cast<const char*>(Bytes(r) + kTextHeader), TextLength(r));
}
template <RecordPointee T>
inline double Number(const T* r) {
  return LoadF64(Bytes(r) + 7);
}
template <RecordPointee T>
inline uint8_t FormulaFlags(const T* r) {
  return Bytes(r)[kFlagsAt];
}
template <RecordPointee T>
inline uint16_t ArrayColumns(const T* r) {
  return LoadU16(Bytes(r) + kArrayColumnsAt);
}
template <RecordPointee T>
inline uint32_t ArrayRows(const T* r) {
  return LoadU32(Bytes(r) + kArrayRowsAt);
}
template <RecordPointee T>
inline double CachedNumber(const T* r) {
  return LoadF64(Bytes(r) + kCachedNumberAt);
}
template <RecordPointee T>
inline uint16_t FormulaLength(const T* r) {
  return LoadU16(Bytes(r) + kFormulaLengthAt);
}
template <RecordPointee T>
inline std::string_view FormulaText(const T* r) {
  return std::string_view(reinterpret_cast<const char*>(Bytes(r) + kFormulaHeader),
                          FormulaLength(r));
}
template <RecordPointee T>
inline std::string_view CachedString(const T* r) {
  if ((FormulaFlags(r) & kCachedString) == 0) return std::string_view();
  const uint8_t* at = Bytes(r) + kFormulaHeader + FormulaLength(r);
  return std::string_view(reinterpret_cast<const char*>(at + 2), LoadU16(at));
}

// The size of a record, derived from its tag: it is stored nowhere.
template <RecordPointee T>
inline uint32_t Size(const T* record) {
  const uint8_t* r = Bytes(record);
  uint8_t tag = r[0];
  if (tag & kText) return kTextHeader + LoadU16(r + 7);
  if (tag & kNumber) return kNumberSize;
  uint32_t size = kFormulaHeader + LoadU16(r + kFormulaLengthAt);
  if (r[kFlagsAt] & kCachedString) size += 2 + LoadU16(r + size);
  return size;
}

// Encoders into a caller's buffer, which must hold the returned size (at most 8182 for a record
// that a block can take). `extraTag` adds the Auto bit and an error nibble.
uint32_t EncodeText(uint8_t* out, uint32_t row, uint16_t column, std::string_view text,
                    uint8_t extraTag = 0);
uint32_t EncodeNumber(uint8_t* out, uint32_t row, uint16_t column, double value,
                      uint8_t extraTag = 0);
// A formula with no cached result; set the cached number with SetCachedNumber afterwards.
uint32_t EncodeFormula(uint8_t* out, uint32_t row, uint16_t column, std::string_view formula,
                       uint8_t extraTag = 0);
// A formula whose cached result is a string.
uint32_t EncodeFormulaWithString(uint8_t* out, uint32_t row, uint16_t column,
                                 std::string_view formula, std::string_view cached,
                                 uint8_t extraTag = 0);
inline uint32_t TextSize(size_t length) {
  return kTextHeader + static_cast<uint32_t>(length);
}
inline uint32_t FormulaSize(size_t formulaLength, bool withString, size_t stringLength) {
  return kFormulaHeader + static_cast<uint32_t>(formulaLength) +
         (withString ? 2 + static_cast<uint32_t>(stringLength) : 0);
}

inline void SetRow(uint8_t* r, uint32_t row) {
  StoreU32(r + 3, row);
}
inline void SetColumn(uint8_t* r, uint16_t column) {
  StoreU16(r + 1, column);
}
inline void SetArray(uint8_t* r, uint16_t columns, uint32_t rows) {
  StoreU16(r + kArrayColumnsAt, columns);
  StoreU32(r + kArrayRowsAt, rows);
  r[kFlagsAt] |= kArrayHead;
}
inline void SetCachedNumber(uint8_t* r, double value) {
  StoreF64(r + kCachedNumberAt, value);
  r[kFlagsAt] |= kCachedNumber;
}

}  // namespace cell
}  // namespace kelpdex
