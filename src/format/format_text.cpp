#include "format/format_text.h"

#include <cstring>
#include <memory>

#include "format/date_names.h"
#include "format/format_number.h"
#include "format/text_writer.h"

namespace kelpdex {

namespace {

void PutName(TextWriter& w, const char* name) {
  w.Put(std::string_view(name, std::strlen(name)));
}

bool RenderSection(std::string_view text, const DateTimeRecord* record, const CompiledFormat& f,
                   int section, TextWriter& w, const LocaleSettings* settings) {
  const FormatSection& s = f.sections[section];
  if (record != nullptr && !record->hasDate &&
      (s.kinds & (item::kYear | item::kMonth | item::kDay))) {
    return false;
  }
  const DateNames& names = DateNamesFor(settings);
  DateTimeRecord zero;
  const DateTimeRecord& r = record != nullptr ? *record : zero;
  int fractionDigit = 0;
  for (int at = s.first; at < s.first + s.count; ++at) {
    const FormatItem& it = f.items[at];
    int count = static_cast<unsigned char>(it.ch);
    switch (it.kind) {
      case item::kYear:
        if (count == 4) {
          w.Unsigned(static_cast<unsigned>(r.year), 4);
        } else {
          w.Unsigned(static_cast<unsigned>(r.year % 100), 2);
        }
        break;
      case item::kMonth:
        if (count <= 2) {
          w.Unsigned(static_cast<unsigned>(r.month), count);
        } else if (count == 3) {
          PutName(w, names.shortMonths[r.month - 1]);
        } else if (count == 4) {
          PutName(w, names.months[r.month - 1]);
        } else {
          w.Put(names.months[r.month - 1][0]);
        }
        break;
      case item::kDay:
        if (count <= 2) {
          w.Unsigned(static_cast<unsigned>(r.day), count);
        } else {
          int d = r.dayOfWeek >= 1 && r.dayOfWeek <= 7 ? r.dayOfWeek - 1 : 0;
          PutName(w, count == 3 ? names.shortDays[d] : names.days[d]);
        }
        break;
      case item::kHour: {
        int h = r.hour;
        if (s.twelveHour) h = h % 12 == 0 ? 12 : h % 12;
        w.Unsigned(static_cast<unsigned>(h), count);
        break;
      }
      case item::kHour | item::kElapsed:
        w.Unsigned(static_cast<unsigned>(r.hour), count);
        break;
      case item::kMinute:
        w.Unsigned(static_cast<unsigned>(r.minute), count);
        break;
      case item::kMinute | item::kElapsed:
        w.Unsigned(static_cast<unsigned>(r.hour * 60 + r.minute), count);
        break;
      case item::kSecond:
        w.Unsigned(static_cast<unsigned>(r.second), count);
        break;
      case item::kSecond | item::kElapsed:
        w.Unsigned(static_cast<unsigned>((r.hour * 60 + r.minute) * 60 + r.second), count);
        break;
      case item::kSecondFraction:
        if (it.ch != '0') {
          w.Put(it.ch);  // the point
        } else {
          static const int kScale[3] = {100, 10, 1};
          int digit = fractionDigit < 3 ? (r.millisecond / kScale[fractionDigit]) % 10 : 0;
          ++fractionDigit;
          w.Put(static_cast<char>('0' + digit));
        }
        break;
      case item::kAmPm: {
        bool pm = r.hour >= 12;
        if (count == 5) {
          PutName(w, pm ? names.pm : names.am);
        } else {
          w.Put(pm ? 'P' : 'A');
        }
        break;
      }
      case item::kText:
      case item::kGeneral:
        w.Put(text);
        break;
      case item::kBlank:
        w.Put(' ');
        break;
      case item::kPercent:
        w.Put('%');
        break;
      case item::kFill:
        break;
      default:
        if (it.kind & item::kNumberTokens) {
          // a digit placeholder in a text section shows nothing of the text
        } else {
          w.Put(it.ch);
        }
        break;
    }
  }
  return true;
}

}  // namespace

bool FormatDate(const DateTimeRecord& record, const CompiledFormat& format, int section, char* out,
                size_t* length, const LocaleSettings* settings) {
  TextWriter w(out, kDisplayTextMax);
  if (length != nullptr) *length = 0;
  if (section < 0 || section >= format.sectionCount) return false;
  if (!RenderSection(std::string_view(), &record, format, section, w, settings)) return false;
  if (length != nullptr) *length = w.length();
  return true;
}

bool FormatText(std::string_view text, const CompiledFormat& format, char* out, size_t* length,
                const LocaleSettings* settings) {
  TextWriter w(out, kDisplayTextMax);
  if (length != nullptr) *length = 0;
  if (format.sectionCount == 0 || format.overflow) return false;
  // A text that is a generic date goes to the first date section.
  for (int s = 0; s < format.sectionCount; ++s) {
    if (!(format.sections[s].kinds & item::kDateTokens)) continue;
    DateTimeRecord record;
    if (!ParseGenericDate(text, record)) break;
    if (!RenderSection(text, &record, format, s, w, settings)) return false;
    if (length != nullptr) *length = w.length();
    return true;
  }
  int section = format.TextSection();
  if (section < 0) return false;
  if (!RenderSection(text, nullptr, format, section, w, settings)) return false;
  if (length != nullptr) *length = w.length();
  return true;
}

bool FormatText(std::string_view text, std::string_view formatText, char* out, size_t* length,
                const LocaleSettings* settings) {
  auto compiled = std::make_unique<CompiledFormat>();
  if (!ParseFormatString(formatText, *compiled, settings)) return false;
  return FormatText(text, *compiled, out, length, settings);
}

std::string FormatText(std::string_view text, std::string_view formatText,
                       const LocaleSettings* settings) {
  char buf[kDisplayTextMax];
  size_t n = 0;
  if (!FormatText(text, formatText, buf, &n, settings)) return std::string(text);
  return std::string(buf, n);
}

}  // namespace kelpdex
