#include "views/frame/qt_locale_provider.h"

#include <QLocale>
#include <optional>

#include "platform/locale_table.h"
#include "platform/locale_value.h"

namespace kelpdex::views {

namespace {

using namespace platform;

std::optional<QLocale> LocaleOf(uint32_t lcid) {
  if (lcid == kLocaleUserDefault || lcid == kLocaleSystemDefault) return QLocale::system();
  const char* name = PosixLocaleName(lcid);
  if (name == nullptr) return std::nullopt;
  QLocale locale(QString::fromLatin1(name));
  if (locale.language() == QLocale::C) return std::nullopt;
  return locale;
}

// The first character of a format that is no letter: the separator it uses.
QString SeparatorIn(const QString& format, const char* fallback) {
  for (QChar c : format) {
    if (!c.isLetter() && c != '\'') return QString(c);
  }
  return QString::fromLatin1(fallback);
}

// 0 month first, 1 day first, 2 year first.
QString OrderOf(const QString& format) {
  for (QChar c : format) {
    if (c == 'M') return "0";
    if (c == 'd') return "1";
    if (c == 'y') return "2";
  }
  return "0";
}

std::optional<QString> ValueOf(const QLocale& l, uint32_t type) {
  if (type >= kLocaleSDayName1 && type < kLocaleSDayName1 + 7) {
    return l.dayName(static_cast<int>(type - kLocaleSDayName1) + 1, QLocale::LongFormat);
  }
  if (type >= kLocaleSAbbrevDayName1 && type < kLocaleSAbbrevDayName1 + 7) {
    return l.dayName(static_cast<int>(type - kLocaleSAbbrevDayName1) + 1, QLocale::ShortFormat);
  }
  if (type >= kLocaleSMonthName1 && type < kLocaleSMonthName1 + 12) {
    return l.monthName(static_cast<int>(type - kLocaleSMonthName1) + 1, QLocale::LongFormat);
  }
  if (type >= kLocaleSAbbrevMonthName1 && type < kLocaleSAbbrevMonthName1 + 12) {
    return l.monthName(static_cast<int>(type - kLocaleSAbbrevMonthName1) + 1, QLocale::ShortFormat);
  }
  switch (type) {
    case kLocaleSDecimal:
      return l.decimalPoint();
    case kLocaleSThousand:
      return l.groupSeparator();
    case kLocaleSList:
      return l.decimalPoint() == "," ? QString(";") : QString(",");
    case kLocaleSCurrency:
      return l.currencySymbol();
    case kLocaleSDate:
      return SeparatorIn(l.dateFormat(QLocale::ShortFormat), "/");
    case kLocaleSTime:
      return SeparatorIn(l.timeFormat(QLocale::ShortFormat), ":");
    case kLocaleSShortDate:
      return l.dateFormat(QLocale::ShortFormat);
    case kLocaleSLongDate:
      return l.dateFormat(QLocale::LongFormat);
    case kLocaleIDate:
      return OrderOf(l.dateFormat(QLocale::ShortFormat));
    case kLocaleILDate:
      return OrderOf(l.dateFormat(QLocale::LongFormat));
    case kLocaleS1159:
      return l.amText();
    case kLocaleS2359:
      return l.pmText();
    case kLocaleSTimeFormat:
      return l.timeFormat(QLocale::LongFormat);
    default:
      return std::nullopt;
  }
}

}  // namespace

bool QtLocaleProvider::IsValidLocale(uint32_t lcid) {
  return LocaleOf(lcid).has_value();
}

int QtLocaleProvider::GetLocaleInfo(uint32_t lcid, uint32_t type, char* buf, int size) {
  std::optional<QLocale> locale = LocaleOf(lcid);
  if (!locale) return 0;
  // The flags Windows adds to a type (no user override, return number) change nothing here.
  std::optional<QString> value = ValueOf(*locale, type & ~0xC0000000u);
  if (!value) return 0;
  return StoreLocaleValue(LocaleValueToCp1252(value->toStdString()), buf, size);
}

}  // namespace kelpdex::views
