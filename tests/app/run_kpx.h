// Runs kpx in-process on words and captures what it prints.
#pragma once

#include <cstdio>
#include <string>
#include <vector>

#include "kpx/kpx_cli.h"

namespace kelpdex::kpx {

struct Result {
  int status;
  std::string out;
  std::string err;
};

inline std::string ReadAll(FILE* f) {
  std::fflush(f);
  std::rewind(f);
  std::string text;
  char buf[512];
  size_t n;
  while ((n = std::fread(buf, 1, sizeof buf, f)) > 0) text.append(buf, n);
  return text;
}

inline Result RunKpx(std::vector<const char*> words) {
  words.insert(words.begin(), "kpx");
  FILE* out = std::tmpfile();
  FILE* err = std::tmpfile();
  Result r;
  r.status = Main(static_cast<int>(words.size()), words.data(), out, err);
  r.out = ReadAll(out);
  r.err = ReadAll(err);
  std::fclose(out);
  std::fclose(err);
  return r;
}

}  // namespace kelpdex::kpx
