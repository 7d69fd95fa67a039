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

bool SafeFileWriter::Open(const std::string& path, bool compress, ErrorCode& error) {
  Abandon();
  // A link stays a link: the new file goes where it points, beside the real document.
  target_ = platform::ResolveLinks(path);
  old_ = platform::ReplacedFile();
  if (target_.empty() || !platform::InspectReplacedFile(target_, old_)) {
    error = err::kFileOpenWrite;
    return false;
  }
  if (old_.folder) {
    error = err::kFolderPath;
    return false;
  }
  // A file the user may not write to is not replaced behind his back, and neither is a device
  // or a pipe: the rename would put a plain file in its place.
  if (old_.exists && (!old_.writable || !old_.regular)) {
    error = err::kFileOpenWrite;
    return false;
  }
  std::string temporary = TemporaryPath(target_);
  // A temporary file left by a save that was killed half-way is ours to take.
  platform::DeleteFile(temporary);
  if (old_.exists && !platform::CreatePrivateFile(temporary, old_)) {
    error = err::kFileOpenWrite;
    return false;
  }
  temporary_ = temporary;
  finished_ = false;
  if (!stream_.Open(temporary_, StreamMode::kWrite, compress)) {
    error = stream_.error();
    Abandon();
    return false;
  }
  return true;
}

bool SafeFileWriter::Finish(ErrorCode& error) {
  if (temporary_.empty()) {
    error = err::kFileWrite;
    return false;
  }
  if (finished_) return true;
  // Everything must be on the disk before the old file goes.
  bool ok = stream_.ok() && stream_.Sync();
  bool closed = stream_.Close();
  error = stream_.error();
  // The new file keeps what the user had set on the old one: who may read it, and who owns it.
  bool kept = !old_.exists || platform::TakeOverPermissions(temporary_, old_);
  if (!ok || !closed || !kept) {
    if (error == err::kNone) error = err::kFileWrite;
    Abandon();
    return false;
  }
  finished_ = true;
  return true;
}

bool SafeFileWriter::Commit(ErrorCode& error) {
  if (!Finish(error)) return false;
  if (!platform::ReplaceFile(temporary_, target_)) {
    Abandon();
    error = err::kFileWrite;
    return false;
  }
  temporary_.clear();
  finished_ = false;
  // The rename itself is made durable by syncing the folder that holds it.
  std::string folder = platform::FolderOf(target_);
  platform::SyncFile(folder.empty() ? "." : folder);
  error = err::kNone;
  return true;
}

void SafeFileWriter::Abandon() {
  if (stream_.isOpen()) stream_.Close();
  if (!temporary_.empty()) platform::DeleteFile(temporary_);
  temporary_.clear();
  finished_ = false;
}

bool PrepareDocumentFile(const std::string& path, const Workbook& book, NativeFormat format,
                         SafeFileWriter& writer, ErrorCode& error, std::string* place) {
  format = WritableFormat(format);
  if (!writer.Open(path, IsCompressedFormat(format), error)) return false;
  FileStream& stream = writer.stream();
  bool ok = IsXmlFormat(format) ? WriteXmlDocument(stream, book, place)
                                : WriteBinaryDocument(stream, book);
  if (!ok) {
    error = stream.error() != err::kNone ? stream.error() : err::kFileWrite;
    writer.Abandon();
    return false;
  }
  return writer.Finish(error);
}

bool WriteDocumentFile(const std::string& path, const Workbook& book, NativeFormat format,
                       ErrorCode& error, std::string* place) {
  SafeFileWriter writer;
  return PrepareDocumentFile(path, book, format, writer, error, place) && writer.Commit(error);
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
