// A locale provider with values set by the test, keeping GetLocaleInfoA's buffer rules.
#pragma once

#include <cstring>
#include <map>
#include <set>
#include <string>
#include <utility>

#include "platform/locale_provider.h"

namespace kelpdex::testing {

class FakeLocaleProvider : public platform::LocaleProvider {
 public:
  // Sets every value the regional settings read for `lcid` and marks it installed.
  void SetLocale(uint32_t lcid, const std::string& decimal, const std::string& thousand,
                 const std::string& date, const std::string& time, const std::string& dateOrder,
                 const std::string& longDateOrder, const std::string& currency) {
    installed.insert(lcid);
    values[{lcid, platform::kLocaleSDecimal}] = decimal;
    values[{lcid, platform::kLocaleSThousand}] = thousand;
    values[{lcid, platform::kLocaleSDate}] = date;
    values[{lcid, platform::kLocaleSTime}] = time;
    values[{lcid, platform::kLocaleIDate}] = dateOrder;
    values[{lcid, platform::kLocaleILDate}] = longDateOrder;
    values[{lcid, platform::kLocaleSCurrency}] = currency;
  }

  bool IsValidLocale(uint32_t lcid) override {
    ++validityChecks;
    return installed.count(lcid) != 0;
  }

  int GetLocaleInfo(uint32_t lcid, uint32_t type, char* buf, int size) override {
    auto it = values.find({lcid, type});
    if (it == values.end()) return 0;
    int needed = static_cast<int>(it->second.size()) + 1;
    if (needed > size) return 0;
    std::memcpy(buf, it->second.c_str(), static_cast<size_t>(needed));
    return needed;
  }

  std::set<uint32_t> installed;
  std::map<std::pair<uint32_t, uint32_t>, std::string> values;
  int validityChecks = 0;
};

}  // namespace kelpdex::testing
