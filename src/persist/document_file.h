// A native document as a file: written so that a failed save never costs the previous file, and
// read by the kind its first bytes tell.
#pragma once

#include <cstdint>
#include <string>

#include "core/document_kind.h"
#include "core/error_code.h"
#include "persist/file_kind.h"
#include "persist/file_stream.h"
#include "platform/os.h"
#include "store/workbook.h"

namespace kelpdex {

// The side file that holds a document's long texts and files: the same path with ".tx2" in place
// of the extension.
std::string SideFilePath(const std::string& documentPath);

// A file written as a whole or not at all: the bytes go into a temporary file beside the target,
// which takes the target's place only at Commit, once it is on the disk. A writer dropped without
// a Commit (a failure, a cancelled export) removes its temporary file and leaves the target as it
// was. Refusals and permissions are those of WriteDocumentFile below.
class SafeFileWriter {
 public:
  SafeFileWriter() = default;
  ~SafeFileWriter() { Abandon(); }
  SafeFileWriter(const SafeFileWriter&) = delete;
  SafeFileWriter& operator=(const SafeFileWriter&) = delete;

  // False with `error` set when the target may not be replaced or the temporary file cannot be
  // made.
  bool Open(const std::string& path, bool compress, ErrorCode& error);
  FileStream& stream() { return stream_; }
  // Syncs and closes the temporary file, which keeps the old file's permissions; the target is
  // not touched yet. False with `error` set and the temporary file gone.
  bool Finish(ErrorCode& error);
  // Finishes if that is not done, then renames; false with `error` set, the target untouched.
  bool Commit(ErrorCode& error);
  void Abandon();

 private:
  bool finished_ = false;
  FileStream stream_;
  std::string target_;
  std::string temporary_;
  platform::ReplacedFile old_;
};

// Writes the document into a temporary file beside `path`, waits until it is on the disk, and
// only then puts it in the place of `path`. On failure the previous file stands as it was, no
// temporary file is left, and `error` says why. A format that is none of the four is plain XML.
// `place`, when given, says which cell was too long for an XML form (see WriteXmlDocument).
// A symbolic link is followed and stays; the new file takes the permissions, and where the
// process may, the owner and group of the one it replaces. A file this process may not write to
// is refused with 61, as is anything but a plain file; a folder gives 73.
bool WriteDocumentFile(const std::string& path, const Workbook& book, NativeFormat format,
                       ErrorCode& error, std::string* place = nullptr);
// WriteDocumentFile up to the rename: the new file is whole and on the disk beside `path`, and
// `writer.Commit` puts it in place. For a caller that must replace another file in the same
// moment, so that the two renames are all that stands between the old pair and the new one.
bool PrepareDocumentFile(const std::string& path, const Workbook& book, NativeFormat format,
                         SafeFileWriter& writer, ErrorCode& error, std::string* place = nullptr);

// Reads a native file into `book` by its kind. An empty file gives kind kEmpty and leaves the
// workbook alone: the caller makes a new database in it. `line` is set for XML failures.
// `password` opens a protected binary file (see ReadBinaryDocument); null for none.
bool ReadDocumentFile(const std::string& path, Workbook& book, NativeFileKind& kind,
                      ErrorCode& error, int* line = nullptr, const char* password = nullptr);

}  // namespace kelpdex
