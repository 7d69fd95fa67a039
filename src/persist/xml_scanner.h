// The pull scanner of every XML form Kelpdex reads: the native XML document, the Excel 2003 XML
// import and the settings file. It walks the file forward tag by tag with fixed buffers, holding
// only the current tag and the last piece of character data, and raises the XML error codes with
// the line they were found on.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

#include "core/error_code.h"
#include "persist/file_stream.h"

namespace kelpdex {

// How Tag() treats the next tag; the bits combine.
using ScanFlags = uint8_t;
namespace scan {
constexpr ScanFlags kAttributes = 1;  // read and keep the tag's attributes
constexpr ScanFlags kOpen = 2;        // the tag must be an opening (or empty) tag
constexpr ScanFlags kClose = 4;       // the tag must be a closing (or empty) tag
constexpr ScanFlags kOptional = 8;    // another tag rewinds and returns false instead of failing
constexpr ScanFlags kPeek = 16;       // rewind even after a match
}  // namespace scan

// How the bytes of character data and attribute values are turned into the program's code page.
namespace transcode {
constexpr int kUtf8 = 1;  // UTF-8, converted to Windows-1252
constexpr int kNone = 2;  // taken as they stand
constexpr int kIso = 3;   // an ISO-8859 encoding, also taken as it stands
}  // namespace transcode

class XmlScanner {
 public:
  static constexpr size_t kNameLimit = 1024;
  static constexpr size_t kValueLimit = 1024;
  static constexpr size_t kAttributeLimit = 255;
  // Room for the longest value a cell holds, 1,024 characters, with each one escaped at the
  // longest ("&quot;"), so that whatever the writer can put out, this reader takes back.
  static constexpr size_t kTextBufferSize = 6 * 1024;

  // Errors go to the stream's sticky error, so that a load checks once at its end; a scanner whose
  // buffers could not be had leaves 90 there.
  explicit XmlScanner(FileStream& stream);
  ~XmlScanner();
  XmlScanner(const XmlScanner&) = delete;
  XmlScanner& operator=(const XmlScanner&) = delete;

  // Reads "<?xml ... ?>" at the start of the file and sets transcodeMode() from its encoding.
  // Processing instructions right behind it (spreadsheets write one) are passed over.
  bool Prolog();

  // Skips whitespace and comments and scans the next tag. `name` is compared with the local name;
  // an empty `name` takes any element. False with 91 when the tag is not the one asked for, or
  // false with no error under scan::kOptional, the stream then standing where it stood.
  bool Tag(std::string_view name, ScanFlags flags);
  // An element holding character data: the opening tag under `flags` (kOptional, kAttributes),
  // the text, the closing tag. An empty element gives an empty text. The attributes of the
  // opening tag stay available.
  bool Text(std::string_view name, size_t maxLength, ScanFlags flags = 0);
  // Character data up to the next "<" that opens no comment, whitespace collapsed and then
  // decoded into text(). 94 when it is longer than the buffer or, decoded, than `maxLength`.
  bool TextBody(size_t maxLength);

  // The value of the attribute with this name and no prefix (or with `prefix`), or null.
  const char* Attr(std::string_view name) const { return Attr(name, {}); }
  const char* Attr(std::string_view name, std::string_view prefix) const;
  // The same, failing with 93 when the attribute is missing.
  const char* RequiredAttr(std::string_view name);
  // The typed readers leave `value` unchanged when the attribute is missing, so that it keeps the
  // default the caller put there, and return false only with an error set. A malformed integer is
  // 92; one outside min..max is `rangeError`.
  bool IntAttr(std::string_view name, int64_t& value, int64_t min, int64_t max,
               ErrorCode rangeError = err::kXmlInvalidAttribute);
  bool IntAttr(std::string_view name, int& value, int min, int max,
               ErrorCode rangeError = err::kXmlInvalidAttribute);
  // "Yes", "true", "1" or "No", "false", "0"; anything else is 92.
  bool BoolAttr(std::string_view name, bool& value);
  // The whole value as a finite double, else 94.
  bool RealAttr(std::string_view name, double& value);
  // "#rrggbb" in either case, as a COLORREF (red in the low byte); else 92.
  bool ColourAttr(std::string_view name, uint32_t& colour);

  // The last tag scanned.
  std::string_view name() const { return {name_, nameLength_}; }
  std::string_view prefix() const { return {prefix_, prefixLength_}; }
  bool isOpen() const { return isOpen_; }
  bool isClose() const { return isClose_; }
  // The attributes of the last opening tag, kept only when it was scanned with scan::kAttributes;
  // a closing tag leaves them alone, so that Text() can keep those of its opening tag.
  size_t attributeCount() const { return attributeCount_; }
  std::string_view AttributeName(size_t i) const;
  std::string_view AttributePrefix(size_t i) const;
  std::string_view AttributeValue(size_t i) const;
  // The character data last read, decoded; the next tag read with its attributes reuses the
  // buffer.
  std::string_view text() const { return decoded_; }

  // For readers with a fast path over their most common elements: skips whitespace (counting
  // lines) and shows the bytes the buffer holds from there, without consuming them; Consume()
  // then takes what the reader parsed. Comments and anything unusual are left to Tag().
  const uint8_t* PeekRaw(size_t& size);
  void Consume(size_t count) { stream_.Advance(count); }

  int transcodeMode() const { return transcodeMode_; }
  // Counted from 1, one more for every carriage return read.
  int line() const { return line_; }

  ErrorCode error() const { return stream_.error(); }
  bool ok() const { return stream_.ok(); }
  // Leaves `code` with the current line (the first error stays) and returns false; the readers
  // raise their own 92 and 93 through it.
  bool Fail(ErrorCode code);
  // The line on which the first error was raised.
  int errorLine() const { return errorLine_; }
  // What a failed load shows: the message, and "Line: n" for the XML codes.
  std::string ErrorMessage() const;

 private:
  struct Attribute {
    uint32_t prefix, name, value;  // offsets into the arena, each text ended by a zero byte
    uint16_t prefixLength, nameLength, valueLength;
  };

  int Get();
  bool IsCommentStart();
  void SkipWhitespace();
  bool SkipMarkup();
  bool SkipPast(std::string_view terminator);
  bool ReadName(char* out, size_t& length);
  bool ReadQualifiedName(char* prefix, size_t& prefixLength, char* local, size_t& localLength);
  bool ReadAttributes(bool keep, bool prolog);
  bool ReadAttribute(bool keep);
  bool Decode(const char* raw, size_t size, size_t maxLength, ErrorCode overLimit);
  bool DecodeEntities();
  bool Miss(ScanFlags flags);
  const Attribute* FindAttribute(std::string_view name, std::string_view prefix) const;

  FileStream& stream_;
  std::unique_ptr<char[]> block_;  // the raw text buffer, then the attribute arena
  char* raw_ = nullptr;
  char* arena_ = nullptr;
  size_t arenaUsed_ = 0;
  std::unique_ptr<Attribute[]> attributes_;
  size_t attributeCount_ = 0;
  std::string decoded_;
  char name_[kNameLimit + 1] = {};
  char prefix_[kNameLimit + 1] = {};
  size_t nameLength_ = 0;
  size_t prefixLength_ = 0;
  bool isOpen_ = false;
  bool isClose_ = false;
  int transcodeMode_ = transcode::kUtf8;
  int line_ = 1;
  int markLine_ = 1;
  int errorLine_ = 0;
};

}  // namespace kelpdex
