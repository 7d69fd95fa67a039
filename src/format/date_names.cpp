#include "format/date_names.h"

#include <atomic>
#include <cstring>
#include <memory>
#include <mutex>

#include "platform/locale_table.h"

namespace kelpdex {

namespace {

const char* const kMonths[12] = {"January",   "February", "March",    "April",
                                 "May",       "June",     "July",     "August",
                                 "September", "October",  "November", "December"};
const char* const kDays[7] = {"Sunday",   "Monday", "Tuesday", "Wednesday",
                              "Thursday", "Friday", "Saturday"};

template <size_t N>
void Copy(char (&out)[N], const char* text, size_t length) {
  if (length >= N) length = N - 1;
  std::memcpy(out, text, length);
  out[length] = '\0';
}

DateNames MakeEnglish() {
  DateNames names{};
  for (int m = 0; m < 12; ++m) {
    Copy(names.months[m], kMonths[m], std::strlen(kMonths[m]));
    Copy(names.shortMonths[m], kMonths[m], 3);
  }
  for (int d = 0; d < 7; ++d) {
    Copy(names.days[d], kDays[d], std::strlen(kDays[d]));
    Copy(names.shortDays[d], kDays[d], 3);
  }
  Copy(names.am, "AM", 2);
  Copy(names.pm, "PM", 2);
  return names;
}

// Reads one name, keeping the English one when the locale has none.
template <size_t N>
void Read(platform::LocaleProvider& provider, uint32_t lcid, uint32_t type, char (&out)[N]) {
  char buf[N];
  if (provider.GetLocaleInfo(lcid, type, buf, static_cast<int>(N)) > 1)
    Copy(out, buf, std::strlen(buf));
}

std::mutex gMutex;
platform::LocaleProvider* gProvider = nullptr;
std::atomic<DateNames*> gCache[platform::kLocaleChoiceCount];
std::unique_ptr<DateNames> gOwned[platform::kLocaleChoiceCount];

}  // namespace

const DateNames& EnglishDateNames() {
  static const DateNames english = MakeEnglish();
  return english;
}

const DateNames& DateNamesFor(const LocaleSettings* settings) {
  int choice = settings != nullptr ? settings->localeIndex : 0;
  if (choice <= 0 || choice >= platform::kLocaleChoiceCount) return EnglishDateNames();
  if (DateNames* cached = gCache[choice].load(std::memory_order_acquire)) return *cached;
  std::lock_guard<std::mutex> lock(gMutex);
  if (DateNames* cached = gCache[choice].load(std::memory_order_relaxed)) return *cached;
  platform::LocaleProvider& provider =
      gProvider != nullptr ? *gProvider : platform::SystemLocaleProvider();
  uint32_t lcid = platform::LocaleIdOfChoice(choice);
  auto names = std::make_unique<DateNames>(EnglishDateNames());
  for (uint32_t m = 0; m < 12; ++m) {
    Read(provider, lcid, platform::kLocaleSMonthName1 + m, names->months[m]);
    Read(provider, lcid, platform::kLocaleSAbbrevMonthName1 + m, names->shortMonths[m]);
  }
  // The locale counts its days from Monday; the names here start on Sunday.
  for (uint32_t d = 0; d < 7; ++d) {
    uint32_t fromMonday = (d + 6) % 7;
    Read(provider, lcid, platform::kLocaleSDayName1 + fromMonday, names->days[d]);
    Read(provider, lcid, platform::kLocaleSAbbrevDayName1 + fromMonday, names->shortDays[d]);
  }
  Read(provider, lcid, platform::kLocaleS1159, names->am);
  Read(provider, lcid, platform::kLocaleS2359, names->pm);
  gOwned[choice] = std::move(names);
  gCache[choice].store(gOwned[choice].get(), std::memory_order_release);
  return *gOwned[choice];
}

void SetDateNamesProvider(platform::LocaleProvider* provider) {
  std::lock_guard<std::mutex> lock(gMutex);
  gProvider = provider;
  // Names handed out earlier stay valid until the next call; only the cache forgets them.
  for (auto& slot : gCache) slot.store(nullptr, std::memory_order_release);
}

}  // namespace kelpdex
