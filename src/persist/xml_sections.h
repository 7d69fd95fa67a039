// The sections of the native XML document, each read and written by one file: the cells
// (xml_cells.cpp), the styles with their fonts, number formats and backgrounds (xml_styles.cpp), a
// sheet's formatting, general and page settings (xml_sheet_settings.cpp) and its containers
// (xml_containers.cpp). native_xml_reader.cpp and native_xml_writer.cpp put them in document
// order. Private to persist/: the rest of the program goes through persist/native_xml.h.
//
// A reader of a section is called with the scanner standing before its element (or, where said,
// just behind its opening tag) and returns false with the scanner's error set; a writer leaves a
// failure in the stream's sticky error, which the document checks once at its end.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string>
#include <string_view>
#include <vector>

#include "persist/xml_scanner.h"
#include "persist/xml_writer.h"
#include "store/workbook.h"

namespace kelpdex::native_xml {

constexpr ScanFlags kOpenAttributes = scan::kOpen | scan::kAttributes;
constexpr ScanFlags kOptionalOpen = scan::kOpen | scan::kAttributes | scan::kOptional;

// A font name is at most 127 bytes in every direction: its field in the font record is 128
// bytes, and the last one stays zero so that the name always ends inside the field.
constexpr size_t kFontNameMax = 127;

// "r<row>c<col>" and its parts, 1-based in the text; an absent number takes the base's.
struct Address {
  uint32_t row = 0;
  uint16_t column = 0;
  bool hasRow = false;
  bool hasColumn = false;
};

// Decimal digits at the front of `text`, moving past them; false for none or above 32 bits.
inline bool ParseNumber(std::string_view& text, uint32_t& value) {
  size_t n = 0;
  uint64_t v = 0;
  while (n < text.size() && text[n] >= '0' && text[n] <= '9' && v <= 0xFFFFFFFFull) {
    v = v * 10 + static_cast<uint64_t>(text[n] - '0');
    ++n;
  }
  if (n == 0 || v > 0xFFFFFFFFull) return false;
  value = static_cast<uint32_t>(v);
  text.remove_prefix(n);
  return true;
}

// One address, moving `text` past it. Rows 1..2097152, columns 1..2047. Inline, since every cell
// of a load passes through it.
inline bool ParseAddress(std::string_view& text, const Address& base, Address& out) {
  out = base;
  out.hasRow = out.hasColumn = false;
  if (!text.empty() && (text[0] == 'r' || text[0] == 'R')) {
    text.remove_prefix(1);
    uint32_t row = 0;
    if (!text.empty() && text[0] >= '0' && text[0] <= '9') {
      if (!ParseNumber(text, row) || row < 1 || row > kRowLimit) return false;
      out.row = row - 1;
    }
    out.hasRow = true;
  }
  if (!text.empty() && (text[0] == 'c' || text[0] == 'C')) {
    text.remove_prefix(1);
    uint32_t column = 0;
    if (!ParseNumber(text, column) || column < 1 || column > kColumnLimit) return false;
    out.column = static_cast<uint16_t>(column - 1);
    out.hasColumn = true;
  }
  return out.hasRow || out.hasColumn;
}

// Closes an element opened with attributes, unless it was empty.
inline bool CloseIfOpen(XmlScanner& x, std::string_view name) {
  return x.isClose() || x.Tag(name, scan::kClose);
}

// An attribute that must be one of `words`: `value` takes its index, and keeps what it held when
// the attribute is absent. 92 for any other word.
template <size_t N>
bool ReadWord(XmlScanner& x, std::string_view attribute, const char* const (&words)[N],
              uint8_t& value) {
  const char* text = x.Attr(attribute);
  if (text == nullptr) return true;
  for (size_t i = 0; i < N; ++i) {
    if (std::strcmp(text, words[i]) == 0) {
      value = static_cast<uint8_t>(i);
      return true;
    }
  }
  return x.Fail(err::kXmlInvalidAttribute);
}

// The required "rc" attribute as one address; 93 when it does not read whole.
inline bool ReadRc(XmlScanner& x, Address& out, const Address& base) {
  const char* rc = x.RequiredAttr("rc");
  if (rc == nullptr) return false;
  std::string_view text(rc);
  if (!ParseAddress(text, base, out) || !text.empty()) return x.Fail(err::kXmlMissingAttribute);
  return true;
}

// An "rc" attribute holding two addresses apart by ":".
inline bool ReadRcRange(XmlScanner& x, Address& first, Address& last) {
  const char* rc = x.RequiredAttr("rc");
  if (rc == nullptr) return false;
  std::string_view text(rc);
  if (!ParseAddress(text, Address(), first) || text.empty() || text[0] != ':') {
    return x.Fail(err::kXmlMissingAttribute);
  }
  text.remove_prefix(1);
  if (!ParseAddress(text, Address(), last) || !text.empty()) {
    return x.Fail(err::kXmlMissingAttribute);
  }
  return true;
}

// The word a stored number stands for; an unknown number writes the first word.
template <size_t N>
const char* WordOf(const char* const (&words)[N], uint8_t value) {
  return value < N ? words[value] : words[0];
}

// A zero-padded text field of a record, up to its first zero or `size` bytes.
inline std::string_view FieldText(const uint8_t* bytes, size_t size) {
  return std::string_view(reinterpret_cast<const char*>(bytes),
                          strnlen(reinterpret_cast<const char*>(bytes), size));
}

// "r<row>c<col>" of a 0-based cell.
inline std::string CellAddress(uint32_t row, uint16_t column) {
  return "r" + std::to_string(row + 1) + "c" + std::to_string(column + 1);
}

// Styles: the Styles element with its fonts and styles, and the pieces that other sections spell
// the same way (a font given inline, a background).
bool ReadStyles(XmlScanner& x, std::vector<StyleRecord>& styles, std::vector<FontRecord>& fonts);
void WriteStyles(XmlWriter& w, const StyleTable& table);
// The attributes of a font element whose opening tag was just read; the caller closes it.
bool ReadFontAttributes(XmlScanner& x, uint8_t* font);
// The attributes of a font record, each only where it says something.
void WriteFontAttributes(const uint8_t* font, XmlAttributes& a);
bool ReadBackground(XmlScanner& x, uint8_t* record);
// Nothing for a record that holds no background.
void WriteBackground(XmlWriter& w, const uint8_t* record, int indent);

// Cells: the Cells element of a sheet. A cell whose value or formula is too long for the form
// fails the writer with 94 and leaves its 0-based row and column in `tooLong`.
bool ReadCells(XmlScanner& x, CellStore& cells);
struct CellAt {
  uint32_t row = 0;
  uint16_t column = 0;
  bool found = false;
};
void WriteCells(XmlWriter& w, const CellStore& cells, CellAt& tooLong);

// Sheet settings: Formatting, GeneralSettings, PageSettings.
bool ReadFormatting(XmlScanner& x, FormatStore& formats);
void WriteFormatting(XmlWriter& w, const FormatStore& formats);
bool ReadGeneralSettings(XmlScanner& x, Worksheet& sheet);
void WriteGeneralSettings(XmlWriter& w, const Worksheet& sheet);
bool ReadPageSettings(XmlScanner& x, Worksheet& sheet);
void WritePageSettings(XmlWriter& w, const Worksheet& sheet);

// Containers: one Container element, its opening tag just read. `seenIds` holds the ids up to 255
// taken so far in the sheet, so that a repeated one gives way.
bool ReadContainer(XmlScanner& x, Worksheet& sheet, std::vector<bool>& seenIds);
void WriteContainer(XmlWriter& w, const ContainerRecord& container, int indent);

}  // namespace kelpdex::native_xml
