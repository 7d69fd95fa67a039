#include "persist/document_file.h"

#include "persist/binary_format.h"
#include "persist/native_xml.h"
#include "platform/os.h"

namespace kelpdex {

namespace {

// Beside the document, so that the final rename stays within one file system.
std::string TemporaryPath(const std::string& path) {
  std::string folder = platform::FolderOf(path);
  std::string name = "." + platform::FileNameOf(path) + ".saving";
  return folder.empty() ? name : platform::JoinPath(folder, name);
}

}  // namespace

std::string SideFilePath(const std::string& documentPath) {
  size_t nameStart = documentPath.size() - platform::FileNameOf(documentPath).size();
  size_t dot = documentPath.rfind('.');
  // A dot in a folder's name, or one that starts a hidden file's name, is no extension.
  if (dot == std::string::npos || dot <= nameStart) return documentPath + ".tx2";
  return documentPath.substr(0, dot) + ".tx2";
}

bool WriteDocumentFile(const std::string& path, const Workbook& book, NativeFormat format,
                       ErrorCode& error, std::string* place) {
  format = WritableFormat(format);
  // A link stays a link: the new file goes where it points, beside the real document.
  std::string target = platform::ResolveLinks(path);
  platform::ReplacedFile old;
  if (target.empty() || !platform::InspectReplacedFile(target, old)) {
    error = err::kFileOpenWrite;
    return false;
  }
  if (old.folder) {
    error = err::kFolderPath;
    return false;
  }
  // A file the user may not write to is not replaced behind his back, and neither is a device
  // or a pipe: the rename would put a plain file in its place.
  if (old.exists && (!old.writable || !old.regular)) {
    error = err::kFileOpenWrite;
    return false;
  }
  std::string temporary = TemporaryPath(target);
  // A temporary file left by a save that was killed half-way is ours to take.
  platform::DeleteFile(temporary);
  if (old.exists && !platform::CreatePrivateFile(temporary, old)) {
    error = err::kFileOpenWrite;
    return false;
  }
  FileStream stream;
  bool ok = stream.Open(temporary, StreamMode::kWrite, IsCompressedFormat(format));
  if (ok) {
    ok = IsXmlFormat(format) ? WriteXmlDocument(stream, book, place)
                             : WriteBinaryDocument(stream, book);
  }
  // Everything must be on the disk before the old file goes.
  ok = ok && stream.Sync();
  bool closed = stream.Close();
  error = stream.error();
  // The new file keeps what the user had set on the old one: who may read it, and who owns it.
  bool kept = !old.exists || platform::TakeOverPermissions(temporary, old);
  if (!ok || !closed || !kept) {
    if (error == err::kNone) error = err::kFileWrite;
    platform::DeleteFile(temporary);
    return false;
  }
  if (!platform::ReplaceFile(temporary, target)) {
    platform::DeleteFile(temporary);
    error = err::kFileWrite;
    return false;
  }
  // The rename itself is made durable by syncing the folder that holds it.
  std::string folder = platform::FolderOf(target);
  platform::SyncFile(folder.empty() ? "." : folder);
  error = err::kNone;
  return true;
}

bool ReadDocumentFile(const std::string& path, Workbook& book, NativeFileKind& kind,
                      ErrorCode& error, int* line, const char* password) {
  if (line != nullptr) *line = 0;
  ProtectionMode protection;
  if (!SniffFile(path, kind, protection, error)) return false;
  if (kind == NativeFileKind::kEmpty) return true;
  if (kind == NativeFileKind::kOlderDatabase) {
    error = err::kInvalidBinaryFormat;  // the single-table form of old is not read
    return false;
  }
  FileStream stream;
  bool compressed =
      kind == NativeFileKind::kXmlCompressed || kind == NativeFileKind::kBinaryCompressed;
  if (!stream.Open(path, StreamMode::kRead, compressed)) {
    error = stream.error();
    return false;
  }
  bool ok = kind == NativeFileKind::kXml || kind == NativeFileKind::kXmlCompressed
                ? ReadXmlDocument(stream, book, line)
                : ReadBinaryDocument(stream, book, password, path);
  error = ok ? err::kNone : book.errorCode;
  return ok;
}

}  // namespace kelpdex
