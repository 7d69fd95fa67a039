// Regional data by LCID, the equivalent of IsValidLocale and GetLocaleInfoA. The logic asks
// through this interface so tests can supply any locale they need.
#pragma once

#include <cstdint>

namespace kelpdex::platform {

// LCTYPE values, with the numbers Windows gives them.
enum LocaleInfoType : uint32_t {
  kLocaleSList = 0x0C,
  kLocaleSDecimal = 0x0E,
  kLocaleSThousand = 0x0F,
  kLocaleSCurrency = 0x14,
  kLocaleSDate = 0x1D,
  kLocaleSTime = 0x1E,
  kLocaleSShortDate = 0x1F,
  kLocaleSLongDate = 0x20,
  kLocaleIDate = 0x21,
  kLocaleILDate = 0x22,
  kLocaleS1159 = 0x28,              // AM designator
  kLocaleS2359 = 0x29,              // PM designator
  kLocaleSDayName1 = 0x2A,          // Monday; 0x2B..0x30 Tuesday..Sunday
  kLocaleSAbbrevDayName1 = 0x31,    // Mon; 0x32..0x37
  kLocaleSMonthName1 = 0x38,        // January; 0x39..0x43
  kLocaleSAbbrevMonthName1 = 0x44,  // Jan; 0x45..0x4F
  kLocaleSTimeFormat = 0x1003,
};

class LocaleProvider {
 public:
  virtual ~LocaleProvider() = default;
  // True when the LCID names a locale the machine can supply (LCID_INSTALLED).
  virtual bool IsValidLocale(uint32_t lcid) = 0;
  // Writes the value, in Windows-1252 and NUL-terminated, into buf of `size` bytes. Returns the
  // bytes written including the NUL, or 0 on failure: unknown LCID or type, or a value that does
  // not fit (a buffer of 2 bytes takes one character). A size of 0 writes nothing and returns the
  // size needed. The LCIDs 0x0400 and 0x0800 stand for the user's and the system's default
  // locale; any other LCID must be one of the table's languages.
  virtual int GetLocaleInfo(uint32_t lcid, uint32_t type, char* buf, int size) = 0;
};

// The machine's locale data (the C library's locales on POSIX). Lives for the whole process.
LocaleProvider& SystemLocaleProvider();

}  // namespace kelpdex::platform
