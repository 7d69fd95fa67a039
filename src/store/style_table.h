// The document's style and font tables. Cells and columns refer to a style by number; a style
// refers to a font by number. Both tables hold each distinct record once.
#pragma once

#include <cstdint>
#include <cstring>

#include "core/error_code.h"

namespace kelpdex {

constexpr uint32_t kStyleRecordSize = 1152;
constexpr uint32_t kMaxStyles = 512;
constexpr uint32_t kFontRecordSize = 135;
// Slot 0 is the default font; files carry at most 127 more.
constexpr uint32_t kMaxFonts = 128;

// Byte offsets inside a style record; the binary file stores the record with this layout.
namespace style {
constexpr uint32_t kNumberFormatAt = 0;  // the number format area, up to kFontSetAt
constexpr uint32_t kFormatKindAt = 32;
constexpr uint32_t kUserFormatAt = 64;
constexpr uint32_t kFontSetAt = 1096;
constexpr uint32_t kFontColourSetAt = 1097;
constexpr uint32_t kFontIndexAt = 1098;
constexpr uint32_t kFontColourAt = 1100;
constexpr uint32_t kFillAt = 1104;  // pattern type
constexpr uint32_t kFillColourFlagsAt = 1105;
constexpr uint32_t kFillColourAt = 1108;
constexpr uint32_t kFillBackgroundAt = 1112;
constexpr uint32_t kBordersAt = 1120;  // sides mask
constexpr uint32_t kBorderLineAt = 1124;
constexpr uint32_t kBorderColourSetAt = 1125;
constexpr uint32_t kBorderColourAt = 1128;
constexpr uint32_t kVerticalAt = 1132;
constexpr uint32_t kHorizontalAt = 1133;
constexpr uint32_t kIndentAt = 1134;  // two bytes
constexpr uint32_t kWrapAt = 1136;
constexpr uint32_t kFitAt = 1137;
constexpr uint32_t kRotationAt = 1138;  // two bytes
constexpr uint32_t kDropDownAt = 1140;  // u16 list number
constexpr uint32_t kDropDownSortAt = 1142;
constexpr uint32_t kDropDownAppendAt = 1143;
constexpr uint32_t kDropDownCompleteAt = 1144;
constexpr uint32_t kProtectedAt = 1146;
constexpr uint32_t kHiddenAt = 1147;

constexpr uint8_t kSolidFill = 1;
// The fill that marks the chosen search key or form in a catalogue: solid, red 0 green 127 blue 0.
constexpr uint32_t kSelectionColour = 0x7F00;

// The attribute groups that SetColumnStyleAttribute changes.
enum Attribute : int {
  kNumberFormat = 1,
  kUserFormat = 2,
  kFontName = 3,
  kFontSize = 4,
  kFontWeight = 5,
  kFontItalic = 6,
  kFontUnderline = 7,
  kFontStrikeout = 8,
  kFontColour = 9,
  kWholeFont = 10,
  kFill = 11,
  kVertical = 12,
  kHorizontal = 13,
  kIndent = 14,
  kWrap = 15,
  kFit = 16,
  kRotation = 17,
  kBorders = 18,
  kDropDown = 19,
  kProtection = 20,
};
}  // namespace style

namespace font {
constexpr uint32_t kNameAt = 0;  // 128 bytes, zero-padded
constexpr uint32_t kFamilyAt = 128;
constexpr uint32_t kSizeAt = 129;
constexpr uint32_t kWeightAt = 130;
constexpr uint32_t kItalicAt = 131;
constexpr uint32_t kUnderlineAt = 132;
constexpr uint32_t kStrikeoutAt = 133;
constexpr uint32_t kCharSetAt = 134;
}  // namespace font

struct StyleRecord {
  uint8_t bytes[kStyleRecordSize];
};
struct FontRecord {
  uint8_t bytes[kFontRecordSize];
};

class StyleTable {
 public:
  StyleTable() { Reset(); }

  // Back to one default style and one default font.
  void Reset();

  uint16_t styleCount() const { return styleCount_; }
  uint8_t fontCount() const { return fontCount_; }
  const StyleRecord& Style(uint16_t id) const { return styles_[id < styleCount_ ? id : 0]; }
  const FontRecord& Font(uint8_t id) const { return fonts_[id < fontCount_ ? id : 0]; }

  // The id of an identical record, appended when there is none. False with code 26 when the
  // table is full (the font table reports the same code: a style could not be made).
  bool FindOrAddStyle(const StyleRecord& record, uint16_t& id, ErrorCode& error);
  bool FindOrAddFont(const FontRecord& record, uint8_t& id, ErrorCode& error);

  // Copies one attribute group of `values` (and, for the font kinds, of `fontValues`) over a copy
  // of style `baseId`, and returns the id of the resulting style.
  bool DeriveStyle(uint16_t baseId, int kind, const StyleRecord& values,
                   const FontRecord* fontValues, uint16_t& id, ErrorCode& error);

  // Every style that offers the drop-down list `number` (1 to 100) offers none any more: the list
  // was deleted, and a new one in its slot is no list those fields were given.
  void ForgetDropDownList(uint16_t number);

  // True for the solid green fill that marks the chosen key or form column.
  bool IsSelectionStyle(uint16_t id) const;

  // Loading: the tables exactly as a file holds them, in their order, since cells refer to
  // styles by number. False for a count of 0 or above the capacity.
  bool LoadStyles(const StyleRecord* records, uint16_t count);
  bool LoadFonts(const FontRecord* records, uint8_t count);

 private:
  StyleRecord styles_[kMaxStyles];
  FontRecord fonts_[kMaxFonts];
  uint16_t styleCount_ = 0;
  uint8_t fontCount_ = 0;
};

}  // namespace kelpdex
