// Regional data for the desktop application, read from QLocale: the user's and the system's
// default locale and each language of the locale table.
#pragma once

#include "platform/locale_provider.h"

namespace kelpdex::views {

class QtLocaleProvider : public platform::LocaleProvider {
 public:
  bool IsValidLocale(uint32_t lcid) override;
  int GetLocaleInfo(uint32_t lcid, uint32_t type, char* buf, int size) override;
};

}  // namespace kelpdex::views
