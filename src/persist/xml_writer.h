// The tag writer of every XML form Kelpdex saves: one routine writes a tag with its indent and
// line ends, and every name, value and text goes through one escaping step and then from the
// program's code page to UTF-8.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include "core/error_code.h"
#include "persist/file_stream.h"
#include "persist/xml_scanner.h"

namespace kelpdex {

// The escaped form of one name, value or text, counted in the UTF-8 bytes the file gets, may not
// pass this many bytes: the reader's text buffer is as large, and so is every value the store can
// hold at its longest escape.
constexpr size_t kXmlEscapeLimit = XmlScanner::kTextBufferSize;

// Appends `text` to `out` with the markup characters as entities, bytes 1..31 as "&#dd;", and
// each blank the reader would drop or merge as "&#32;": a leading or trailing one, and one that
// follows another whitespace character. False when the escaped text would pass kXmlEscapeLimit;
// `out` then holds the part done.
bool EscapeXml(std::string_view text, std::string& out);

// The longest text XmlNumberText writes.
constexpr size_t kXmlNumberMax = 40;

// The shortest text that reads back to the same double, with "." as the point: fixed notation
// where the general number rule gives it (zero and magnitudes from 1e-14 below 1e15), exponent
// form beyond. `out` must hold kXmlNumberMax bytes; returns the length.
size_t XmlNumberText(double x, char* out);

enum class TagMode : uint8_t {
  kOpen = 2,   // <name attributes>
  kClose = 4,  // </name>
  kEmpty = 6,  // <name attributes/>
};

enum class HexCase : uint8_t { kUpper, kLower };

// The attribute text of one tag, built as ` Name="value"` pairs in the program's code page. A
// value that cannot be escaped marks the whole text as failed, and the tag that takes it fails
// with 94.
class XmlAttributes {
 public:
  XmlAttributes& Text(std::string_view name, std::string_view value);
  XmlAttributes& Int(std::string_view name, int64_t value);
  XmlAttributes& Bool(std::string_view name, bool value);  // "0" or "1"
  // XmlNumberText: every bit of the value survives the file.
  XmlAttributes& Real(std::string_view name, double value);
  // "#rrggbb" from a COLORREF (red in the low byte); the case of the digits is part of the form.
  XmlAttributes& Colour(std::string_view name, uint32_t colour, HexCase hexCase);

  void Clear();
  bool ok() const { return ok_; }
  std::string_view str() const { return text_; }

 private:
  // Numbers and colours need no escaping.
  XmlAttributes& Add(std::string_view name, std::string_view value, bool escape);

  std::string text_;
  bool ok_ = true;
};

class XmlWriter {
 public:
  explicit XmlWriter(FileStream& stream) : stream_(stream) {}

  // The XML declaration and two line ends.
  bool Prolog();
  // `indent` tabs, the tag, then `lineEnds` CR LF pairs. A closing tag takes no attributes.
  bool Tag(std::string_view name, const XmlAttributes& attributes, TagMode mode, int indent,
           int lineEnds);
  bool Tag(std::string_view name, TagMode mode, int indent, int lineEnds);
  // An element of one line of character data: "<name attributes>text</name>", indented before
  // the opening tag only.
  bool TextElement(std::string_view name, const XmlAttributes& attributes, std::string_view text,
                   int indent, int lineEnds);
  bool TextElement(std::string_view name, std::string_view text, int indent, int lineEnds);
  // A line the caller has put together from escaped parts (EscapeXml) and markup, in the code
  // page: converted and written as it stands. For writers with a fast path over many small
  // elements of one shape.
  bool RawLine(std::string_view escaped);
  // Sets 94: a value of the caller's own line was too long for the form.
  bool FailTooLong() { return Fail(); }

  ErrorCode error() const { return stream_.error(); }
  bool ok() const { return stream_.ok(); }

 private:
  void Begin(int indent);
  bool Open(std::string_view name, const XmlAttributes& attributes, bool empty);
  bool Close(std::string_view name);
  bool End(int lineEnds);
  bool Fail();

  FileStream& stream_;
  std::string line_;  // the escaped text in the code page
  std::string utf8_;
};

}  // namespace kelpdex
