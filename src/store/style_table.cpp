#include "store/style_table.h"

#include "store/bytes.h"

namespace kelpdex {

namespace {

struct Span {
  uint32_t at;
  uint32_t size;
};

// The bytes of a style record that one attribute kind owns.
Span StyleSpanOf(int kind) {
  switch (kind) {
    case style::kNumberFormat:
      return {style::kNumberFormatAt, style::kFontSetAt - style::kNumberFormatAt};
    case style::kUserFormat:
      return {style::kUserFormatAt, style::kFontSetAt - style::kUserFormatAt};
    case style::kFill:
      return {style::kFillAt, style::kBordersAt - style::kFillAt};
    case style::kVertical:
      return {style::kVerticalAt, 1};
    case style::kHorizontal:
      return {style::kHorizontalAt, 1};
    case style::kIndent:
      return {style::kIndentAt, 2};
    case style::kWrap:
      return {style::kWrapAt, 1};
    case style::kFit:
      return {style::kFitAt, 1};
    case style::kRotation:
      return {style::kRotationAt, 2};
    case style::kBorders:
      return {style::kBordersAt, style::kVerticalAt - style::kBordersAt};
    case style::kDropDown:
      return {style::kDropDownAt, style::kProtectedAt - style::kDropDownAt};
    case style::kProtection:
      return {style::kProtectedAt, 2};
    default:
      return {0, 0};
  }
}

// The bytes of a font record that one font attribute kind owns.
Span FontSpanOf(int kind) {
  switch (kind) {
    case style::kFontName:
      return {font::kNameAt, 128};
    case style::kFontSize:
      return {font::kSizeAt, 1};
    case style::kFontWeight:
      return {font::kWeightAt, 1};
    case style::kFontItalic:
      return {font::kItalicAt, 1};
    case style::kFontUnderline:
      return {font::kUnderlineAt, 1};
    case style::kFontStrikeout:
      return {font::kStrikeoutAt, 1};
    case style::kWholeFont:
      return {0, kFontRecordSize};
    default:
      return {0, 0};
  }
}

}  // namespace

void StyleTable::Reset() {
  std::memset(&styles_[0], 0, sizeof(StyleRecord));
  styles_[0].bytes[style::kHorizontalAt] = 4;
  styles_[0].bytes[style::kVerticalAt] = 2;
  std::memset(&fonts_[0], 0, sizeof(FontRecord));
  styleCount_ = 1;
  fontCount_ = 1;
}

bool StyleTable::FindOrAddStyle(const StyleRecord& record, uint16_t& id, ErrorCode& error) {
  for (uint16_t i = 0; i < styleCount_; ++i) {
    if (std::memcmp(styles_[i].bytes, record.bytes, kStyleRecordSize) == 0) {
      id = i;
      return true;
    }
  }
  if (styleCount_ >= kMaxStyles) {
    error = err::kTooManyStyles;
    return false;
  }
  styles_[styleCount_] = record;
  id = styleCount_++;
  return true;
}

bool StyleTable::FindOrAddFont(const FontRecord& record, uint8_t& id, ErrorCode& error) {
  for (uint8_t i = 0; i < fontCount_; ++i) {
    if (std::memcmp(fonts_[i].bytes, record.bytes, kFontRecordSize) == 0) {
      id = i;
      return true;
    }
  }
  if (fontCount_ >= kMaxFonts) {
    error = err::kTooManyStyles;
    return false;
  }
  fonts_[fontCount_] = record;
  id = fontCount_++;
  return true;
}

bool StyleTable::DeriveStyle(uint16_t baseId, int kind, const StyleRecord& values,
                             const FontRecord* fontValues, uint16_t& id, ErrorCode& error) {
  StyleRecord derived = Style(baseId);
  Span span = StyleSpanOf(kind);
  if (span.size > 0) {
    std::memcpy(derived.bytes + span.at, values.bytes + span.at, span.size);
  } else if (kind == style::kFontColour) {
    derived.bytes[style::kFontColourSetAt] = values.bytes[style::kFontColourSetAt];
    std::memcpy(derived.bytes + style::kFontColourAt, values.bytes + style::kFontColourAt, 4);
  } else {
    Span fontSpan = FontSpanOf(kind);
    if (fontSpan.size == 0 || fontValues == nullptr) return false;
    // A font attribute changes a copy of the style's font, which is then shared like a style.
    FontRecord changed = Font(derived.bytes[style::kFontIndexAt]);
    std::memcpy(changed.bytes + fontSpan.at, fontValues->bytes + fontSpan.at, fontSpan.size);
    uint8_t fontId = 0;
    if (!FindOrAddFont(changed, fontId, error)) return false;
    derived.bytes[style::kFontIndexAt] = fontId;
    derived.bytes[style::kFontSetAt] = fontId != 0 ? 1 : 0;
  }
  return FindOrAddStyle(derived, id, error);
}

bool StyleTable::IsSelectionStyle(uint16_t id) const {
  if (id >= styleCount_) return false;
  const uint8_t* s = styles_[id].bytes;
  return s[style::kFillAt] == style::kSolidFill &&
         LoadU32(s + style::kFillColourAt) == style::kSelectionColour;
}

bool StyleTable::LoadStyles(const StyleRecord* records, uint16_t count) {
  if (count == 0 || count > kMaxStyles) return false;
  std::memcpy(styles_, records, count * sizeof(StyleRecord));
  styleCount_ = count;
  return true;
}

bool StyleTable::LoadFonts(const FontRecord* records, uint8_t count) {
  if (count == 0 || count > kMaxFonts) return false;
  std::memcpy(fonts_, records, count * sizeof(FontRecord));
  fontCount_ = count;
  return true;
}

void StyleTable::ForgetDropDownList(uint16_t number) {
  for (uint16_t id = 0; id < styleCount_; ++id) {
    uint8_t* b = styles_[id].bytes;
    if (number != 0 && LoadU16(b + style::kDropDownAt) == number) {
      StoreU16(b + style::kDropDownAt, 0);
    }
  }
}

}  // namespace kelpdex
