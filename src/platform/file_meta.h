// File services beyond os.h that the side file and the objects in cells need: a second name for
// a file, and the time a file was last changed.
#pragma once

#include <string>

#include "platform/os.h"

namespace kelpdex::platform {

// Gives the file at `from` a second name `to` without copying its bytes (a hard link). False
// when the system or the file system cannot, or `to` exists.
bool LinkFile(const std::string& from, const std::string& to);
// The local time of the file's last change.
bool FileModifiedTime(const std::string& path, LocalTime& at);

}  // namespace kelpdex::platform
