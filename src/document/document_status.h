// What the frame shows about the document: the window title and the status pane's format, size
// and "Last saved" text.
#pragma once

#include <cstdint>
#include <string>

#include "core/locale_settings.h"
#include "store/workbook.h"

namespace kelpdex {

// "Kelpdex" with no document; else the file's name (or "New Database") and the application's name.
std::string WindowTitle(const Workbook& book, bool hasDocument);

// The native form a save writes: the document's own, or else the default one.
NativeFormat EffectiveFormat(NativeFormat fileFormat, NativeFormat defaultFileFormat);

// "Xml", "Binary, compressed", "Text", "dBaseIV" and so on.
const char* FormatName(DocumentKind openKind, NativeFormat effectiveFormat);

// "%d bytes", "%s KB" or "%s MB", the last two with two decimals in the locale's separator.
std::string SizeText(uint64_t bytes, const LocaleSettings& locale);

// The file sizes the status text reports; `sideFile` is false when there is none.
struct DocumentSizes {
  bool document = false;
  uint64_t documentBytes = 0;
  bool sideFile = false;
  uint64_t sideFileBytes = 0;
};
DocumentSizes MeasureDocument(const std::string& fileName);

// The first pane's text: the format, the size, and who saved the document last and when.
std::string DocumentStatusText(const Workbook& book, NativeFormat defaultFileFormat,
                               const DocumentSizes& sizes, const LocaleSettings& locale);

// A generic date and time text shown in the locale's short date and time.
std::string LocalDateTimeText(const std::string& genericDateTime, const LocaleSettings& locale);

}  // namespace kelpdex
