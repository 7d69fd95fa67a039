// Regional data from Windows' own NLS tables. Values are read as UTF-16 and converted like the
// POSIX ones, so that a locale gives the same bytes whatever the ANSI code page of the machine.
#ifdef _WIN32

#ifndef WIN32_LEAN_AND_MEAN
#define WIN32_LEAN_AND_MEAN
#endif
#ifndef NOMINMAX
#define NOMINMAX
#endif
#include <windows.h>
#undef GetLocaleInfo

#include <string>

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
    int length = ::GetLocaleInfoW(lcid, type, nullptr, 0);
    if (length <= 0) return 0;
    std::wstring wide(static_cast<size_t>(length), L'\0');
    length = ::GetLocaleInfoW(lcid, type, wide.data(), length);
    if (length <= 0) return 0;
    wide.resize(static_cast<size_t>(length) - 1);
    return StoreLocaleValue(LocaleValueToCp1252(Utf8Of(wide)), buf, size);
  }
};

}  // namespace

LocaleProvider& SystemLocaleProvider() {
  static Win32LocaleProvider provider;
  return provider;
}

}  // namespace kelpdex::platform

#endif  // _WIN32
