// The password a kpx command opens or protects a document with, read from the file that
// --password-file names.
#pragma once

#include <string>

#include "core/password.h"

namespace kelpdex::kpx {

// The first line of the file at `path`, without its line end, in the document code page. False
// with `why` when the file cannot be read, is empty, holds a character the code page lacks, or
// the line passes the longest password the dialogs take.
bool ReadPasswordFile(const std::string& path, Password& password, std::string& why);

}  // namespace kelpdex::kpx
