#include "platform/locale_value.h"

#include <cerrno>
#include <cstring>
#include <limits>

#include "platform/os.h"
#include "text/utf8.h"

namespace kelpdex::platform {

namespace {

#ifdef _WIN32
constexpr int kBufferTooSmall = 122;  // ERROR_INSUFFICIENT_BUFFER, without all of windows.h
#else
constexpr int kBufferTooSmall = ERANGE;
#endif

}  // namespace

std::string LocaleValueToCp1252(std::string_view utf8) {
  static constexpr std::string_view kNarrowNoBreakSpace = "\xE2\x80\xAF";  // U+202F
  static constexpr std::string_view kThinSpace = "\xE2\x80\x89";           // U+2009
  static constexpr std::string_view kNoBreakSpace = "\xC2\xA0";            // U+00A0
  std::string spaced;
  spaced.reserve(utf8.size());
  size_t i = 0;
  while (i < utf8.size()) {
    std::string_view rest = utf8.substr(i);
    if (rest.starts_with(kNarrowNoBreakSpace) || rest.starts_with(kThinSpace)) {
      spaced += kNoBreakSpace;
      i += 3;
    } else {
      spaced += utf8[i];
      ++i;
    }
  }
  return text::Utf8ToCp1252(spaced);
}

int StoreLocaleValue(std::string_view value, char* buf, int size) {
  if (value.size() >= static_cast<size_t>(std::numeric_limits<int>::max())) return 0;
  int needed = static_cast<int>(value.size()) + 1;
  if (size == 0) return needed;
  if (buf == nullptr || size < needed) {
    SetLastSystemError(kBufferTooSmall);
    return 0;
  }
  std::memcpy(buf, value.data(), value.size());
  buf[value.size()] = '\0';
  return needed;
}

}  // namespace kelpdex::platform
