#include "core/document_kind.h"

#include "core/session_settings.h"
#include "text/code_page.h"

namespace kelpdex {

DocumentKind KindOfSaveFilter(FileFilter filter) {
  switch (filter) {
    case FileFilter::kDefault:
    case FileFilter::kNative:
      return DocumentKind::kNative;
    case FileFilter::kText:
      return DocumentKind::kText;
    case FileFilter::kExcelXml:
      return DocumentKind::kExcelXml;
    case FileFilter::kDbase3:
      return DocumentKind::kDbase3;
    case FileFilter::kDbase4:
      return DocumentKind::kDbase4;
    case FileFilter::kFoxPro:
      return DocumentKind::kFoxPro;
    case FileFilter::kClipper:
      return DocumentKind::kClipper;
    case FileFilter::kSqlite:
      return DocumentKind::kSqlite;
  }
  return DocumentKind::kNative;
}

DocumentKind KindOfOpenFilter(FileFilter filter, std::string_view path) {
  if (filter == FileFilter::kDefault || filter == FileFilter::kNative) return GuessFormat(path);
  return KindOfSaveFilter(filter);
}

FileFilter SaveFilterOfKind(DocumentKind kind) {
  switch (kind) {
    case DocumentKind::kNative:
      return FileFilter::kNative;
    case DocumentKind::kText:
      return FileFilter::kText;
    case DocumentKind::kExcelXml:
      return FileFilter::kExcelXml;
    case DocumentKind::kDbase3:
      return FileFilter::kDbase3;
    case DocumentKind::kDbase4:
      return FileFilter::kDbase4;
    case DocumentKind::kFoxPro:
      return FileFilter::kFoxPro;
    case DocumentKind::kClipper:
      return FileFilter::kClipper;
    case DocumentKind::kSqlite:
      return FileFilter::kSqlite;
  }
  return FileFilter::kNative;
}

DocumentKind GuessFormat(std::string_view path) {
  for (std::string_view sqlite : {std::string_view(".sqlite"), std::string_view(".db")}) {
    if (path.size() > sqlite.size() &&
        text::EqualNoCase(path.substr(path.size() - sqlite.size()), sqlite)) {
      return DocumentKind::kSqlite;
    }
  }
  // The last four characters, compared upper-cased with the known extensions.
  if (path.size() < 4) return DocumentKind::kNative;
  std::string_view tail = path.substr(path.size() - 4);
  struct Known {
    const char* extension;
    DocumentKind kind;
  };
  static constexpr Known kKnown[] = {
      {".KPX", DocumentKind::kNative},   {".TXT", DocumentKind::kText},
      {".CSV", DocumentKind::kText},     {".TSV", DocumentKind::kText},
      {".XML", DocumentKind::kExcelXml}, {".DBF", DocumentKind::kDbase4}};
  for (const Known& k : kKnown) {
    if (text::EqualNoCase(tail, k.extension)) return k.kind;
  }
  return DocumentKind::kNative;
}

TimerAction AutoTimerAction(const SessionSettings& settings, bool modified, bool hasFile,
                            double minutesSinceSave, double minutesIdle) {
  if (settings.autoCloseMinutes > 0 && minutesIdle >= settings.autoCloseMinutes) {
    if (!modified) return TimerAction::kClose;
    if (hasFile) return TimerAction::kSaveAndClose;
  }
  if (settings.autoSaveMinutes > 0 && modified && hasFile &&
      minutesSinceSave >= settings.autoSaveMinutes) {
    return TimerAction::kSave;
  }
  return TimerAction::kNone;
}

}  // namespace kelpdex
