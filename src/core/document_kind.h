// How a document is kept on disk and what the lifecycle decides from a file name and the clock:
// the kind of file to open, the native form to write, the file dialogs' filters, and what the
// frame's timer should do about AutoSave and AutoClose.
#pragma once

#include <cstdint>
#include <string_view>

namespace kelpdex {

struct SessionSettings;

// How a document came and how a save writes it again. The values are the document's `openKind`.
enum class DocumentKind : uint8_t {
  kNative = 0,
  kText = 1,
  kExcelXml = 2,  // Excel 2003 XML
  kDbase3 = 3,
  kDbase4 = 4,
  kFoxPro = 5,
  kClipper = 6,
  kSqlite = 7,  // an SQLite database file
};

// The native forms by the numbers the File Format menu and the settings use; kDefault leaves the
// choice to the session's default form.
enum class NativeFormat : uint8_t {
  kDefault = 0,
  kXml = 1,
  kXmlCompressed = 2,
  kBinary = 3,
  kBinaryCompressed = 4,
};

// One of the four forms a native file can be written in.
constexpr bool IsWritableFormat(NativeFormat format) {
  return format >= NativeFormat::kXml && format <= NativeFormat::kBinaryCompressed;
}
// What a save writes for a form read from anywhere: one of the four, else plain XML.
constexpr NativeFormat WritableFormat(NativeFormat format) {
  return IsWritableFormat(format) ? format : NativeFormat::kXml;
}
constexpr bool IsXmlFormat(NativeFormat format) {
  return format == NativeFormat::kXml || format == NativeFormat::kXmlCompressed;
}
constexpr bool IsCompressedFormat(NativeFormat format) {
  return format == NativeFormat::kXmlCompressed || format == NativeFormat::kBinaryCompressed;
}
// The form of the settings file's two flags.
constexpr NativeFormat NativeFormatOf(bool xml, bool compressed) {
  if (xml) return compressed ? NativeFormat::kXmlCompressed : NativeFormat::kXml;
  return compressed ? NativeFormat::kBinaryCompressed : NativeFormat::kBinary;
}

// The Open and Save As dialogs' filters, by their position in the dialog's list. The first two
// both stand for the native form; on Open they let the extension decide the kind.
enum class FileFilter : uint8_t {
  kDefault = 0,
  kNative = 1,
  kText = 2,
  kExcelXml = 3,
  kDbase3 = 4,
  kDbase4 = 5,
  kFoxPro = 6,
  kClipper = 7,
  kSqlite = 8,
};

// The kind a save writes for a filter; a filter past the list is native.
DocumentKind KindOfSaveFilter(FileFilter filter);
// The kind an open reads for a filter and the file chosen with it.
DocumentKind KindOfOpenFilter(FileFilter filter, std::string_view path);
// The filter the Save As dialog starts with for a document of this kind.
FileFilter SaveFilterOfKind(DocumentKind kind);

// By the extension, without regard to case: ".kpx" native, ".txt", ".csv", ".tsv" text, ".xml"
// Excel, ".dbf" dBase IV (the xBase reader corrects the dialect from the file's header), ".sqlite"
// and ".db" SQLite; anything else is opened as native.
DocumentKind GuessFormat(std::string_view path);

enum class TimerAction { kNone, kSave, kClose, kSaveAndClose };

// The timer's decision. AutoSave saves a modified document that has a file once the minutes since
// its last save have run out; AutoClose closes after that many idle minutes, saving first where
// the document is modified. A modified document without a file is never closed by the timer:
// that would lose the user's work.
TimerAction AutoTimerAction(const SessionSettings& settings, bool modified, bool hasFile,
                            double minutesSinceSave, double minutesIdle);

}  // namespace kelpdex
