// Regional data from the C library's locales. A locale is opened for each question and freed
// after it, so that changes of LANG, LC_* or LOCPATH are seen at once, as a Windows program sees
// a change made in the control panel.
#include <iconv.h>
#include <langinfo.h>
#include <locale.h>

#include <algorithm>
#include <cerrno>
#include <fstream>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/locale_provider.h"
#include "platform/locale_table.h"
#include "platform/locale_value.h"
#include "text/utf8.h"

namespace kelpdex::platform {

namespace {

// LOCALE_NOUSEROVERRIDE and LOCALE_USE_CP_ACP: POSIX locales have no user overrides, and the
// value is always given in Windows-1252.
constexpr uint32_t kIgnoredTypeFlags = 0x80000000u | 0x40000000u;

class LocaleHandle {
 public:
  explicit LocaleHandle(locale_t handle) : handle_(handle) {}
  ~LocaleHandle() {
    if (handle_ != locale_t{}) freelocale(handle_);
  }
  LocaleHandle(const LocaleHandle&) = delete;
  LocaleHandle& operator=(const LocaleHandle&) = delete;

  locale_t get() const { return handle_; }
  explicit operator bool() const { return handle_ != locale_t{}; }

 private:
  locale_t handle_;
};

locale_t TryLocale(const std::string& name) {
  return newlocale(LC_ALL_MASK, name.c_str(), locale_t{});
}

// Opens a locale by a name without a codeset ("de_DE", "sr_RS@latin"), preferring its UTF-8
// form, which is the one a modern system has installed.
locale_t OpenBareName(const std::string& name) {
  size_t at = name.find('@');
  std::string base = name.substr(0, at);
  std::string modifier = at == std::string::npos ? "" : name.substr(at);
  for (const char* codeset : {".UTF-8", ".utf8"}) {
    if (locale_t handle = TryLocale(base + codeset + modifier)) return handle;
  }
  return TryLocale(name);
}

// The environment's locale. When one category names a locale the machine lacks, newlocale
// refuses them all; the categories that can be had are kept and the rest stay "C".
locale_t OpenUserDefault() {
  if (locale_t handle = newlocale(LC_ALL_MASK, "", locale_t{})) return handle;
  locale_t handle = newlocale(LC_ALL_MASK, "C", locale_t{});
  for (int mask : {LC_CTYPE_MASK, LC_NUMERIC_MASK, LC_TIME_MASK, LC_MONETARY_MASK}) {
    if (handle == locale_t{}) break;
    if (locale_t widened = newlocale(mask, "", handle)) handle = widened;
  }
  return handle;
}

std::string Trim(std::string_view s) {
  size_t begin = s.find_first_not_of(" \t\r\n");
  if (begin == std::string_view::npos) return "";
  size_t end = s.find_last_not_of(" \t\r\n");
  return std::string(s.substr(begin, end - begin + 1));
}

// LANG as the system sets it for new sessions (Debian's /etc/default/locale, systemd's
// /etc/locale.conf); empty when neither says.
std::string SystemLang() {
  for (const char* file : {"/etc/default/locale", "/etc/locale.conf"}) {
    std::ifstream in(file);
    std::string line;
    while (std::getline(in, line)) {
      std::string entry = Trim(line);
      if (entry.starts_with("export ")) entry = Trim(std::string_view(entry).substr(7));
      if (!entry.starts_with("LANG=")) continue;
      std::string value = Trim(std::string_view(entry).substr(5));
      if (value.size() >= 2 && (value.front() == '"' || value.front() == '\'') &&
          value.back() == value.front()) {
        value = value.substr(1, value.size() - 2);
      }
      if (!value.empty()) return value;
    }
  }
  return "";
}

locale_t OpenSystemDefault() {
  std::string lang = SystemLang();
  if (!lang.empty()) {
    locale_t handle = TryLocale(lang);
    if (handle == locale_t{} && lang.find('.') == std::string::npos) handle = OpenBareName(lang);
    if (handle != locale_t{}) return handle;
  }
  return OpenUserDefault();
}

locale_t OpenLocale(uint32_t lcid) {
  if (lcid == kLocaleUserDefault) return OpenUserDefault();
  if (lcid == kLocaleSystemDefault) return OpenSystemDefault();
  const char* name = PosixLocaleName(lcid);
  if (name == nullptr) {
    errno = EINVAL;
    return locale_t{};
  }
  return OpenBareName(name);
}

bool IsUtf8Compatible(std::string_view codeset) {
  return codeset == "UTF-8" || codeset == "utf8" || codeset == "ANSI_X3.4-1968" ||
         codeset == "ASCII";
}

// Locales in a legacy codeset ("de_DE" as ISO-8859-1) give their texts in that codeset.
std::string ToUtf8(const char* s, const char* codeset) {
  std::string_view text(s);
  if (text::IsAscii(text) || codeset == nullptr || IsUtf8Compatible(codeset))
    return std::string(text);
  iconv_t cd = iconv_open("UTF-8", codeset);
  if (cd == reinterpret_cast<iconv_t>(-1)) return std::string(text);
  std::string out(text.size() * 4 + 4, '\0');
  char* in = const_cast<char*>(text.data());  // iconv's signature; the input is not written
  size_t inLeft = text.size();
  char* outPtr = out.data();
  size_t outLeft = out.size();
  size_t converted = iconv(cd, &in, &inLeft, &outPtr, &outLeft);
  iconv_close(cd);
  if (converted == static_cast<size_t>(-1)) return std::string(text);
  out.resize(out.size() - outLeft);
  return out;
}

enum class Category { kNumeric, kMonetary, kTime };

std::string Item(locale_t loc, nl_item item, Category category) {
  nl_item codesetItem = CODESET;
#ifdef __GLIBC__
  // Each category of a mixed locale (LC_TIME=de_DE.UTF-8 with LC_CTYPE=C) keeps the codeset of
  // the locale it came from.
  switch (category) {
    case Category::kNumeric:
      codesetItem = _NL_NUMERIC_CODESET;
      break;
    case Category::kMonetary:
      codesetItem = _NL_MONETARY_CODESET;
      break;
    case Category::kTime:
      codesetItem = _NL_TIME_CODESET;
      break;
  }
#else
  (void)category;
#endif
  const char* value = nl_langinfo_l(item, loc);
  if (value == nullptr) return "";
  return ToUtf8(value, nl_langinfo_l(codesetItem, loc));
}

std::string TimeItem(locale_t loc, nl_item item) {
  return Item(loc, item, Category::kTime);
}

// --- strftime formats -------------------------------------------------------------------------

enum class Field { kNone, kDay, kMonth, kYear, kWeekday, kHour, kMinute, kSecond, kAmPm, kOther };

bool IsDateField(Field f) {
  return f == Field::kDay || f == Field::kMonth || f == Field::kYear || f == Field::kWeekday;
}
bool IsTimeField(Field f) {
  return f == Field::kHour || f == Field::kMinute || f == Field::kSecond || f == Field::kAmPm;
}
bool IsNumericDateField(Field f) {
  return f == Field::kDay || f == Field::kMonth || f == Field::kYear;
}

// One conversion of a format with its Windows picture, or literal text (field kNone).
struct Token {
  Field field = Field::kNone;
  std::string text;
};

void Tokenize(std::string_view format, locale_t loc, int depth, std::vector<Token>& out);

void AddLiteral(std::vector<Token>& out, std::string_view text) {
  if (text.empty()) return;
  if (!out.empty() && out.back().field == Field::kNone) {
    out.back().text += text;
  } else {
    out.push_back({Field::kNone, std::string(text)});
  }
}

void AddConversion(char conversion, bool unpadded, locale_t loc, int depth,
                   std::vector<Token>& out) {
  auto nested = [&](std::string_view format) { Tokenize(format, loc, depth + 1, out); };
  switch (conversion) {
    case 'd':
      out.push_back({Field::kDay, unpadded ? "d" : "dd"});
      break;
    case 'e':
      out.push_back({Field::kDay, "d"});
      break;
    case 'm':
      out.push_back({Field::kMonth, unpadded ? "M" : "MM"});
      break;
    case 'b':
    case 'h':
      out.push_back({Field::kMonth, "MMM"});
      break;
    case 'B':
      out.push_back({Field::kMonth, "MMMM"});
      break;
    case 'y':
    case 'g':
      out.push_back({Field::kYear, "yy"});
      break;
    case 'Y':
    case 'G':
      out.push_back({Field::kYear, "yyyy"});
      break;
    case 'a':
      out.push_back({Field::kWeekday, "ddd"});
      break;
    case 'A':
      out.push_back({Field::kWeekday, "dddd"});
      break;
    case 'H':
      out.push_back({Field::kHour, unpadded ? "H" : "HH"});
      break;
    case 'k':
      out.push_back({Field::kHour, "H"});
      break;
    case 'I':
      out.push_back({Field::kHour, unpadded ? "h" : "hh"});
      break;
    case 'l':
      out.push_back({Field::kHour, "h"});
      break;
    case 'M':
      out.push_back({Field::kMinute, unpadded ? "m" : "mm"});
      break;
    case 'S':
      out.push_back({Field::kSecond, unpadded ? "s" : "ss"});
      break;
    case 'p':
    case 'P':
      out.push_back({Field::kAmPm, "tt"});
      break;
    case 'n':
    case 't':
      AddLiteral(out, " ");
      break;
    case '%':
      AddLiteral(out, "%");
      break;
    case 'D':
      nested("%m/%d/%y");
      break;
    case 'F':
      nested("%Y-%m-%d");
      break;
    case 'R':
      nested("%H:%M");
      break;
    case 'T':
      nested("%H:%M:%S");
      break;
    case 'r': {
      std::string ampm = TimeItem(loc, T_FMT_AMPM);
      nested(ampm.empty() ? "%I:%M:%S %p" : ampm);
      break;
    }
    case 'x':
      nested(TimeItem(loc, D_FMT));
      break;
    case 'X':
      nested(TimeItem(loc, T_FMT));
      break;
    case 'c':
      nested(TimeItem(loc, D_T_FMT));
      break;
    default:  // time zone, week and day numbers, seconds since the epoch: no picture
      out.push_back({Field::kOther, ""});
      break;
  }
}

void Tokenize(std::string_view format, locale_t loc, int depth, std::vector<Token>& out) {
  if (depth > 4) return;  // %x inside D_FMT would otherwise never end
  size_t i = 0;
  while (i < format.size()) {
    size_t percent = format.find('%', i);
    if (percent == std::string_view::npos) percent = format.size();
    AddLiteral(out, format.substr(i, percent - i));
    i = percent;
    if (i >= format.size()) break;
    ++i;
    bool unpadded = false;
    while (i < format.size() &&
           std::string_view("_-0^#").find(format[i]) != std::string_view::npos) {
      unpadded = unpadded || format[i] == '-';
      ++i;
    }
    while (i < format.size() && format[i] >= '0' && format[i] <= '9') ++i;
    if (i < format.size() && (format[i] == 'E' || format[i] == 'O')) ++i;
    if (i >= format.size()) break;
    AddConversion(format[i], unpadded, loc, depth, out);
    ++i;
  }
}

std::vector<Token> Tokenize(const std::string& format, locale_t loc) {
  std::vector<Token> tokens;
  Tokenize(format, loc, 0, tokens);
  return tokens;
}

// The first character of `s`, whole if it takes several UTF-8 bytes.
std::string FirstCharacter(std::string_view s) {
  if (s.empty()) return "";
  size_t length = 1;
  while (length < s.size() && (static_cast<unsigned char>(s[length]) & 0xC0) == 0x80) ++length;
  return std::string(s.substr(0, length));
}

// The text between the first two neighbouring fields of a kind (day, month and year for the
// date), reduced to one character and preferring one that is not a space ("%d. %m. %Y" gives
// ".").
std::string Separator(const std::vector<Token>& tokens, bool (*isField)(Field)) {
  bool afterField = false;
  std::string between;
  for (const Token& token : tokens) {
    if (token.field == Field::kNone) {
      if (afterField) between += token.text;
    } else if (isField(token.field)) {
      if (afterField && !between.empty()) {
        size_t visible = between.find_first_not_of(' ');
        return FirstCharacter(visible == std::string::npos ? between : between.substr(visible));
      }
      afterField = true;
      between.clear();
    } else {
      afterField = false;
      between.clear();
    }
  }
  return "";
}

// 0 month-day-year, 1 day-month-year, 2 year-month-day, as IDATE and ILDATE give them.
std::string DateOrder(const std::vector<Token>& tokens) {
  size_t day = tokens.size(), month = tokens.size(), year = tokens.size();
  for (size_t i = tokens.size(); i-- > 0;) {
    if (tokens[i].field == Field::kDay) day = i;
    if (tokens[i].field == Field::kMonth) month = i;
    if (tokens[i].field == Field::kYear) year = i;
  }
  if (year < month && year < day) return "2";
  if (month < day) return "0";
  return "1";
}

// Literal text in a picture is quoted when it holds letters, which Windows would read as fields.
void AppendPictureLiteral(std::string& picture, std::string_view text) {
  bool needsQuotes = false;
  for (char c : text) {
    needsQuotes = needsQuotes || c == '\'' || (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z');
  }
  if (!needsQuotes) {
    picture += text;
    return;
  }
  picture += '\'';
  for (char c : text) {
    if (c == '\'') picture += '\'';
    picture += c;
  }
  picture += '\'';
}

// Several locales separate the parts of their formats with no-break spaces.
constexpr std::string_view kNoBreakSpace = "\xC2\xA0";
constexpr std::string_view kNarrowSpace = "\xE2\x80\xAF";

std::string TrimSpaces(std::string_view s) {
  bool trimmed = true;
  while (trimmed) {
    trimmed = false;
    for (std::string_view space : {std::string_view(" "), kNoBreakSpace, kNarrowSpace}) {
      if (s.starts_with(space)) {
        s.remove_prefix(space.size());
        trimmed = true;
      }
      if (s.ends_with(space)) {
        s.remove_suffix(space.size());
        trimmed = true;
      }
    }
  }
  return std::string(s);
}

// What of the text after a date belongs to it when a time follows: "." or ")" does, words
// ("um" before a German time) and the separators leading to the time do not.
std::string Closing(std::string_view text) {
  size_t space = std::min({text.find(' '), text.find(kNoBreakSpace), text.find(kNarrowSpace)});
  std::string closing(text.substr(0, space));
  for (char c : closing) {
    if ((c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z')) return "";
  }
  while (!closing.empty() && std::string_view(",;:-/").find(closing.back()) != std::string::npos) {
    closing.pop_back();
  }
  return closing;
}

// A Windows picture string ("dd.MM.yyyy") of the fields `keep` accepts. Of the text around
// fields that are left out (the time and zone of a date-and-time format) only the part next to
// a kept field stays, so "%d. %b %H:%M %Y" becomes "dd. MMM yyyy".
std::string Picture(const std::vector<Token>& tokens, bool (*keep)(Field), bool longForm) {
  std::string picture;
  bool anyKept = false;
  bool droppedSinceKept = false;
  std::string pending;  // literal text waiting for the next kept field
  bool pendingClosed = false;
  for (const Token& token : tokens) {
    if (token.field == Field::kNone) {
      if (!pendingClosed) pending += token.text;
      continue;
    }
    if (!keep(token.field)) {
      droppedSinceKept = true;
      // Before the first kept field only the text right in front of it belongs to the date.
      if (!anyKept) {
        pending.clear();
      } else {
        pendingClosed = true;
      }
      continue;
    }
    AppendPictureLiteral(picture, pending);
    std::string text = token.text;
    if (longForm && text == "ddd") text = "dddd";
    if (longForm && text == "MMM") text = "MMMM";
    picture += text;
    anyKept = true;
    droppedSinceKept = false;
    pending.clear();
    pendingClosed = false;
  }
  if (anyKept) AppendPictureLiteral(picture, droppedSinceKept ? Closing(pending) : pending);
  return TrimSpaces(picture);
}

std::string ShortDateFormat(locale_t loc) {
  return TimeItem(loc, D_FMT);
}

std::string LongDateFormat(locale_t loc) {
#ifdef _DATE_FMT
  std::string format = TimeItem(loc, _DATE_FMT);
  if (!format.empty()) return format;
#endif
  return TimeItem(loc, D_T_FMT);
}

std::string TimeFormat(locale_t loc) {
  std::string format = TimeItem(loc, T_FMT);
  return format.empty() ? "%H:%M:%S" : format;
}

std::optional<std::string> ReadValue(locale_t loc, uint32_t type) {
  if (type >= kLocaleSDayName1 && type < kLocaleSDayName1 + 7) {
    // Windows counts from Monday, the C library from Sunday.
    return TimeItem(loc, static_cast<nl_item>(DAY_1 + (type - kLocaleSDayName1 + 1) % 7));
  }
  if (type >= kLocaleSAbbrevDayName1 && type < kLocaleSAbbrevDayName1 + 7) {
    return TimeItem(loc, static_cast<nl_item>(ABDAY_1 + (type - kLocaleSAbbrevDayName1 + 1) % 7));
  }
  if (type >= kLocaleSMonthName1 && type < kLocaleSMonthName1 + 12) {
    // Windows names the month on its own ("styczeń"); glibc's MON_1 is the form used inside a
    // date ("stycznia") where the language has two.
#ifdef ALTMON_1
    return TimeItem(loc, static_cast<nl_item>(ALTMON_1 + (type - kLocaleSMonthName1)));
#else
    return TimeItem(loc, static_cast<nl_item>(MON_1 + (type - kLocaleSMonthName1)));
#endif
  }
  if (type >= kLocaleSAbbrevMonthName1 && type < kLocaleSAbbrevMonthName1 + 12) {
    return TimeItem(loc, static_cast<nl_item>(ABMON_1 + (type - kLocaleSAbbrevMonthName1)));
  }
  switch (type) {
    case kLocaleSDecimal:
      return Item(loc, RADIXCHAR, Category::kNumeric);
    case kLocaleSThousand:
      return Item(loc, THOUSEP, Category::kNumeric);
    case kLocaleSList:
      return Item(loc, RADIXCHAR, Category::kNumeric) == "," ? ";" : ",";
    case kLocaleSCurrency: {
      // CRNCYSTR begins with where the symbol goes: '-' before, '+' after, '.' instead of the
      // decimal point.
      std::string symbol = Item(loc, CRNCYSTR, Category::kMonetary);
      if (!symbol.empty() && (symbol[0] == '-' || symbol[0] == '+' || symbol[0] == '.')) {
        symbol.erase(0, 1);
      }
      return symbol;
    }
    case kLocaleSDate:
      return Separator(Tokenize(ShortDateFormat(loc), loc), IsNumericDateField);
    case kLocaleSTime:
      return Separator(Tokenize(TimeFormat(loc), loc), IsTimeField);
    case kLocaleIDate:
      return DateOrder(Tokenize(ShortDateFormat(loc), loc));
    case kLocaleILDate:
      return DateOrder(Tokenize(LongDateFormat(loc), loc));
    case kLocaleSShortDate:
      return Picture(Tokenize(ShortDateFormat(loc), loc), IsDateField, false);
    case kLocaleSLongDate:
      return Picture(Tokenize(LongDateFormat(loc), loc), IsDateField, true);
    case kLocaleSTimeFormat:
      return Picture(Tokenize(TimeFormat(loc), loc), IsTimeField, false);
    case kLocaleS1159:
      return TimeItem(loc, AM_STR);
    case kLocaleS2359:
      return TimeItem(loc, PM_STR);
    default:
      return std::nullopt;
  }
}

class PosixLocaleProvider : public LocaleProvider {
 public:
  bool IsValidLocale(uint32_t lcid) override {
    LocaleHandle loc(OpenLocale(lcid));
    return static_cast<bool>(loc);
  }

  int GetLocaleInfo(uint32_t lcid, uint32_t type, char* buf, int size) override {
    LocaleHandle loc(OpenLocale(lcid));
    if (!loc) {
      errno = EINVAL;
      return 0;
    }
    std::optional<std::string> value = ReadValue(loc.get(), type & ~kIgnoredTypeFlags);
    if (!value) {
      errno = EINVAL;
      return 0;
    }
    return StoreLocaleValue(LocaleValueToCp1252(*value), buf, size);
  }
};

}  // namespace

LocaleProvider& SystemLocaleProvider() {
  static PosixLocaleProvider provider;
  return provider;
}

}  // namespace kelpdex::platform
