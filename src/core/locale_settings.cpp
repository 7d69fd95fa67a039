#include "core/locale_settings.h"

#include <cstring>

#include "platform/locale_table.h"

namespace kelpdex {

const LocaleSettings genericLocale = {0, '.', ',', '/', ':', ',', ';', 0, 0, "$"};
LocaleSettings currentLocale = genericLocale;

namespace {

// Reads one value into a buffer of `size` bytes. A value that is empty counts as a failed read
// too: a separator of nothing (the C locale's thousands separator) cannot be stored in one byte.
bool ReadInfo(platform::LocaleProvider& provider, uint32_t lcid, uint32_t type, char* buf,
              int size) {
  int written = provider.GetLocaleInfo(lcid, type, buf, size);
  return written > 1 && buf[0] != '\0';
}

bool ReadChar(platform::LocaleProvider& provider, uint32_t lcid, uint32_t type, char& out) {
  char buf[2] = {};
  if (!ReadInfo(provider, lcid, type, buf, sizeof buf)) return false;
  out = buf[0];
  return true;
}

bool ReadDigit(platform::LocaleProvider& provider, uint32_t lcid, uint32_t type, uint8_t& out) {
  char buf[2] = {};
  if (!ReadInfo(provider, lcid, type, buf, sizeof buf)) return false;
  out = static_cast<uint8_t>(buf[0] - '0');
  return true;
}

// Reads the values of `lcid` over a copy of genericLocale; false means fall back as a whole.
bool ReadLocale(platform::LocaleProvider& provider, uint32_t lcid, LocaleSettings& out) {
  out = genericLocale;
  bool ok = ReadChar(provider, lcid, platform::kLocaleSDecimal, out.decimalSeparator);
  ok &= ReadChar(provider, lcid, platform::kLocaleSThousand, out.thousandSeparator);
  // With a decimal comma, arguments are divided by ";" and array rows by "\", so that formulas
  // typed in such a locale stay parseable.
  if (out.decimalSeparator == genericLocale.listSeparator ||
      out.decimalSeparator == genericLocale.rowSeparator) {
    if (out.decimalSeparator == ';' || out.decimalSeparator == '\\') return false;
    out.listSeparator = ';';
    out.rowSeparator = '\\';
  }
  ok &= ReadChar(provider, lcid, platform::kLocaleSDate, out.dateSeparator);
  ok &= ReadChar(provider, lcid, platform::kLocaleSTime, out.timeSeparator);
  ok &= ReadDigit(provider, lcid, platform::kLocaleIDate, out.dateOrder);
  ok &= ReadDigit(provider, lcid, platform::kLocaleILDate, out.longDateOrder);
  char currency[15] = {};
  ok &= ReadInfo(provider, lcid, platform::kLocaleSCurrency, currency, 14);
  std::memcpy(out.currencySymbol, currency, sizeof currency);
  return ok;
}

}  // namespace

LocaleSettings BuildLocaleSettings(int localeChoice, platform::LocaleProvider& provider) {
  if (localeChoice <= 0 || localeChoice >= platform::kLocaleChoiceCount) return genericLocale;
  uint32_t lcid = platform::LocaleIdOfChoice(localeChoice);
  if (localeChoice > 2 && !provider.IsValidLocale(lcid)) return genericLocale;
  LocaleSettings built;
  if (!ReadLocale(provider, lcid, built)) return genericLocale;
  built.localeIndex = static_cast<uint8_t>(localeChoice);
  return built;
}

bool ApplyLocaleChoice(int localeChoice, platform::LocaleProvider& provider) {
  if (currentLocale.localeIndex == localeChoice) return false;
  currentLocale = BuildLocaleSettings(localeChoice, provider);
  return true;
}

void OnSystemSettingChange(platform::LocaleProvider& provider) {
  LocaleSettings built;
  if (ReadLocale(provider, platform::kLocaleUserDefault, built)) {
    built.localeIndex = 2;
    currentLocale = built;
  } else {
    currentLocale = genericLocale;
  }
}

}  // namespace kelpdex
