// Operating-system services. Nothing outside src/platform calls the OS directly.
// Paths are byte strings in the OS's own form: UTF-8 on POSIX, the ANSI code page on Windows.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace kelpdex::platform {

#ifdef _WIN32
constexpr char kPathSeparator = '\\';
#else
constexpr char kPathSeparator = '/';
#endif

// The SYSTEMTIME equivalent: month 1-12, dayOfWeek 0 (Sunday) to 6.
struct LocalTime {
  int year = 0;
  int month = 0;
  int dayOfWeek = 0;
  int day = 0;
  int hour = 0;
  int minute = 0;
  int second = 0;
  int milliseconds = 0;
};

// The login name of the user running the process; empty if none can be found.
std::string UserName();
LocalTime GetLocalTime();

// The folder for temporary files ($TMPDIR or /tmp), without a trailing separator.
std::string TempFolder();
// The per-user settings folder: $XDG_CONFIG_HOME/Kelpdex, or ~/.config/Kelpdex.
std::string UserSettingsFolder();
// $XDG_DATA_HOME, or ~/.local/share.
std::string UserDataFolder();
// The full path of the running executable; empty if it cannot be found.
std::string ExecutablePath();
// Folders under which an installed (not portable) executable lives: /usr/ and /opt/ on POSIX,
// the Program Files folders on Windows. Each ends with a separator.
std::vector<std::string> SystemPrefixes();

// Path helpers working on the text alone.
std::string FolderOf(std::string_view path);    // "" when the path has no separator
std::string FileNameOf(std::string_view path);  // the part after the last separator
std::string JoinPath(std::string_view folder, std::string_view name);

bool FileExists(const std::string& path);  // a regular file (or anything but a folder)
bool FolderExists(const std::string& path);
bool GetFileSize(const std::string& path, uint64_t& size);
bool DeleteFile(const std::string& path);
// Copies a regular file; with failIfExists an existing target makes it fail.
bool CopyFile(const std::string& from, const std::string& to, bool failIfExists);
// Creates the folder and any missing parents; true if it exists afterwards.
bool CreateFolder(const std::string& path);
// Writes `bytes` to `path`, replacing it, through a temporary file and a rename.
bool WriteWholeFile(const std::string& path, std::string_view bytes);
bool ReadWholeFile(const std::string& path, std::string& bytes);

// Renames a file over another in one step, as far as the system allows: a save replaces the old
// document only once the new one is complete.
bool ReplaceFile(const std::string& from, const std::string& to);
// Waits until the file's bytes are on the disk.
bool SyncFile(const std::string& path);

// The file a path finally names: symbolic links are followed, chains too, a relative link from
// the folder that holds it. A path that is no link comes back as it is, also when nothing stands
// there; a loop of links, or one too long to read, gives "".
std::string ResolveLinks(const std::string& path);

// What a save must know of the file it is about to put a new one in the place of.
struct ReplacedFile {
  bool exists = false;   // false: there is nothing to replace
  bool regular = false;  // a plain file, not a folder, device or pipe
  bool folder = false;
  bool writable = false;  // this process may write to it
  uint32_t mode = 0;      // the permission bits (POSIX), or the attributes (Windows)
  uint32_t owner = 0;
  uint32_t group = 0;
};

// Looks at `path` itself (no link is followed). False only when the look fails for another
// reason than that nothing is there.
bool InspectReplacedFile(const std::string& path, ReplacedFile& info);
// Makes `path` as a new empty file that only its owner may read and write, owned by the owner
// and the group of `like` as far as the process may give them (a user may give a file to a
// group of his own, rarely to another user). False when the file cannot be made, also when
// something stands there already.
bool CreatePrivateFile(const std::string& path, const ReplacedFile& like);
// Gives `path` the permissions of `like`; meant for the finished file, once nothing more is
// written to it.
bool TakeOverPermissions(const std::string& path, const ReplacedFile& like);

// Maps the pages of a fresh allocation in advance, on two cores, so that filling it takes no
// page faults one by one; a load of a large document spends much of its time in them otherwise.
// Leaves the bytes alone, and does nothing where the system offers no way to do it.
void PrefaultMemory(void* memory, size_t bytes);

// Whether two paths name the same file: the same device and file number where the file exists,
// else the same text (without regard to case on Windows).
bool SameFile(const std::string& a, const std::string& b);

enum class LockResult {
  kLocked,       // this object holds the lock now
  kInUse,        // another process holds it
  kUnavailable,  // the file cannot be opened at all
};

// An advisory lock that other Kelpdex processes see, held for as long as the object lives or
// until Release. It guards nothing against programs that do not ask, and it does not keep this
// or any other process from reading the file.
class FileLock {
 public:
  FileLock() = default;
  ~FileLock();
  FileLock(const FileLock&) = delete;
  FileLock& operator=(const FileLock&) = delete;
  LockResult Acquire(const std::string& path);
  void Release();
  bool held() const { return handle_ != kNone; }

 private:
  static constexpr intptr_t kNone = -1;
  intptr_t handle_ = kNone;
};

// The last OS error of this thread (errno, GetLastError) and its text (strerror, FormatMessage),
// the text in UTF-8.
int LastSystemError();
void SetLastSystemError(int code);
std::string SystemErrorText(int code);

}  // namespace kelpdex::platform
