// The .kpx association for the current user only (HKCU\Software\Classes), which needs no
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

#include "platform/shell_registration.h"

namespace kelpdex::platform {

namespace {

constexpr const char* kClasses = "Software\\Classes\\";
constexpr const char* kExtension = ".kpx";
constexpr const char* kProgId = "Kelpdex.Database";

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
  std::string classes = kClasses;
  std::string progId = classes + kProgId;
  std::string quoted = "\"" + executablePath + "\"";
  bool ok = SetValue(classes + kExtension, nullptr, kProgId) &&
            SetValue(classes + kExtension, "Content Type", "application/x-kelpdex") &&
            SetValue(progId, nullptr, "Kelpdex File") &&
            SetValue(progId + "\\DefaultIcon", nullptr, quoted + ",0") &&
            SetValue(progId + "\\shell\\open\\command", nullptr, quoted + " \"%1\"");
  if (!ok) return false;
  SHChangeNotify(SHCNE_ASSOCCHANGED, SHCNF_IDLIST, nullptr, nullptr);
  return true;
}

bool UnregisterShellIntegration() {
  std::string classes = kClasses;
  LONG result = DeleteTree(classes + kProgId);
  // The extension is left alone once another program has taken it over.
  if (result == ERROR_SUCCESS && DefaultValue(classes + kExtension) == kProgId) {
    result = DeleteTree(classes + kExtension);
  }
  SHChangeNotify(SHCNE_ASSOCCHANGED, SHCNF_IDLIST, nullptr, nullptr);
  if (result != ERROR_SUCCESS) return Fail(result);
  return true;
}

}  // namespace kelpdex::platform

#endif  // _WIN32
