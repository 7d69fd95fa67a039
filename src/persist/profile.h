// The profile: the application's options as a small XML document. The same reader and writer
// serve the settings file read at start and written at exit, and profiles saved and loaded by
// command.
#pragma once

#include <string>

#include "core/error_code.h"
#include "core/session_settings.h"
#include "format/user_formats.h"

namespace kelpdex {

// Writes the settings and the user's number formats. False with the stream's error.
bool SaveProfile(const std::string& path, const SessionSettings& settings,
                 const UserFormatList& formats, ErrorCode& error);

// Reads a profile over the settings in force: a missing element leaves its value, an element out
// of order fails with 91 at the closing tag. The recent files are replaced; number formats are
// added to the list. On failure `settings` keeps whatever was read before the error, and `line`
// says where it happened.
bool LoadProfile(const std::string& path, SessionSettings& settings, UserFormatList& formats,
                 ErrorCode& error, int* line = nullptr);

}  // namespace kelpdex
