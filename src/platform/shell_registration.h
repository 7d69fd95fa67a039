// File association and launcher entry of the desktop application. On POSIX: a freedesktop
// .desktop entry and a shared-mime-info package for *.kpx under $XDG_DATA_HOME; on Windows: the
// registry entries of the .kpx association.
#pragma once

#include <string>

namespace kelpdex::platform {

// Writes the entries for the executable at `executablePath`. True on success; on failure the OS
// error is left in LastSystemError().
bool RegisterShellIntegration(const std::string& executablePath);
// Removes them; removing entries that are not there succeeds.
bool UnregisterShellIntegration();

}  // namespace kelpdex::platform
