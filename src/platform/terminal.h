// Facts about the standard streams, for the command-line tool's prompts and progress.
#pragma once

#include <cstdio>

namespace kelpdex::platform {

// True when the stream is attached to an interactive terminal.
bool IsTerminal(FILE* stream);

}  // namespace kelpdex::platform
