#include "persist/xml_scanner.h"

#include <charconv>
#include <cmath>
#include <cstring>
#include <new>
#include <system_error>

#include "core/reporting.h"
#include "text/utf8.h"

namespace kelpdex {

namespace {

// A prefix, a name and a value of the longest kind, each with its ending zero.
constexpr size_t kAttributeSlot = 3 * (XmlScanner::kNameLimit + 1);
constexpr size_t kArenaSize = XmlScanner::kAttributeLimit * kAttributeSlot;

bool IsSpace(int c) {
  return c == ' ' || c == '\n' || c == '\r' || c == '\t';
}

bool IsNameChar(int c) {
  return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '_';
}

int HexDigit(char c) {
  if (c >= '0' && c <= '9') return c - '0';
  if (c >= 'a' && c <= 'f') return c - 'a' + 10;
  if (c >= 'A' && c <= 'F') return c - 'A' + 10;
  return -1;
}

// The byte a character reference or a named entity stands for, or -1.
int EntityValue(std::string_view entity) {
  if (entity == "quot") return '"';
  if (entity == "apos") return '\'';
  if (entity == "lt") return '<';
  if (entity == "gt") return '>';
  if (entity == "amp") return '&';
  if (entity.size() < 2 || entity[0] != '#') return -1;
  const bool hex = entity[1] == 'x';
  std::string_view digits = entity.substr(hex ? 2 : 1);
  if (digits.empty()) return -1;
  int value = 0;
  for (char c : digits) {
    const int d = hex ? HexDigit(c) : (c >= '0' && c <= '9' ? c - '0' : -1);
    if (d < 0) return -1;
    value = value * (hex ? 16 : 10) + d;
    if (value > 255) return -1;
  }
  // A zero byte would end the text early wherever it goes.
  return value == 0 ? -1 : value;
}

}  // namespace

XmlScanner::XmlScanner(FileStream& stream) : stream_(stream) {
  block_.reset(new (std::nothrow) char[kTextBufferSize + kArenaSize]);
  attributes_.reset(new (std::nothrow) Attribute[kAttributeLimit]);
  if (block_ == nullptr || attributes_ == nullptr) {
    Fail(err::kXmlOutOfMemory);
    return;
  }
  raw_ = block_.get();
  arena_ = raw_ + kTextBufferSize;
  decoded_.reserve(kTextBufferSize);
}

XmlScanner::~XmlScanner() = default;

bool XmlScanner::Fail(ErrorCode code) {
  if (stream_.ok()) errorLine_ = line_;
  stream_.SetError(code);
  return false;
}

std::string XmlScanner::ErrorMessage() const {
  const ErrorCode code = error();
  return IsXmlLineError(code) ? ErrorTextAtLine(code, errorLine_) : std::string(ErrorText(code));
}

// Names are short: a loop in place beats a call into the library's memcmp.
bool SameName(std::string_view a, std::string_view b) {
  if (a.size() != b.size()) return false;
  for (size_t i = 0; i < a.size(); ++i) {
    if (a[i] != b[i]) return false;
  }
  return true;
}

bool XmlScanner::IsCommentStart() {
  // Asked at every "<": the bytes are compared in place where the buffer holds them.
  const uint8_t* p = stream_.Contiguous(4);
  if (p != nullptr) return p[1] == '!' && p[2] == '-' && p[3] == '-' && p[0] == '<';
  return stream_.Matches("<!--", 4);
}

const uint8_t* XmlScanner::PeekRaw(size_t& size) {
  size = 0;
  if (!ok()) return nullptr;
  SkipWhitespace();
  return stream_.Span(size);
}

// Lines are counted at LF, so that a file with CR LF and one edited to LF alone give the same
// line numbers.
int XmlScanner::Get() {
  const int c = stream_.Next();
  if (c == '\n') ++line_;
  return c;
}

void XmlScanner::SkipWhitespace() {
  // Whole spans of the buffer at a time: this runs between every two tags.
  for (;;) {
    size_t size = 0;
    const uint8_t* p = stream_.Span(size);
    size_t i = 0;
    while (i < size && IsSpace(p[i])) {
      if (p[i] == '\n') ++line_;
      ++i;
    }
    stream_.Advance(i);
    if (i < size || size == 0) return;
  }
}

bool XmlScanner::SkipPast(std::string_view terminator) {
  // The last bytes read, compared with the terminator after each byte.
  char window[8] = {};
  const size_t n = terminator.size();
  size_t seen = 0;
  for (int c = Get(); c >= 0; c = Get()) {
    std::memmove(window, window + 1, n - 1);
    window[n - 1] = static_cast<char>(c);
    if (++seen >= n && std::string_view(window, n) == terminator) return true;
  }
  return false;
}

bool XmlScanner::SkipMarkup() {
  for (;;) {
    SkipWhitespace();
    if (stream_.Peek() != '<' || !IsCommentStart()) return true;
    stream_.Skip(4);
    if (!SkipPast("-->")) return Fail(err::kXmlUnexpectedElement);
  }
}

bool XmlScanner::ReadName(char* out, size_t& length) {
  length = 0;
  for (;;) {
    size_t size = 0;
    const uint8_t* p = stream_.Span(size);
    size_t i = 0;
    while (i < size && IsNameChar(p[i])) {
      if (length == kNameLimit) return Fail(err::kXmlUnexpectedElement);
      out[length++] = static_cast<char>(p[i++]);
    }
    stream_.Advance(i);
    if (i < size || size == 0) break;
  }
  out[length] = '\0';
  return length > 0 || Fail(err::kXmlUnexpectedElement);
}

bool XmlScanner::ReadQualifiedName(char* prefix, size_t& prefixLength, char* local,
                                   size_t& localLength) {
  if (!ReadName(local, localLength)) return false;
  prefixLength = 0;
  prefix[0] = '\0';
  if (stream_.Peek() != ':') return true;
  Get();
  std::memcpy(prefix, local, localLength + 1);
  prefixLength = localLength;
  return ReadName(local, localLength);
}

bool XmlScanner::Decode(const char* raw, size_t size, size_t maxLength, ErrorCode overLimit) {
  // Most values are plain ASCII without references: they are taken as they stand.
  bool plain = true;
  for (size_t i = 0; i < size && plain; ++i) {
    plain = static_cast<unsigned char>(raw[i]) < 0x80 && raw[i] != '&';
  }
  if (plain) {
    decoded_.assign(raw, size);
    return decoded_.size() <= maxLength || Fail(overLimit);
  }
  decoded_.clear();
  if (transcodeMode_ == transcode::kUtf8) {
    // A sequence the decoder does not take ends the value there, as it always has.
    text::DecodeUtf8Prefix(std::string_view(raw, size), decoded_);
  } else {
    decoded_.assign(raw, size);
  }
  if (!DecodeEntities()) return false;
  return decoded_.size() <= maxLength || Fail(overLimit);
}

bool XmlScanner::DecodeEntities() {
  size_t to = 0;
  for (size_t from = 0; from < decoded_.size();) {
    if (decoded_[from] != '&') {
      decoded_[to++] = decoded_[from++];
      continue;
    }
    const size_t end = decoded_.find(';', from);
    if (end == std::string::npos) return Fail(err::kXmlInvalidData);
    const int value = EntityValue(std::string_view(decoded_).substr(from + 1, end - from - 1));
    if (value < 0) return Fail(err::kXmlInvalidData);
    decoded_[to++] = static_cast<char>(value);
    from = end + 1;
  }
  decoded_.resize(to);
  return true;
}

bool XmlScanner::ReadAttribute(bool keep) {
  // Without keep the attribute is only passed over, into the first slot of the arena.
  if (keep && attributeCount_ == kAttributeLimit) return Fail(err::kXmlUnexpectedElement);
  const size_t base = keep ? arenaUsed_ : 0;
  char* prefix = arena_ + base;
  char* name = prefix + kNameLimit + 1;
  size_t prefixLength, nameLength;
  if (!ReadQualifiedName(prefix, prefixLength, name, nameLength)) return false;
  SkipWhitespace();
  if (Get() != '=') return Fail(err::kXmlUnexpectedElement);
  SkipWhitespace();
  const int quote = Get();
  if (quote != '"' && quote != '\'') return Fail(err::kXmlInvalidAttribute);
  size_t size = 0;
  for (bool closed = false; !closed;) {
    size_t available = 0;
    const uint8_t* p = stream_.Span(available);
    if (available == 0) return Fail(err::kXmlInvalidAttribute);
    size_t i = 0;
    while (i < available && p[i] != quote) {
      if (size == kTextBufferSize) return Fail(err::kXmlInvalidAttribute);
      if (p[i] == '\n') ++line_;
      raw_[size++] = static_cast<char>(p[i++]);
    }
    closed = i < available;
    stream_.Advance(closed ? i + 1 : i);
  }
  if (!keep) return true;
  if (!Decode(raw_, size, kValueLimit, err::kXmlInvalidAttribute)) return false;
  // The prefix and name slots hold at most kNameLimit bytes each, so the value lands behind them.
  char* value = name + kNameLimit + 1;
  std::memcpy(value, decoded_.data(), decoded_.size());
  value[decoded_.size()] = '\0';
  Attribute& a = attributes_[attributeCount_++];
  a.prefix = static_cast<uint32_t>(base);
  a.name = static_cast<uint32_t>(base + kNameLimit + 1);
  a.value = static_cast<uint32_t>(base + 2 * (kNameLimit + 1));
  a.prefixLength = static_cast<uint16_t>(prefixLength);
  a.nameLength = static_cast<uint16_t>(nameLength);
  a.valueLength = static_cast<uint16_t>(decoded_.size());
  arenaUsed_ += kAttributeSlot;
  return true;
}

bool XmlScanner::ReadAttributes(bool keep, bool prolog) {
  if (keep) {
    attributeCount_ = 0;
    arenaUsed_ = 0;
  }
  for (;;) {
    SkipWhitespace();
    const int c = stream_.Peek();
    if (prolog ? c == '?' : (c == '>' || c == '/')) {
      Get();
      if (c != '>') {
        if (Get() != '>') return Fail(err::kXmlUnexpectedElement);
        isClose_ = true;
      }
      return true;
    }
    if (!IsNameChar(c)) return Fail(err::kXmlUnexpectedElement);
    if (!ReadAttribute(keep)) return false;
  }
}

bool XmlScanner::Prolog() {
  if (!ok()) return false;
  line_ = markLine_ = 1;
  transcodeMode_ = transcode::kUtf8;
  if (stream_.Matches("\xEF\xBB\xBF", 3)) stream_.Skip(3);  // a byte order mark
  SkipWhitespace();
  if (!stream_.Matches("<?xml", 5)) return Fail(err::kXmlUnexpectedElement);
  stream_.Skip(5);
  if (!ReadAttributes(true, true)) return false;
  isOpen_ = isClose_ = false;
  if (const char* encoding = Attr("encoding")) {
    const std::string_view e = encoding;
    if (e == "UTF-8" || e == "utf-8") {
      transcodeMode_ = transcode::kUtf8;
    } else if (e.starts_with("ISO-") || e.starts_with("iso-")) {
      transcodeMode_ = transcode::kIso;
    } else {
      transcodeMode_ = transcode::kNone;
    }
  }
  for (;;) {
    if (!SkipMarkup()) return false;
    if (!stream_.Matches("<?", 2)) return true;
    if (!SkipPast("?>")) return Fail(err::kXmlUnexpectedElement);
  }
}

bool XmlScanner::Miss(ScanFlags flags) {
  if (!(flags & scan::kOptional)) return Fail(err::kXmlUnexpectedElement);
  stream_.ReturnToMark();
  line_ = markLine_;
  return false;
}

bool XmlScanner::Tag(std::string_view name, ScanFlags flags) {
  if (!ok() || !SkipMarkup()) return false;
  stream_.Mark();
  markLine_ = line_;
  if (stream_.Peek() != '<') return Miss(flags);
  Get();
  const bool close = stream_.Peek() == '/';
  if (close) Get();
  if (!ReadQualifiedName(prefix_, prefixLength_, name_, nameLength_)) return false;
  isOpen_ = !close;
  isClose_ = close;
  if (!name.empty() && !SameName(this->name(), name)) return Miss(flags);
  if (close) {
    SkipWhitespace();
    if (Get() != '>') return Fail(err::kXmlUnexpectedElement);
  } else {
    if (!(flags & scan::kAttributes)) attributeCount_ = 0;
    if (!ReadAttributes(flags & scan::kAttributes, false)) return false;
  }
  const bool wantOpen = flags & scan::kOpen;
  const bool wantClose = flags & scan::kClose;
  if ((wantOpen && !wantClose && !isOpen_) || (wantClose && !wantOpen && !isClose_)) {
    return Miss(flags);
  }
  if (flags & scan::kPeek) {
    stream_.ReturnToMark();
    line_ = markLine_;
  }
  return true;
}

bool XmlScanner::TextBody(size_t maxLength) {
  if (!ok()) return false;
  size_t size = 0;
  bool blank = false;  // whitespace seen since the last byte kept
  for (;;) {
    size_t available = 0;
    const uint8_t* p = stream_.Span(available);
    if (available == 0) break;
    size_t i = 0;
    bool stop = false;
    while (i < available) {
      uint8_t c = p[i];
      if (c == '<') {
        stop = true;
        break;
      }
      ++i;
      if (IsSpace(c)) {
        if (c == '\n') ++line_;
        blank = size > 0;
        continue;
      }
      if (size + (blank ? 2 : 1) > kTextBufferSize) {
        stream_.Advance(i);
        return Fail(err::kXmlInvalidData);
      }
      if (blank) raw_[size++] = ' ';
      blank = false;
      raw_[size++] = static_cast<char>(c);
    }
    stream_.Advance(i);
    if (!stop) continue;
    if (!IsCommentStart()) break;
    // Here a comment ends only at "--!>", unlike a comment between tags.
    stream_.Skip(4);
    if (!SkipPast("--!>")) return Fail(err::kXmlUnexpectedElement);
  }
  if (blank) {
    if (size == kTextBufferSize) return Fail(err::kXmlInvalidData);
    raw_[size++] = ' ';
  }
  return Decode(raw_, size, maxLength, err::kXmlInvalidData);
}

bool XmlScanner::Text(std::string_view name, size_t maxLength, ScanFlags flags) {
  flags = static_cast<ScanFlags>((flags & (scan::kAttributes | scan::kOptional)) | scan::kOpen);
  if (!Tag(name, flags)) return false;
  if (isClose_) {
    decoded_.clear();
    return true;
  }
  return TextBody(maxLength) && Tag(name, scan::kClose);
}

const XmlScanner::Attribute* XmlScanner::FindAttribute(std::string_view name,
                                                       std::string_view prefix) const {
  for (size_t i = 0; i < attributeCount_; ++i) {
    if (SameName(AttributeName(i), name) && SameName(AttributePrefix(i), prefix)) {
      return &attributes_[i];
    }
  }
  return nullptr;
}

const char* XmlScanner::Attr(std::string_view name, std::string_view prefix) const {
  const Attribute* a = FindAttribute(name, prefix);
  return a != nullptr ? arena_ + a->value : nullptr;
}

std::string_view XmlScanner::AttributeName(size_t i) const {
  return {arena_ + attributes_[i].name, attributes_[i].nameLength};
}

std::string_view XmlScanner::AttributePrefix(size_t i) const {
  return {arena_ + attributes_[i].prefix, attributes_[i].prefixLength};
}

std::string_view XmlScanner::AttributeValue(size_t i) const {
  return {arena_ + attributes_[i].value, attributes_[i].valueLength};
}

const char* XmlScanner::RequiredAttr(std::string_view name) {
  const char* value = Attr(name);
  if (value == nullptr) Fail(err::kXmlMissingAttribute);
  return value;
}

bool XmlScanner::IntAttr(std::string_view name, int64_t& value, int64_t min, int64_t max,
                         ErrorCode rangeError) {
  const Attribute* a = FindAttribute(name, {});
  if (a == nullptr) return ok();
  const char* begin = arena_ + a->value;
  const char* end = begin + a->valueLength;
  int64_t v = 0;
  const auto [ptr, ec] = std::from_chars(begin, end, v);
  if (ec == std::errc::result_out_of_range) return Fail(rangeError);
  if (ec != std::errc() || ptr != end) return Fail(err::kXmlInvalidAttribute);
  if (v < min || v > max) return Fail(rangeError);
  value = v;
  return true;
}

bool XmlScanner::IntAttr(std::string_view name, int& value, int min, int max,
                         ErrorCode rangeError) {
  int64_t v = value;
  if (!IntAttr(name, v, min, max, rangeError)) return false;
  value = static_cast<int>(v);
  return true;
}

bool XmlScanner::BoolAttr(std::string_view name, bool& value) {
  const char* text = Attr(name);
  if (text == nullptr) return ok();
  const std::string_view v = text;
  if (v == "Yes" || v == "true" || v == "1") {
    value = true;
  } else if (v == "No" || v == "false" || v == "0") {
    value = false;
  } else {
    return Fail(err::kXmlInvalidAttribute);
  }
  return true;
}

bool XmlScanner::RealAttr(std::string_view name, double& value) {
  const Attribute* a = FindAttribute(name, {});
  if (a == nullptr) return ok();
  const std::string_view text(arena_ + a->value, a->valueLength);
  double v = 0;
  const auto [ptr, ec] = std::from_chars(text.data(), text.data() + text.size(), v);
  if (ptr != text.data() + text.size()) return Fail(err::kXmlInvalidData);
  if (ec == std::errc::result_out_of_range) {
    // Too small for a double is still between the largest finite values: it reads as zero.
    const size_t e = text.find_first_of("eE");
    if (e == std::string_view::npos || e + 1 >= text.size() || text[e + 1] != '-') {
      return Fail(err::kXmlInvalidData);
    }
    v = text[0] == '-' ? -0.0 : 0.0;
  } else if (ec != std::errc() || !std::isfinite(v)) {
    return Fail(err::kXmlInvalidData);
  }
  value = v;
  return true;
}

bool XmlScanner::ColourAttr(std::string_view name, uint32_t& colour) {
  const char* text = Attr(name);
  if (text == nullptr) return ok();
  const std::string_view v = text;
  if (v.size() != 7 || v[0] != '#') return Fail(err::kXmlInvalidAttribute);
  uint32_t rgb = 0;
  for (size_t i = 1; i < 7; ++i) {
    const int d = HexDigit(v[i]);
    if (d < 0) return Fail(err::kXmlInvalidAttribute);
    rgb = rgb << 4 | static_cast<uint32_t>(d);
  }
  // The text is red, green, blue; a COLORREF keeps red in the low byte.
  colour = (rgb >> 16) | (rgb & 0xFF00) | ((rgb & 0xFF) << 16);
  return true;
}

}  // namespace kelpdex
