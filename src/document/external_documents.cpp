#include "document/external_documents.h"

#include "persist/document_file.h"
#include "platform/os.h"
#include "store/workbook.h"

namespace kelpdex {

namespace {

bool IsAbsolutePath(const std::string& path) {
  if (path.empty()) return false;
  if (path[0] == '/' || path[0] == '\\') return true;
  // A drive letter: "C:\..." or "C:/...".
  return path.size() > 2 && path[1] == ':' && (path[2] == '\\' || path[2] == '/');
}

std::unique_ptr<Workbook> ReadReadOnly(const std::string& path) {
  if (!platform::FileExists(path)) return nullptr;
  auto book = std::make_unique<Workbook>();
  NativeFileKind kind = NativeFileKind::kNone;
  ErrorCode error = err::kNone;
  // No password is asked for: a formula cannot stop to ask, so a protected file is unreadable.
  if (!ReadDocumentFile(path, *book, kind, error) || kind == NativeFileKind::kEmpty) return nullptr;
  book->fileName = path;
  book->readOnly = true;
  return book;
}

}  // namespace

std::unique_ptr<Workbook> NativeExternalDocuments::Open(const std::string& file,
                                                        const std::string& referrer) {
  std::string path = file;
  if (!IsAbsolutePath(file)) {
    std::string folder = platform::FolderOf(referrer);
    if (!folder.empty()) path = platform::JoinPath(folder, file);
  }
  if (auto book = ReadReadOnly(path)) return book;
  return ReadReadOnly(path + ".kpx");
}

void InstallExternalDocuments() {
  static NativeExternalDocuments documents;
  SetExternalDocuments(&documents);
}

}  // namespace kelpdex
