#include "document/recent_files.h"

#include <algorithm>

#include "platform/os.h"

namespace kelpdex {

void AddRecentFile(SessionSettings& settings, const std::string& path) {
  std::vector<std::string>& list = settings.recentFiles;
  list.erase(std::remove_if(list.begin(), list.end(),
                            [&](const std::string& entry) {
                              return entry == path || platform::SameFile(entry, path);
                            }),
             list.end());
  list.insert(list.begin(), path);
  if (list.size() > settings.recentFileLimit) list.resize(settings.recentFileLimit);
}

std::string ShortenPath(const std::string& path, size_t width) {
  if (path.size() <= width) return path;
  std::string name = platform::FileNameOf(path);
  if (name.size() + 4 >= width || name.size() == path.size()) return name;
  // The head is everything up to and including the first separator behind the root.
  size_t first = path.find(platform::kPathSeparator, path[0] == platform::kPathSeparator ? 1 : 0);
  std::string head = path.substr(0, first + 1);
  std::string tail = platform::kPathSeparator + name;
  size_t start = path.size() - tail.size();
  // Take in whole folders from the end while the result still fits.
  while (start > first + 1) {
    size_t previous = path.rfind(platform::kPathSeparator, start - 1);
    if (previous == std::string::npos || previous <= first) break;
    std::string longer = path.substr(previous);
    if (head.size() + 3 + longer.size() > width) break;
    tail = longer;
    start = previous;
  }
  if (head.size() + 3 + tail.size() > width) return "..." + tail;
  return head + "..." + tail;
}

std::vector<std::string> RecentFileMenu(const SessionSettings& settings, size_t width) {
  std::vector<std::string> menu;
  if (settings.recentFiles.empty()) {
    menu.push_back("(empty)");
    return menu;
  }
  size_t count = std::min(settings.recentFiles.size(), settings.recentFileLimit);
  for (size_t i = 0; i < count; ++i) {
    menu.push_back("&" + std::to_string(i + 1) + " " + ShortenPath(settings.recentFiles[i], width));
  }
  return menu;
}

}  // namespace kelpdex
