// The registry script of the .kpx association, applied for the current user only
// (HKCU\Software\Classes, which the shell merges into HKEY_CLASSES_ROOT): that needs no
// administrator rights and leaves other accounts as they were.
#ifdef _WIN32

#ifndef WIN32_LEAN_AND_MEAN
#define WIN32_LEAN_AND_MEAN
#endif
#ifndef NOMINMAX
#define NOMINMAX
#endif
#include <shlobj.h>
#include <windows.h>

#include <string>
#include <utility>

#include "platform/shell_registration.h"

namespace kelpdex::platform {

namespace {

constexpr const char* kClasses = "Software\\Classes\\";
constexpr const char* kProgId = "kpxfile";
// Kelpdex's own AppID, fixed once so that unregistering finds what registering wrote.
constexpr const char* kAppId = "{5B1C7E2A-3D4F-4A8B-9C61-2E7F0D93A4B5}";

// One value of the script: under `key` (below Software\Classes), `name` (nullptr: the default
// value) gets `value`, in which %MODULE% stands for the executable's short path and %EXE% for
// its file name.
struct ScriptValue {
  const char* key;
  const char* name;
  const char* value;
};

constexpr ScriptValue kScript[] = {
    {"AppID\\%APPID%", nullptr, "Kelpdex"},
    {"AppID\\%EXE%", "AppID", "%APPID%"},
    {"AppID\\%EXE%", "NoOpenWith", ""},
    {"Applications\\%EXE%", "FriendlyAppName", "Kelpdex"},
    {"Applications\\%EXE%", "NoOpenWith", ""},
    {".kpx", nullptr, "kpxfile"},
    {".kpx\\kpxfile\\ShellNew", "NullFile", ""},
    {"kpxfile", nullptr, "Kelpdex File"},
    {"kpxfile\\DefaultIcon", nullptr, "%MODULE%,-129"},
    {"kpxfile\\shell", nullptr, "open"},
    {"kpxfile\\shell\\open", nullptr, "Open with Kelpdex"},
    {"kpxfile\\shell\\open\\command", nullptr, "%MODULE% %1"},
};

// The keys the script owns, removed whole when unregistering; .kpx goes only while it is ours.
constexpr const char* kOwnedKeys[] = {"AppID\\%APPID%", "AppID\\%EXE%", "Applications\\%EXE%",
                                      "kpxfile"};

std::string Substitute(std::string text, const std::string& module, const std::string& exe) {
  for (const auto& [name, value] : {std::pair<std::string, std::string>{"%MODULE%", module},
                                    {"%EXE%", exe},
                                    {"%APPID%", kAppId}}) {
    for (size_t at = text.find(name); at != std::string::npos; at = text.find(name, at)) {
      text.replace(at, name.size(), value);
      at += value.size();
    }
  }
  return text;
}

// The executable's short (8.3) path, which needs no quotes in a command line; the long path where
// the volume keeps no short names.
std::string ShortPath(const std::string& path) {
  char buffer[MAX_PATH] = {};
  DWORD length = GetShortPathNameA(path.c_str(), buffer, sizeof buffer);
  if (length == 0 || length >= sizeof buffer) return path;
  return std::string(buffer, length);
}

std::string ExecutableName() {
  char path[MAX_PATH] = {};
  DWORD length = GetModuleFileNameA(nullptr, path, sizeof path);
  std::string full(path, length < sizeof path ? length : 0);
  size_t separator = full.find_last_of("\\/");
  return separator == std::string::npos ? full : full.substr(separator + 1);
}

bool Fail(LONG result) {
  SetLastError(static_cast<DWORD>(result));
  return false;
}

bool SetValue(const std::string& subKey, const char* name, const std::string& value) {
  HKEY key = nullptr;
  LONG result = RegCreateKeyExA(HKEY_CURRENT_USER, subKey.c_str(), 0, nullptr,
                                REG_OPTION_NON_VOLATILE, KEY_SET_VALUE, nullptr, &key, nullptr);
  if (result != ERROR_SUCCESS) return Fail(result);
  result = RegSetValueExA(key, name, 0, REG_SZ, reinterpret_cast<const BYTE*>(value.c_str()),
                          static_cast<DWORD>(value.size() + 1));
  RegCloseKey(key);
  if (result != ERROR_SUCCESS) return Fail(result);
  return true;
}

// The default value of a key, empty when the key or the value is missing.
std::string DefaultValue(const std::string& subKey) {
  HKEY key = nullptr;
  if (RegOpenKeyExA(HKEY_CURRENT_USER, subKey.c_str(), 0, KEY_QUERY_VALUE, &key) != ERROR_SUCCESS) {
    return "";
  }
  char value[256] = {};
  DWORD size = sizeof value - 1;
  DWORD type = 0;
  LONG result =
      RegQueryValueExA(key, nullptr, nullptr, &type, reinterpret_cast<BYTE*>(value), &size);
  RegCloseKey(key);
  if (result != ERROR_SUCCESS || type != REG_SZ) return "";
  return value;
}

// RegDeleteKeyA refuses a key that has subkeys, so they go first. A missing key is no error.
LONG DeleteTree(const std::string& subKey) {
  HKEY key = nullptr;
  LONG result = RegOpenKeyExA(HKEY_CURRENT_USER, subKey.c_str(), 0,
                              KEY_ENUMERATE_SUB_KEYS | KEY_QUERY_VALUE, &key);
  if (result == ERROR_FILE_NOT_FOUND) return ERROR_SUCCESS;
  if (result != ERROR_SUCCESS) return result;
  for (;;) {
    char child[256] = {};
    DWORD length = sizeof child;
    result = RegEnumKeyExA(key, 0, child, &length, nullptr, nullptr, nullptr, nullptr);
    if (result != ERROR_SUCCESS) break;
    result = DeleteTree(subKey + "\\" + child);
    if (result != ERROR_SUCCESS) break;
  }
  RegCloseKey(key);
  if (result != ERROR_SUCCESS && result != ERROR_NO_MORE_ITEMS) return result;
  result = RegDeleteKeyA(HKEY_CURRENT_USER, subKey.c_str());
  return result == ERROR_FILE_NOT_FOUND ? ERROR_SUCCESS : result;
}

}  // namespace

bool RegisterShellIntegration(const std::string& executablePath) {
  std::string module = ShortPath(executablePath);
  std::string exe = executablePath.substr(executablePath.find_last_of("\\/") + 1);
  for (const ScriptValue& entry : kScript) {
    if (!SetValue(kClasses + Substitute(entry.key, module, exe), entry.name,
                  Substitute(entry.value, module, exe))) {
      return false;
    }
  }
  SHChangeNotify(SHCNE_ASSOCCHANGED, SHCNF_IDLIST, nullptr, nullptr);
  return true;
}

bool UnregisterShellIntegration() {
  std::string classes = kClasses;
  std::string exe = ExecutableName();
  LONG result = ERROR_SUCCESS;
  for (const char* key : kOwnedKeys) {
    if (result == ERROR_SUCCESS) result = DeleteTree(classes + Substitute(key, "", exe));
  }
  // The extension is left alone once another program has taken it over.
  if (result == ERROR_SUCCESS && DefaultValue(classes + ".kpx") == kProgId) {
    result = DeleteTree(classes + ".kpx");
  }
  SHChangeNotify(SHCNE_ASSOCCHANGED, SHCNF_IDLIST, nullptr, nullptr);
  if (result != ERROR_SUCCESS) return Fail(result);
  return true;
}

}  // namespace kelpdex::platform

#endif  // _WIN32
