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

NativeFormat EffectiveFormat(NativeFormat fileFormat, NativeFormat defaultFileFormat) {
  // A settings file may hold anything; what cannot be written falls back to plain XML.
  return WritableFormat(fileFormat != NativeFormat::kDefault ? fileFormat : defaultFileFormat);
}

const char* FormatName(DocumentKind openKind, NativeFormat effectiveFormat) {
  switch (openKind) {
    case DocumentKind::kNative:
      switch (EffectiveFormat(effectiveFormat, NativeFormat::kXml)) {
        case NativeFormat::kXmlCompressed:
          return "Xml, compressed";
        case NativeFormat::kBinary:
          return "Binary";
        case NativeFormat::kBinaryCompressed:
          return "Binary, compressed";
        default:
          return "Xml";
      }
    case DocumentKind::kText:
      return "Text";
    case DocumentKind::kExcelXml:
      return "Excel 2003 XML";
    case DocumentKind::kDbase3:
      return "dBaseIII";
    case DocumentKind::kDbase4:
      return "dBaseIV";
    case DocumentKind::kFoxPro:
      return "Foxpro";
    case DocumentKind::kClipper:
      return "Clipper";
    case DocumentKind::kSqlite:
      return "SQLite";
  }
  return "";
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

std::string DocumentStatusText(const Workbook& book, NativeFormat defaultFileFormat,
                               const DocumentSizes& sizes, const LocaleSettings& locale) {
  std::string text = "Format: ";
  text += FormatName(book.openKind, EffectiveFormat(book.fileFormat, defaultFileFormat));
  bool sizeShown =
      book.openKind == DocumentKind::kNative || book.openKind == DocumentKind::kExcelXml;
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
