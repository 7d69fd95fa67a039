// The switches of the desktop application's command line.
#pragma once

#include <string>
#include <string_view>

namespace kelpdex {

enum class CommandSwitch { kNone, kRegServer, kUnregServer, kUninstall, kAutomation, kEmbedding };

// Finds the switch of a command line. The scan stops at each "-" or "/" and compares the whole
// rest of the line, ignoring case, with the switch words; the first that matches decides, so a
// switch must be the last thing on the line, and "my-file.kpx" is a file. Where "/" separates
// path components (POSIX), it introduces a switch only at the start of the line or after a blank,
// so that a file called "/home/me/Automation" is still a file.
CommandSwitch ScanCommandLine(std::string_view line, bool slashIsPathSeparator);
CommandSwitch ScanCommandLine(std::string_view line);

// The command line of the process without the program name: the arguments joined by blanks.
std::string JoinArguments(int argc, const char* const* argv);

// The path a command line names: the line without its leading blanks. There is no quoting.
std::string_view PathFromCommandLine(std::string_view line);

}  // namespace kelpdex
