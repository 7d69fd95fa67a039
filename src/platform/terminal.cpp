#include "platform/terminal.h"

#ifdef _WIN32
#include <io.h>
#define KELPDEX_ISATTY _isatty
#define KELPDEX_FILENO _fileno
#else
#include <unistd.h>
#define KELPDEX_ISATTY isatty
#define KELPDEX_FILENO fileno
#endif

namespace kelpdex::platform {

bool IsTerminal(FILE* stream) {
  return stream != nullptr && KELPDEX_ISATTY(KELPDEX_FILENO(stream)) != 0;
}

}  // namespace kelpdex::platform
