#ifdef _WIN32

#ifndef WIN32_LEAN_AND_MEAN
#define WIN32_LEAN_AND_MEAN
#endif
#ifndef NOMINMAX
#define NOMINMAX
#endif
#include <shlobj.h>
#include <windows.h>
// The ANSI/Unicode switches of windows.h would rename Kelpdex's own functions.
#undef CopyFile
#undef DeleteFile
#undef ReplaceFile

#include <algorithm>
#include <mutex>

#include "platform/os.h"

namespace kelpdex::platform {

namespace {

bool IsSeparator(char c) {
  return c == '\\' || c == '/';
}

size_t LastSeparator(std::string_view path) {
  return path.find_last_of("\\/");
}

std::string SpecialFolder(int csidl) {
  char path[MAX_PATH] = {};
  if (!SHGetSpecialFolderPathA(nullptr, path, csidl, FALSE)) return "";
  return path;
}

std::string EnvironmentValue(const char* name) {
  DWORD length = GetEnvironmentVariableA(name, nullptr, 0);
  if (length == 0) return "";
  std::string value(length, '\0');
  length = GetEnvironmentVariableA(name, value.data(), length);
  value.resize(length);
  return value;
}

std::string Utf8Of(const wchar_t* wide, int length) {
  if (length <= 0) return "";
  int size = WideCharToMultiByte(CP_UTF8, 0, wide, length, nullptr, 0, nullptr, nullptr);
  if (size <= 0) return "";
  std::string utf8(static_cast<size_t>(size), '\0');
  WideCharToMultiByte(CP_UTF8, 0, wide, length, utf8.data(), size, nullptr, nullptr);
  return utf8;
}

// Runs `action` keeping the error of the step that failed before it.
template <typename Action>
void KeepingLastError(Action action) {
  DWORD saved = GetLastError();
  action();
  SetLastError(saved);
}

bool WriteAll(HANDLE file, std::string_view bytes) {
  while (!bytes.empty()) {
    DWORD chunk = bytes.size() > 0x40000000u ? 0x40000000u : static_cast<DWORD>(bytes.size());
    DWORD written = 0;
    if (!WriteFile(file, bytes.data(), chunk, &written, nullptr)) return false;
    bytes.remove_prefix(written);
  }
  return true;
}

// An in-use lock of this process: the handle whose share mode keeps other writers out, and the
// path it was taken on, so that a save of that path can let it step aside.
struct HeldLock {
  HANDLE handle;
  std::string path;
};

std::mutex& HeldLocksMutex() {
  static std::mutex mutex;
  return mutex;
}

std::vector<HeldLock*>& HeldLocks() {
  static std::vector<HeldLock*> held;
  return held;
}

// The share mode is the lock: a handle with write access that lets others only read (and
// rename over the file, as the safe save does) makes every further open for writing, the next
// Kelpdex's included, fail with a sharing violation. Readers pass.
HANDLE OpenLockHandle(const std::string& path) {
  constexpr DWORD kShare = FILE_SHARE_READ | FILE_SHARE_DELETE;
  HANDLE h = ::CreateFileA(path.c_str(), GENERIC_READ | GENERIC_WRITE, kShare, nullptr,
                           OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr);
  if (h == INVALID_HANDLE_VALUE && ::GetLastError() == ERROR_ACCESS_DENIED) {
    // A read-only file: nobody saves over it, so a read handle that keeps writers out will do.
    h = ::CreateFileA(path.c_str(), GENERIC_READ, kShare, nullptr, OPEN_EXISTING,
                      FILE_ATTRIBUTE_NORMAL, nullptr);
  }
  return h;
}

bool FileIdentity(const std::string& path, BY_HANDLE_FILE_INFORMATION& info) {
  // No access asked for: a file another program holds open still tells who it is.
  HANDLE h = ::CreateFileA(path.c_str(), 0, FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE,
                           nullptr, OPEN_EXISTING, FILE_FLAG_BACKUP_SEMANTICS, nullptr);
  if (h == INVALID_HANDLE_VALUE) return false;
  bool ok = ::GetFileInformationByHandle(h, &info) != FALSE;
  ::CloseHandle(h);
  return ok;
}

}  // namespace

std::string UserName() {
  char name[257] = {};  // UNLEN + 1
  DWORD size = sizeof name;
  if (!GetUserNameA(name, &size)) return "";
  return name;
}

LocalTime GetLocalTime() {
  SYSTEMTIME now = {};
  ::GetLocalTime(&now);
  LocalTime t;
  t.year = now.wYear;
  t.month = now.wMonth;
  t.dayOfWeek = now.wDayOfWeek;
  t.day = now.wDay;
  t.hour = now.wHour;
  t.minute = now.wMinute;
  t.second = now.wSecond;
  t.milliseconds = now.wMilliseconds;
  return t;
}

std::string TempFolder() {
  char path[MAX_PATH + 1] = {};
  DWORD length = GetTempPathA(sizeof path, path);
  std::string folder = length == 0 || length > MAX_PATH ? "C:\\Temp" : std::string(path, length);
  // "C:\" keeps its separator: without it the text would name the current folder of drive C.
  while (folder.size() > 3 && IsSeparator(folder.back())) folder.pop_back();
  return folder;
}

std::string UserSettingsFolder() {
  // The local, not the roaming, application data: window places and recent files belong to
  // this machine.
  std::string appData = SpecialFolder(CSIDL_LOCAL_APPDATA);
  if (appData.empty()) return "";
  return JoinPath(appData, "Kelpdex");
}

std::string UserDataFolder() {
  return SpecialFolder(CSIDL_LOCAL_APPDATA);
}

std::string ExecutablePath() {
  std::string path(MAX_PATH, '\0');
  for (;;) {
    DWORD length = GetModuleFileNameA(nullptr, path.data(), static_cast<DWORD>(path.size()));
    if (length == 0) return "";
    if (length < path.size()) {
      path.resize(length);
      return path;
    }
    path.resize(path.size() * 2);
  }
}

std::vector<std::string> SystemPrefixes() {
  // A 32-bit process is told "Program Files (x86)" for both CSIDLs on 64-bit Windows; the
  // 64-bit folder is only named by ProgramW6432.
  std::vector<std::string> prefixes;
  for (std::string folder :
       {SpecialFolder(CSIDL_PROGRAM_FILES), SpecialFolder(CSIDL_PROGRAM_FILESX86),
        EnvironmentValue("ProgramW6432")}) {
    if (folder.empty()) continue;
    if (!IsSeparator(folder.back())) folder += '\\';
    bool known = false;
    for (const std::string& prefix : prefixes) {
      known = known || CompareStringA(LOCALE_INVARIANT, NORM_IGNORECASE, prefix.c_str(), -1,
                                      folder.c_str(), -1) == CSTR_EQUAL;
    }
    if (!known) prefixes.push_back(folder);
  }
  return prefixes;
}

std::string FolderOf(std::string_view path) {
  size_t separator = LastSeparator(path);
  if (separator == std::string_view::npos) return "";
  // The root keeps its separator: "\" and "C:\".
  if (separator == 0 || (separator == 2 && path[1] == ':')) {
    return std::string(path.substr(0, separator + 1));
  }
  return std::string(path.substr(0, separator));
}

std::string FileNameOf(std::string_view path) {
  size_t separator = LastSeparator(path);
  return std::string(separator == std::string_view::npos ? path : path.substr(separator + 1));
}

std::string JoinPath(std::string_view folder, std::string_view name) {
  std::string joined(folder);
  if (!joined.empty() && !IsSeparator(joined.back()) && joined.back() != ':') joined += '\\';
  joined += name;
  return joined;
}

bool FileExists(const std::string& path) {
  DWORD attributes = GetFileAttributesA(path.c_str());
  return attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_DIRECTORY) == 0;
}

bool FolderExists(const std::string& path) {
  DWORD attributes = GetFileAttributesA(path.c_str());
  return attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_DIRECTORY) != 0;
}

bool GetFileSize(const std::string& path, uint64_t& size) {
  WIN32_FILE_ATTRIBUTE_DATA data = {};
  if (!GetFileAttributesExA(path.c_str(), GetFileExInfoStandard, &data)) return false;
  if ((data.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) != 0) {
    SetLastError(ERROR_ACCESS_DENIED);  // what opening a folder as a file gives
    return false;
  }
  size = (static_cast<uint64_t>(data.nFileSizeHigh) << 32) | data.nFileSizeLow;
  return true;
}

bool DeleteFile(const std::string& path) {
  return ::DeleteFileA(path.c_str()) != FALSE;
}

bool CopyFile(const std::string& from, const std::string& to, bool failIfExists) {
  return ::CopyFileA(from.c_str(), to.c_str(), failIfExists ? TRUE : FALSE) != FALSE;
}

bool CreateFolder(const std::string& path) {
  if (path.empty()) {
    SetLastError(ERROR_PATH_NOT_FOUND);
    return false;
  }
  if (FolderExists(path)) return true;
  std::string parent = FolderOf(path);
  while (parent.size() > 3 && IsSeparator(parent.back())) parent.pop_back();
  if (!parent.empty() && parent != path && !FolderExists(parent) && !CreateFolder(parent)) {
    return false;
  }
  if (CreateDirectoryA(path.c_str(), nullptr)) return true;
  DWORD error = GetLastError();
  if (FolderExists(path)) return true;  // made meanwhile, or the path ends with a separator
  SetLastError(error);
  return false;
}

bool WriteWholeFile(const std::string& path, std::string_view bytes) {
  std::string folder = FolderOf(path);
  if (folder.empty()) folder = ".";
  char tempPath[MAX_PATH] = {};
  if (GetTempFileNameA(folder.c_str(), "kpx", 0, tempPath) == 0) {
    // It says ERROR_DIRECTORY for a folder that is not there; the missing path is the news.
    if (!FolderExists(folder)) SetLastError(ERROR_PATH_NOT_FOUND);
    return false;
  }
  HANDLE file = CreateFileA(tempPath, GENERIC_WRITE, 0, nullptr, CREATE_ALWAYS,
                            FILE_ATTRIBUTE_NORMAL, nullptr);
  if (file == INVALID_HANDLE_VALUE) {
    KeepingLastError([&] { ::DeleteFileA(tempPath); });
    return false;
  }
  bool ok = WriteAll(file, bytes) && FlushFileBuffers(file);
  KeepingLastError([&] { CloseHandle(file); });
  if (ok &&
      MoveFileExA(tempPath, path.c_str(), MOVEFILE_REPLACE_EXISTING | MOVEFILE_WRITE_THROUGH)) {
    return true;
  }
  KeepingLastError([&] { ::DeleteFileA(tempPath); });
  return false;
}

bool ReadWholeFile(const std::string& path, std::string& bytes) {
  bytes.clear();
  HANDLE file = CreateFileA(path.c_str(), GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr,
                            OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr);
  if (file == INVALID_HANDLE_VALUE) return false;
  char buffer[65536];
  for (;;) {
    DWORD got = 0;
    if (!ReadFile(file, buffer, sizeof buffer, &got, nullptr)) {
      KeepingLastError([&] { CloseHandle(file); });
      return false;
    }
    if (got == 0) break;
    bytes.append(buffer, got);
  }
  CloseHandle(file);
  return true;
}

int LastSystemError() {
  return static_cast<int>(GetLastError());
}

void SetLastSystemError(int code) {
  SetLastError(static_cast<DWORD>(code));
}

std::string SystemErrorText(int code) {
  wchar_t* message = nullptr;
  DWORD length = FormatMessageW(
      FORMAT_MESSAGE_ALLOCATE_BUFFER | FORMAT_MESSAGE_FROM_SYSTEM | FORMAT_MESSAGE_IGNORE_INSERTS,
      nullptr, static_cast<DWORD>(code), 0, reinterpret_cast<wchar_t*>(&message), 0, nullptr);
  std::string text = Utf8Of(message, static_cast<int>(length));
  if (message != nullptr) LocalFree(message);
  while (!text.empty() && (text.back() == '\n' || text.back() == '\r' || text.back() == ' ')) {
    text.pop_back();
  }
  if (text.empty()) return "Unknown error " + std::to_string(code);
  return text;
}

bool ReplaceFile(const std::string& from, const std::string& to) {
  // Windows will not rename over a file that is open, and this process's own in-use lock holds
  // the document it saves; those handles step aside for the rename and are taken again on the
  // new file. Another Kelpdex may slip in meanwhile; it then opens the document read-only.
  std::lock_guard<std::mutex> guard(HeldLocksMutex());
  std::vector<HeldLock*> stepped;
  for (HeldLock* held : HeldLocks()) {
    if (SameFile(held->path, to)) {
      ::CloseHandle(held->handle);
      held->handle = INVALID_HANDLE_VALUE;
      stepped.push_back(held);
    }
  }
  bool ok = ::MoveFileExA(from.c_str(), to.c_str(),
                          MOVEFILE_REPLACE_EXISTING | MOVEFILE_WRITE_THROUGH) != FALSE;
  KeepingLastError([&] {
    for (HeldLock* held : stepped) held->handle = OpenLockHandle(held->path);
  });
  return ok;
}

bool SyncFile(const std::string& path) {
  HANDLE h = ::CreateFileA(path.c_str(), GENERIC_WRITE, FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr,
                           OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr);
  if (h == INVALID_HANDLE_VALUE) return false;
  bool ok = ::FlushFileBuffers(h) != FALSE;
  ::CloseHandle(h);
  return ok;
}

std::string ResolveLinks(const std::string& path) {
  DWORD attributes = GetFileAttributesA(path.c_str());
  if (attributes == INVALID_FILE_ATTRIBUTES || (attributes & FILE_ATTRIBUTE_REPARSE_POINT) == 0) {
    return path;
  }
  // Opening the link opens what it finally names; the handle then tells that file's path.
  HANDLE h = ::CreateFileA(path.c_str(), 0, FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE,
                           nullptr, OPEN_EXISTING, FILE_FLAG_BACKUP_SEMANTICS, nullptr);
  if (h == INVALID_HANDLE_VALUE) return path;  // a dangling link: the save replaces it
  char finalPath[MAX_PATH + 8] = {};
  DWORD length = ::GetFinalPathNameByHandleA(h, finalPath, MAX_PATH + 8, FILE_NAME_NORMALIZED);
  ::CloseHandle(h);
  if (length == 0 || length >= MAX_PATH + 8) return "";
  std::string resolved(finalPath, length);
  if (resolved.rfind("\\\\?\\UNC\\", 0) == 0) return "\\\\" + resolved.substr(8);
  if (resolved.rfind("\\\\?\\", 0) == 0) return resolved.substr(4);
  return resolved;
}

bool InspectReplacedFile(const std::string& path, ReplacedFile& info) {
  info = ReplacedFile();
  DWORD attributes = GetFileAttributesA(path.c_str());
  if (attributes == INVALID_FILE_ATTRIBUTES) {
    DWORD error = GetLastError();
    return error == ERROR_FILE_NOT_FOUND || error == ERROR_PATH_NOT_FOUND;
  }
  info.exists = true;
  info.folder = (attributes & FILE_ATTRIBUTE_DIRECTORY) != 0;
  info.regular = !info.folder && (attributes & FILE_ATTRIBUTE_DEVICE) == 0;
  info.writable = (attributes & FILE_ATTRIBUTE_READONLY) == 0;
  info.mode = attributes;
  return true;
}

bool CreatePrivateFile(const std::string& path, const ReplacedFile& /*like*/) {
  // The new file takes the folder's inherited access rights, as any file made there does.
  HANDLE h = ::CreateFileA(path.c_str(), GENERIC_WRITE, 0, nullptr, CREATE_NEW,
                           FILE_ATTRIBUTE_NORMAL, nullptr);
  if (h == INVALID_HANDLE_VALUE) return false;
  return ::CloseHandle(h) != FALSE;
}

bool TakeOverPermissions(const std::string& path, const ReplacedFile& like) {
  constexpr DWORD kKept = FILE_ATTRIBUTE_HIDDEN | FILE_ATTRIBUTE_SYSTEM | FILE_ATTRIBUTE_ARCHIVE |
                          FILE_ATTRIBUTE_NOT_CONTENT_INDEXED;
  DWORD kept = like.mode & kKept;
  return ::SetFileAttributesA(path.c_str(), kept != 0 ? kept : FILE_ATTRIBUTE_NORMAL) != FALSE;
}

FileLock::~FileLock() {
  Release();
}

void PrefaultMemory(void* /*memory*/, size_t /*bytes*/) {
  // Windows commits pages on first touch with no call to populate them ahead; they fault as
  // they are filled.
}

bool SameFile(const std::string& a, const std::string& b) {
  // The volume and file index, as POSIX compares device and inode: short names, links and
  // spellings of one file all agree.
  BY_HANDLE_FILE_INFORMATION infoA = {};
  BY_HANDLE_FILE_INFORMATION infoB = {};
  if (FileIdentity(a, infoA) && FileIdentity(b, infoB)) {
    return infoA.dwVolumeSerialNumber == infoB.dwVolumeSerialNumber &&
           infoA.nFileIndexHigh == infoB.nFileIndexHigh &&
           infoA.nFileIndexLow == infoB.nFileIndexLow;
  }
  char fullA[MAX_PATH];
  char fullB[MAX_PATH];
  if (::GetFullPathNameA(a.c_str(), MAX_PATH, fullA, nullptr) == 0 ||
      ::GetFullPathNameA(b.c_str(), MAX_PATH, fullB, nullptr) == 0) {
    return ::lstrcmpiA(a.c_str(), b.c_str()) == 0;
  }
  return ::lstrcmpiA(fullA, fullB) == 0;
}

LockResult FileLock::Acquire(const std::string& path) {
  Release();
  HANDLE h = OpenLockHandle(path);
  if (h == INVALID_HANDLE_VALUE) {
    return ::GetLastError() == ERROR_SHARING_VIOLATION ? LockResult::kInUse
                                                       : LockResult::kUnavailable;
  }
  auto* held = new HeldLock{h, path};
  std::lock_guard<std::mutex> guard(HeldLocksMutex());
  HeldLocks().push_back(held);
  handle_ = reinterpret_cast<intptr_t>(held);
  return LockResult::kLocked;
}

void FileLock::Release() {
  if (handle_ == kNone) return;
  auto* held = reinterpret_cast<HeldLock*>(handle_);
  std::lock_guard<std::mutex> guard(HeldLocksMutex());
  std::vector<HeldLock*>& all = HeldLocks();
  all.erase(std::find(all.begin(), all.end(), held));
  if (held->handle != INVALID_HANDLE_VALUE) ::CloseHandle(held->handle);
  delete held;
  handle_ = kNone;
}

}  // namespace kelpdex::platform

#endif  // _WIN32
