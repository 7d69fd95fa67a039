// Any bytes as a profile: an error code with its line, or settings that save again, never a
// crash, a leak or an endless loop.
#include <unistd.h>

#include <cstdint>
#include <cstdio>
#include <string>

#include "persist/profile.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  static const std::string path = "/tmp/kelpdex_fuzz_profile_" + std::to_string(getpid()) + ".xml";
  FILE* f = std::fopen(path.c_str(), "wb");
  if (f == nullptr) return 0;
  std::fwrite(data, 1, size, f);
  std::fclose(f);
  kelpdex::SessionSettings settings;
  kelpdex::UserFormatList formats;
  kelpdex::ErrorCode error = kelpdex::err::kNone;
  if (kelpdex::LoadProfile(path, settings, formats, error)) {
    kelpdex::SaveProfile(path + ".out", settings, formats, error);
  }
  return 0;
}
