#include "store/cell_record.h"

#include <cstring>

namespace kelpdex::cell {

namespace {

void StoreHead(uint8_t* out, uint8_t tag, uint32_t row, uint16_t column) {
  out[0] = tag;
  StoreU16(out + 1, column);
  StoreU32(out + 3, row);
}

}  // namespace

uint32_t EncodeText(uint8_t* out, uint32_t row, uint16_t column, std::string_view text,
                    uint8_t extraTag) {
  StoreHead(out, static_cast<uint8_t>(kText | extraTag), row, column);
  StoreU16(out + 7, static_cast<uint16_t>(text.size()));
  if (!text.empty()) std::memcpy(out + kTextHeader, text.data(), text.size());
  return TextSize(text.size());
}

uint32_t EncodeNumber(uint8_t* out, uint32_t row, uint16_t column, double value, uint8_t extraTag) {
  StoreHead(out, static_cast<uint8_t>(kNumber | (extraTag & ~kText)), row, column);
  StoreF64(out + 7, value);
  return kNumberSize;
}

uint32_t EncodeFormula(uint8_t* out, uint32_t row, uint16_t column, std::string_view formula,
                       uint8_t extraTag) {
  StoreHead(out, static_cast<uint8_t>(kFormula | (extraTag & ~(kText | kNumber))), row, column);
  std::memset(out + 7, 0, kFormulaHeader - 7);
  StoreU16(out + kFormulaLengthAt, static_cast<uint16_t>(formula.size()));
  if (!formula.empty()) std::memcpy(out + kFormulaHeader, formula.data(), formula.size());
  return FormulaSize(formula.size(), false, 0);
}

uint32_t EncodeFormulaWithString(uint8_t* out, uint32_t row, uint16_t column,
                                 std::string_view formula, std::string_view cached,
                                 uint8_t extraTag) {
  uint32_t at = EncodeFormula(out, row, column, formula, extraTag);
  out[kFlagsAt] |= kCachedString;
  StoreU16(out + at, static_cast<uint16_t>(cached.size()));
  if (!cached.empty()) std::memcpy(out + at + 2, cached.data(), cached.size());
  return at + 2 + static_cast<uint32_t>(cached.size());
}

}  // namespace kelpdex::cell
