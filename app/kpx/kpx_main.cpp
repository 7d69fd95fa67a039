#include <cstdio>

#ifdef _WIN32
#include <fcntl.h>
#include <io.h>
#include <windows.h>
#endif

#include "kpx/kpx_cli.h"

int main(int argc, char** argv) {
#ifdef _WIN32
  // kpx prints UTF-8 and "\n" on every system, so that scripts read the same bytes; a console
  // is told to show UTF-8.
  _setmode(_fileno(stdout), _O_BINARY);
  _setmode(_fileno(stderr), _O_BINARY);
  SetConsoleOutputCP(CP_UTF8);
#endif
  return kelpdex::kpx::Main(argc, argv, stdout, stderr);
}
