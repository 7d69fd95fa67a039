#include "text/base64.h"

#include <algorithm>
#include <array>
#include <cstdint>

namespace kelpdex::text {

namespace {

constexpr char kAlphabet[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";

// 57 input bytes make exactly 76 characters, the longest line MIME allows.
constexpr size_t kBytesPerLine = 57;

constexpr int8_t kBad = -1;
constexpr int8_t kPad = -2;
constexpr int8_t kSkip = -3;

constexpr std::array<int8_t, 256> MakeDecodeTable() {
  std::array<int8_t, 256> table{};
  table.fill(kBad);
  for (int i = 0; i < 64; ++i) table[static_cast<uint8_t>(kAlphabet[i])] = static_cast<int8_t>(i);
  table['='] = kPad;
  table['\r'] = kSkip;
  table['\n'] = kSkip;
  table[' '] = kSkip;
  table['\t'] = kSkip;
  return table;
}

constexpr std::array<int8_t, 256> kDecodeTable = MakeDecodeTable();

// Writes the encoding of `bytes` at `w`, which has room for it; returns the end.
char* EncodeBase64(char* w, const uint8_t* p, size_t n) {
  size_t i = 0;
  for (; i + 3 <= n; i += 3) {
    const uint32_t v = (p[i] << 16) | (p[i + 1] << 8) | p[i + 2];
    w[0] = kAlphabet[v >> 18];
    w[1] = kAlphabet[(v >> 12) & 0x3F];
    w[2] = kAlphabet[(v >> 6) & 0x3F];
    w[3] = kAlphabet[v & 0x3F];
    w += 4;
  }
  if (i == n) return w;
  const bool two = n - i == 2;
  const uint32_t v = (p[i] << 16) | (two ? p[i + 1] << 8 : 0);
  w[0] = kAlphabet[v >> 18];
  w[1] = kAlphabet[(v >> 12) & 0x3F];
  w[2] = two ? kAlphabet[(v >> 6) & 0x3F] : '=';
  w[3] = '=';
  return w + 4;
}

// The string grows once and is written through a pointer: a push per character costs several
// times the encoding itself.
void AppendBase64(std::string& out, std::string_view bytes) {
  size_t start = out.size();
  out.resize(start + (bytes.size() + 2) / 3 * 4);
  EncodeBase64(out.data() + start, reinterpret_cast<const uint8_t*>(bytes.data()), bytes.size());
}

}  // namespace

std::string Base64Encode(std::string_view bytes) {
  std::string out;
  out.reserve((bytes.size() + 2) / 3 * 4);
  AppendBase64(out, bytes);
  return out;
}

std::string Base64EncodeLines(std::string_view bytes) {
  std::string out;
  AppendBase64Lines(out, bytes);
  return out;
}

void AppendBase64Lines(std::string& out, std::string_view bytes) {
  const size_t lines = (bytes.size() + kBytesPerLine - 1) / kBytesPerLine;
  size_t start = out.size();
  out.resize(start + (bytes.size() + 2) / 3 * 4 + 2 * lines);
  char* w = out.data() + start;
  const auto* p = reinterpret_cast<const uint8_t*>(bytes.data());
  for (size_t pos = 0; pos < bytes.size(); pos += kBytesPerLine) {
    w = EncodeBase64(w, p + pos, std::min(kBytesPerLine, bytes.size() - pos));
    *w++ = '\r';
    *w++ = '\n';
  }
}

bool Base64Decode(std::string_view text, std::string& out) {
  out.clear();
  out.reserve(text.size() / 4 * 3);
  uint32_t quad = 0;
  int filled = 0;
  int padding = 0;
  bool finished = false;
  for (char ch : text) {
    const int8_t v = kDecodeTable[static_cast<uint8_t>(ch)];
    if (v == kSkip) continue;
    if (v == kBad || finished) return false;
    if (v == kPad) {
      // Padding may only fill the third and fourth place of a quad.
      if (filled < 2) return false;
      ++padding;
    } else if (padding > 0) {
      return false;
    }
    quad = (quad << 6) | (v >= 0 ? static_cast<uint32_t>(v) : 0);
    if (++filled < 4) continue;
    out.push_back(static_cast<char>(quad >> 16));
    if (padding < 2) out.push_back(static_cast<char>(quad >> 8));
    if (padding < 1) out.push_back(static_cast<char>(quad));
    finished = padding > 0;
    quad = 0;
    filled = 0;
  }
  return filled == 0;
}

bool Base64DecodeQuads(const char* text, size_t length, uint8_t* out, size_t& written,
                       bool& padded) {
  written = 0;
  padded = false;
  if (length % 4 != 0) return false;
  const auto* p = reinterpret_cast<const uint8_t*>(text);
  for (size_t i = 0; i < length; i += 4) {
    const int8_t a = kDecodeTable[p[i]];
    const int8_t b = kDecodeTable[p[i + 1]];
    const int8_t c = kDecodeTable[p[i + 2]];
    const int8_t d = kDecodeTable[p[i + 3]];
    if ((a | b | c | d) >= 0) {
      const uint32_t v = (a << 18) | (b << 12) | (c << 6) | d;
      out[written++] = static_cast<uint8_t>(v >> 16);
      out[written++] = static_cast<uint8_t>(v >> 8);
      out[written++] = static_cast<uint8_t>(v);
      continue;
    }
    // Only the last quad may be padded, and only in its third and fourth place.
    if (a < 0 || b < 0 || d != kPad || (c < 0 && c != kPad) || i + 4 != length) return false;
    const uint32_t v = (a << 18) | (b << 12) | (c >= 0 ? c << 6 : 0);
    out[written++] = static_cast<uint8_t>(v >> 16);
    if (c >= 0) out[written++] = static_cast<uint8_t>(v >> 8);
    padded = true;
  }
  return true;
}

}  // namespace kelpdex::text
