#include "persist/xml_writer.h"

#include <charconv>
#include <cmath>
#include <cstdio>

#include "text/utf8.h"

namespace kelpdex {

namespace {

bool NeedsReference(uint8_t c) {
  return c < 32 || c == '"' || c == '&' || c == '\'' || c == '<' || c == '>';
}

bool IsXmlSpace(uint8_t c) {
  return c == ' ' || c == '\t' || c == '\r' || c == '\n';
}

// A blank the reader keeps as it stands: one between two other characters, with no whitespace
// before it. Tabs and line ends are always references, so only blanks need the question.
bool KeptBlank(std::string_view text, size_t i) {
  return i > 0 && i + 1 < text.size() && !IsXmlSpace(static_cast<uint8_t>(text[i - 1]));
}

// What a byte of the code page costs in the file once converted to UTF-8.
size_t Utf8Size(uint8_t c) {
  if (c < 0x80) return 1;
  return text::Cp1252ToUnicode(c) < 0x800 ? 2 : 3;
}

}  // namespace

bool EscapeXml(std::string_view text, std::string& out) {
  // The common value has nothing to escape and is short enough to fit at any width: one append.
  if (text.size() * 3 <= kXmlEscapeLimit) {
    bool plain = true;
    for (size_t i = 0; i < text.size(); ++i) {
      const auto c = static_cast<uint8_t>(text[i]);
      if (NeedsReference(c) || (c == ' ' && !KeptBlank(text, i))) {
        plain = false;
        break;
      }
    }
    if (plain) {
      out.append(text);
      return true;
    }
  }
  size_t written = 0;  // in the file's UTF-8 bytes
  for (size_t i = 0; i < text.size(); ++i) {
    const char ch = text[i];
    const auto c = static_cast<uint8_t>(ch);
    const size_t before = out.size();
    switch (c) {
      case '"':
        out += "&quot;";
        break;
      case '&':
        out += "&amp;";
        break;
      case '\'':
        out += "&apos;";
        break;
      case '<':
        out += "&lt;";
        break;
      case '>':
        out += "&gt;";
        break;
      default:
        if ((c >= 1 && c <= 31) || (c == ' ' && !KeptBlank(text, i))) {
          const char reference[] = {'&', '#', static_cast<char>('0' + c / 10),
                                    static_cast<char>('0' + c % 10), ';'};
          out.append(reference, sizeof reference);
        } else {
          out.push_back(ch);
        }
    }
    written += out.size() - before == 1 ? Utf8Size(c) : out.size() - before;
    if (written > kXmlEscapeLimit) return false;
  }
  return true;
}

size_t XmlNumberText(double x, char* out) {
  const double magnitude = std::fabs(x);
  const bool fixed = magnitude == 0 || (magnitude >= 1e-14 && magnitude < 1e15);
  const auto r = std::to_chars(out, out + kXmlNumberMax, x,
                               fixed ? std::chars_format::fixed : std::chars_format::scientific);
  return static_cast<size_t>(r.ptr - out);
}

XmlAttributes& XmlAttributes::Add(std::string_view name, std::string_view value, bool escape) {
  text_ += ' ';
  if (!EscapeXml(name, text_)) ok_ = false;
  text_ += "=\"";
  if (!escape) {
    text_ += value;
  } else if (!EscapeXml(value, text_)) {
    ok_ = false;
  }
  text_ += '"';
  return *this;
}

XmlAttributes& XmlAttributes::Text(std::string_view name, std::string_view value) {
  return Add(name, value, true);
}

XmlAttributes& XmlAttributes::Int(std::string_view name, int64_t value) {
  char digits[24];
  const int n = std::snprintf(digits, sizeof digits, "%lld", static_cast<long long>(value));
  return Add(name, std::string_view(digits, static_cast<size_t>(n)), false);
}

XmlAttributes& XmlAttributes::Bool(std::string_view name, bool value) {
  return Add(name, value ? "1" : "0", false);
}

XmlAttributes& XmlAttributes::Real(std::string_view name, double value) {
  char digits[kXmlNumberMax];
  return Add(name, std::string_view(digits, XmlNumberText(value, digits)), false);
}

XmlAttributes& XmlAttributes::Colour(std::string_view name, uint32_t colour, HexCase hexCase) {
  const char* hex = hexCase == HexCase::kUpper ? "0123456789ABCDEF" : "0123456789abcdef";
  const uint32_t parts[3] = {colour & 0xFF, (colour >> 8) & 0xFF, (colour >> 16) & 0xFF};
  char text[7] = {'#'};
  for (int i = 0; i < 3; ++i) {
    text[1 + 2 * i] = hex[parts[i] >> 4];
    text[2 + 2 * i] = hex[parts[i] & 15];
  }
  return Add(name, std::string_view(text, sizeof text), false);
}

void XmlAttributes::Clear() {
  text_.clear();
  ok_ = true;
}

bool XmlWriter::Fail() {
  stream_.SetError(err::kXmlInvalidData);
  return false;
}

bool XmlWriter::Prolog() {
  static constexpr std::string_view kProlog = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\r\n\r\n";
  return stream_.Write(kProlog.data(), kProlog.size());
}

void XmlWriter::Begin(int indent) {
  line_.assign(indent > 0 ? static_cast<size_t>(indent) : 0, '\t');
}

bool XmlWriter::Open(std::string_view name, const XmlAttributes& attributes, bool empty) {
  if (!attributes.ok()) return false;
  line_ += '<';
  if (!EscapeXml(name, line_)) return false;
  line_ += attributes.str();
  line_ += empty ? "/>" : ">";
  return true;
}

bool XmlWriter::Close(std::string_view name) {
  line_ += "</";
  if (!EscapeXml(name, line_)) return false;
  line_ += '>';
  return true;
}

bool XmlWriter::End(int lineEnds) {
  for (int i = 0; i < lineEnds; ++i) line_ += "\r\n";
  utf8_.clear();
  text::AppendCp1252AsUtf8(utf8_, line_);
  return stream_.Write(utf8_.data(), utf8_.size());
}

bool XmlWriter::RawLine(std::string_view escaped) {
  if (!ok()) return false;
  utf8_.clear();
  text::AppendCp1252AsUtf8(utf8_, escaped);
  return stream_.Write(utf8_.data(), utf8_.size());
}

bool XmlWriter::Tag(std::string_view name, const XmlAttributes& attributes, TagMode mode,
                    int indent, int lineEnds) {
  if (!ok()) return false;
  Begin(indent);
  const bool done =
      mode == TagMode::kClose ? Close(name) : Open(name, attributes, mode == TagMode::kEmpty);
  return done ? End(lineEnds) : Fail();
}

bool XmlWriter::Tag(std::string_view name, TagMode mode, int indent, int lineEnds) {
  return Tag(name, XmlAttributes(), mode, indent, lineEnds);
}

bool XmlWriter::TextElement(std::string_view name, const XmlAttributes& attributes,
                            std::string_view text, int indent, int lineEnds) {
  if (!ok()) return false;
  Begin(indent);
  const bool done = Open(name, attributes, false) && EscapeXml(text, line_) && Close(name);
  return done ? End(lineEnds) : Fail();
}

bool XmlWriter::TextElement(std::string_view name, std::string_view text, int indent,
                            int lineEnds) {
  return TextElement(name, XmlAttributes(), text, indent, lineEnds);
}

}  // namespace kelpdex
