#pragma once

#include <cstdio>

namespace kelpdex::kpx {

// The whole of kpx: reads the command line, runs one subcommand, returns the exit status.
int Main(int argc, const char* const* argv, FILE* out, FILE* err);

}  // namespace kelpdex::kpx
