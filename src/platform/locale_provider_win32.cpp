// Regional data from Windows' own NLS tables, through GetLocaleInfoA. Its bytes are in the
// locale's own ANSI code page; a locale of another code page than Windows-1252 is read as UTF-16
// and converted like the POSIX values, so a locale gives the same bytes on every machine.
#ifdef _WIN32

#ifndef WIN32_LEAN_AND_MEAN
#define WIN32_LEAN_AND_MEAN
#endif
#ifndef NOMINMAX
#define NOMINMAX
#endif
#include <windows.h>
#undef GetLocaleInfo

#include <cstdlib>
#include <string>
#include <string_view>

#include "platform/locale_provider.h"
#include "platform/locale_table.h"
#include "platform/locale_value.h"

namespace kelpdex::platform {

namespace {

// Only the locales the options dialog offers are answered, as on POSIX.
bool IsOffered(uint32_t lcid) {
  return lcid == kLocaleUserDefault || lcid == kLocaleSystemDefault || FindLocaleChoice(lcid) > 2;
}

std::string Utf8Of(const std::wstring& wide) {
  if (wide.empty()) return "";
  int length = WideCharToMultiByte(CP_UTF8, 0, wide.data(), static_cast<int>(wide.size()), nullptr,
                                   0, nullptr, nullptr);
  if (length <= 0) return "";
  std::string utf8(static_cast<size_t>(length), '\0');
  WideCharToMultiByte(CP_UTF8, 0, wide.data(), static_cast<int>(wide.size()), utf8.data(), length,
                      nullptr, nullptr);
  return utf8;
}

class Win32LocaleProvider : public LocaleProvider {
 public:
  bool IsValidLocale(uint32_t lcid) override {
    if (!IsOffered(lcid)) return false;
    if (lcid == kLocaleUserDefault || lcid == kLocaleSystemDefault) return true;
    return ::IsValidLocale(lcid, LCID_INSTALLED) != FALSE;
  }

  int GetLocaleInfo(uint32_t lcid, uint32_t type, char* buf, int size) override {
    // A number written as binary would not be the NUL-terminated text callers expect.
    if (!IsOffered(lcid) || (type & LOCALE_RETURN_NUMBER) != 0) {
      SetLastError(ERROR_INVALID_PARAMETER);
      return 0;
    }
    // Without LOCALE_USE_CP_ACP the narrow call answers in the locale's code page, not the
    // machine's, so a Western locale's bytes are Windows-1252 already.
    if (AnsiCodePage(lcid) == 1252) {
      char value[256];
      int length = ::GetLocaleInfoA(lcid, type & ~LOCALE_USE_CP_ACP, value, sizeof value);
      if (length <= 0) return 0;
      return StoreLocaleValue(std::string_view(value, static_cast<size_t>(length) - 1), buf, size);
    }
    int length = ::GetLocaleInfoW(lcid, type, nullptr, 0);
    if (length <= 0) return 0;
    std::wstring wide(static_cast<size_t>(length), L'\0');
    length = ::GetLocaleInfoW(lcid, type, wide.data(), length);
    if (length <= 0) return 0;
    wide.resize(static_cast<size_t>(length) - 1);
    return StoreLocaleValue(LocaleValueToCp1252(Utf8Of(wide)), buf, size);
  }

 private:
  static unsigned AnsiCodePage(uint32_t lcid) {
    char digits[8] = {};
    if (::GetLocaleInfoA(lcid, LOCALE_IDEFAULTANSICODEPAGE, digits, sizeof digits) <= 0) return 0;
    return static_cast<unsigned>(std::strtoul(digits, nullptr, 10));
  }
};

}  // namespace

LocaleProvider& SystemLocaleProvider() {
  static Win32LocaleProvider provider;
  return provider;
}

}  // namespace kelpdex::platform

#endif  // _WIN32
