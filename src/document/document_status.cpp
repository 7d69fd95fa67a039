#include "document/document_status.h"

#include <cstdio>

#include "core/strings.h"
#include "format/generic_date.h"
#include "persist/document_file.h"
#include "platform/os.h"

namespace kelpdex {

std::string WindowTitle(const Workbook& book, bool hasDocument) {
  std::string app = LoadStringText(str::kAppName);
  if (!hasDocument) return app;
  std::string name = book.fileName.empty() ? std::string(LoadStringText(str::kNewDatabase))
                                           : platform::FileNameOf(book.fileName);
  return name + " - " + app;
}

uint8_t EffectiveFormat(uint8_t fileFormat, uint8_t defaultFileFormat) {
  uint8_t format = fileFormat != 0 ? fileFormat : defaultFileFormat;
  // A settings file may hold anything; what cannot be written falls back to plain XML.
  return format >= native_format::kXml && format <= native_format::kBinaryCompressed
             ? format
             : native_format::kXml;
}

const char* FormatName(uint8_t openKind, uint8_t effectiveFormat) {
  static const char* const kNative[] = {"Xml", "Xml, compressed", "Binary", "Binary, compressed"};
  static const char* const kForeign[] = {"Text",    "Excel 2003 XML", "dBaseIII",
                                         "dBaseIV", "Foxpro",         "Clipper"};
  if (openKind == 0) return kNative[EffectiveFormat(effectiveFormat, 1) - 1];
  return openKind <= 6 ? kForeign[openKind - 1] : "";
}

std::string SizeText(uint64_t bytes, const LocaleSettings& locale) {
  char buf[64];
  if (bytes < 1024) {
    std::snprintf(buf, sizeof buf, "%d bytes", static_cast<int>(bytes));
    return buf;
  }
  bool megabytes = bytes >= 1024 * 1024;
  double value = static_cast<double>(bytes) / (megabytes ? 1024.0 * 1024.0 : 1024.0);
  std::snprintf(buf, sizeof buf, "%.2f", value);
  std::string number = buf;
  for (char& c : number) {
    if (c == '.') c = locale.decimalSeparator;
  }
  return number + (megabytes ? " MB" : " KB");
}

DocumentSizes MeasureDocument(const std::string& fileName) {
  DocumentSizes sizes;
  if (fileName.empty()) return sizes;
  sizes.document = platform::GetFileSize(fileName, sizes.documentBytes);
  sizes.sideFile = platform::GetFileSize(SideFilePath(fileName), sizes.sideFileBytes);
  return sizes;
}

std::string LocalDateTimeText(const std::string& genericDateTime, const LocaleSettings& locale) {
  DateTimeRecord at;
  if (!ParseGenericDate(genericDateTime, at) || !at.hasDate) return genericDateTime;
  char date[48];
  char d = locale.dateSeparator;
  // The short forms of the three date orders, as the regional settings usually give them.
  if (locale.dateOrder == 0) {
    std::snprintf(date, sizeof date, "%d%c%d%c%04d", at.month, d, at.day, d, at.year);
  } else if (locale.dateOrder == 1) {
    std::snprintf(date, sizeof date, "%02d%c%02d%c%04d", at.day, d, at.month, d, at.year);
  } else {
    std::snprintf(date, sizeof date, "%04d%c%02d%c%02d", at.year, d, at.month, d, at.day);
  }
  if (!at.hasTime) return date;
  char time[32];
  char t = locale.timeSeparator;
  std::snprintf(time, sizeof time, "%02d%c%02d%c%02d", at.hour, t, at.minute, t, at.second);
  return std::string(date) + " " + time;
}

std::string DocumentStatusText(const Workbook& book, uint8_t defaultFileFormat,
                               const DocumentSizes& sizes, const LocaleSettings& locale) {
  std::string text = "Format: ";
  text += FormatName(book.openKind, EffectiveFormat(book.fileFormat, defaultFileFormat));
  bool sizeShown = book.openKind == 0 || book.openKind == 2;
  if (sizeShown && sizes.document) {
    text += ";    Size: ";
    if (sizes.sideFile) {
      // The whole that a copy of the database takes, then the document file's own part.
      text += SizeText(sizes.documentBytes + sizes.sideFileBytes, locale);
      text += " (" + SizeText(sizes.documentBytes, locale) + ")";
    } else {
      text += SizeText(sizes.documentBytes, locale);
    }
  }
  if (sizeShown && !book.lastSavedAt.empty()) {
    text += ";    Last saved: " + LocalDateTimeText(book.lastSavedAt, locale) + " by " +
            book.lastSavedBy;
  }
  return text;
}

}  // namespace kelpdex
