// The File menu's list of recently used documents.
#pragma once

#include <string>
#include <vector>

#include "core/session_settings.h"

namespace kelpdex {

// Puts `path` at the front, taking out an earlier entry for the same file, and keeps at most
// settings.recentFileLimit entries.
void AddRecentFile(SessionSettings& settings, const std::string& path);

// The menu entries: "&1 path" and on, each path shortened to `width` characters by leaving out
// folders in its middle; "(empty)" alone when there are none.
std::vector<std::string> RecentFileMenu(const SessionSettings& settings, size_t width = 40);

// A path cut to at most `width` characters: the first folder, "...", and as many of the last
// parts as fit. The file's own name always stands whole.
std::string ShortenPath(const std::string& path, size_t width);

}  // namespace kelpdex
