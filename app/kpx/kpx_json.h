// The little JSON kpx writes: strings escaped, everything else written by the caller.
#pragma once

#include <cstdio>
#include <string>
#include <string_view>

namespace kelpdex::kpx {

// A JSON string literal of UTF-8 text.
inline std::string JsonString(std::string_view utf8) {
  std::string out = "\"";
  for (char c : utf8) {
    switch (c) {
      case '"':
        out += "\\\"";
        break;
      case '\\':
        out += "\\\\";
        break;
      case '\n':
        out += "\\n";
        break;
      case '\r':
        out += "\\r";
        break;
      case '\t':
        out += "\\t";
        break;
      default:
        if (static_cast<unsigned char>(c) < 0x20) {
          char buf[8];
          std::snprintf(buf, sizeof buf, "\\u%04x", static_cast<unsigned char>(c));
          out += buf;
        } else {
          out += c;
        }
    }
  }
  return out + "\"";
}

}  // namespace kelpdex::kpx
