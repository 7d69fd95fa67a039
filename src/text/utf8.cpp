#include "text/utf8.h"

namespace kelpdex::text {

namespace {

// Code points of bytes 0x80..0x9F; the rest of the code page is Latin-1.
constexpr uint16_t kHighControlTable[32] = {
    0x20AC, 0x0081, 0x201A, 0x0192, 0x201E, 0x2026, 0x2020, 0x2021, 0x02C6, 0x2030, 0x0160,
    0x2039, 0x0152, 0x008D, 0x017D, 0x008F, 0x0090, 0x2018, 0x2019, 0x201C, 0x201D, 0x2022,
    0x2013, 0x2014, 0x02DC, 0x2122, 0x0161, 0x203A, 0x0153, 0x009D, 0x017E, 0x0178,
};

constexpr uint32_t kInvalid = 0xFFFFFFFF;

void AppendUtf8(std::string& out, uint32_t cp) {
  if (cp < 0x80) {
    out.push_back(static_cast<char>(cp));
  } else if (cp < 0x800) {
    out.push_back(static_cast<char>(0xC0 | (cp >> 6)));
    out.push_back(static_cast<char>(0x80 | (cp & 0x3F)));
  } else {
    out.push_back(static_cast<char>(0xE0 | (cp >> 12)));
    out.push_back(static_cast<char>(0x80 | ((cp >> 6) & 0x3F)));
    out.push_back(static_cast<char>(0x80 | (cp & 0x3F)));
  }
}

void AppendAsCp1252(std::string& out, uint32_t cp) {
  const int c = UnicodeToCp1252(cp);
  out.push_back(c < 0 ? '?' : static_cast<char>(c));
}

// Decodes the well-formed sequence starting at s[i], or returns kInvalid for its maximal
// ill-formed prefix (at least one byte), so that a damaged sequence costs one '?' and never
// swallows the valid character after it. `length` receives the bytes consumed either way.
uint32_t DecodeOne(std::string_view s, size_t i, size_t& length) {
  const uint8_t lead = static_cast<uint8_t>(s[i]);
  length = 1;
  int trail;
  uint32_t cp;
  // The second byte's range excludes overlongs (E0, F0), surrogates (ED) and code points past
  // U+10FFFF (F4).
  uint8_t low = 0x80;
  uint8_t high = 0xBF;
  if (lead < 0x80) {
    return lead;
  } else if (lead >= 0xC2 && lead <= 0xDF) {
    trail = 1;
    cp = lead & 0x1F;
  } else if (lead >= 0xE0 && lead <= 0xEF) {
    trail = 2;
    cp = lead & 0x0F;
    if (lead == 0xE0) low = 0xA0;
    if (lead == 0xED) high = 0x9F;
  } else if (lead >= 0xF0 && lead <= 0xF4) {
    trail = 3;
    cp = lead & 0x07;
    if (lead == 0xF0) low = 0x90;
    if (lead == 0xF4) high = 0x8F;
  } else {
    return kInvalid;
  }
  for (int k = 0; k < trail; ++k) {
    if (i + length >= s.size()) return kInvalid;
    const uint8_t b = static_cast<uint8_t>(s[i + length]);
    if (b < low || b > high) return kInvalid;
    cp = (cp << 6) | (b & 0x3F);
    low = 0x80;
    high = 0xBF;
    ++length;
  }
  return cp;
}

}  // namespace

uint32_t Cp1252ToUnicode(uint8_t c) {
  return (c >= 0x80 && c < 0xA0) ? kHighControlTable[c - 0x80] : c;
}

int UnicodeToCp1252(uint32_t codePoint) {
  if (codePoint < 0x80 || (codePoint >= 0xA0 && codePoint <= 0xFF)) {
    return static_cast<int>(codePoint);
  }
  // clang-format off
  switch (codePoint) {
    case 0x0081: return 0x81;
    case 0x008D: return 0x8D;
    case 0x008F: return 0x8F;
    case 0x0090: return 0x90;
    case 0x009D: return 0x9D;
    case 0x0152: return 0x8C;
    case 0x0153: return 0x9C;
    case 0x0160: return 0x8A;
    case 0x0161: return 0x9A;
    case 0x0178: return 0x9F;
    case 0x017D: return 0x8E;
    case 0x017E: return 0x9E;
    case 0x0192: return 0x83;
    case 0x02C6: return 0x88;
    case 0x02DC: return 0x98;
    case 0x2013: return 0x96;
    case 0x2014: return 0x97;
    case 0x2018: return 0x91;
    case 0x2019: return 0x92;
    case 0x201A: return 0x82;
    case 0x201C: return 0x93;
    case 0x201D: return 0x94;
    case 0x201E: return 0x84;
    case 0x2020: return 0x86;
    case 0x2021: return 0x87;
    case 0x2022: return 0x95;
    case 0x2026: return 0x85;
    case 0x2030: return 0x89;
    case 0x2039: return 0x8B;
    case 0x203A: return 0x9B;
    case 0x20AC: return 0x80;
    case 0x2122: return 0x99;
    default: return -1;
  }
  // clang-format on
}

std::string Cp1252ToUtf8(std::string_view s) {
  std::string out;
  AppendCp1252AsUtf8(out, s);
  return out;
}

void AppendCp1252AsUtf8(std::string& out, std::string_view s) {
  out.reserve(out.size() + s.size());
  size_t i = 0;
  while (i < s.size()) {
    // ASCII is the same in both: whole runs of it are copied at once.
    size_t run = i;
    while (run < s.size() && static_cast<uint8_t>(s[run]) < 0x80) ++run;
    out.append(s.data() + i, run - i);
    if (run == s.size()) break;
    AppendUtf8(out, Cp1252ToUnicode(static_cast<uint8_t>(s[run])));
    i = run + 1;
  }
}

std::string Utf8ToCp1252(std::string_view s, size_t* replaced) {
  std::string out;
  out.reserve(s.size());
  size_t lost = 0;
  size_t i = 0;
  while (i < s.size()) {
    size_t length;
    const uint32_t cp = DecodeOne(s, i, length);
    const int c = cp == kInvalid ? -1 : UnicodeToCp1252(cp);
    if (c < 0) ++lost;
    out.push_back(c < 0 ? '?' : static_cast<char>(c));
    i += length;
  }
  if (replaced != nullptr) *replaced = lost;
  return out;
}

size_t DecodeUtf8Prefix(std::string_view s, std::string& out) {
  size_t i = 0;
  while (i < s.size()) {
    const uint8_t lead = static_cast<uint8_t>(s[i]);
    if (lead < 0x80) {
      out.push_back(static_cast<char>(lead));
      ++i;
      continue;
    }
    size_t trail;
    uint32_t cp;
    if (lead >= 0xC2 && lead <= 0xDF) {
      trail = 1;
      cp = lead & 0x1F;
    } else if (lead >= 0xE0 && lead <= 0xEF) {
      trail = 2;
      cp = lead & 0x0F;
    } else {
      break;
    }
    if (s.size() - i <= trail) break;
    size_t k = 1;
    for (; k <= trail; ++k) {
      const uint8_t b = static_cast<uint8_t>(s[i + k]);
      if ((b & 0xC0) != 0x80) break;
      cp = (cp << 6) | (b & 0x3F);
    }
    if (k <= trail) break;
    AppendAsCp1252(out, cp);
    i += trail + 1;
  }
  return i;
}

}  // namespace kelpdex::text
