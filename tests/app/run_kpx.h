// Runs kpx in-process on words and captures what it prints.
#pragma once

#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

#include "kpx/kpx_cli.h"

namespace kelpdex::kpx {

struct Result {
  int status;
  std::string out;
  std::string err;
};

// Runs kpx with its output streams in memory: a sweep runs it tens of thousands of times, and a
// temporary file for each stream would cost more than the run.
inline Result RunKpx(std::vector<const char*> words) {
  words.insert(words.begin(), "kpx");
  char* outText = nullptr;
  char* errText = nullptr;
  size_t outSize = 0;
  size_t errSize = 0;
  FILE* out = open_memstream(&outText, &outSize);
  FILE* err = open_memstream(&errText, &errSize);
  Result r;
  r.status = Main(static_cast<int>(words.size()), words.data(), out, err);
  std::fclose(out);
  std::fclose(err);
  r.out.assign(outText, outSize);
  r.err.assign(errText, errSize);
  std::free(outText);
  std::free(errText);
  return r;
}

// The same for words the test put together as strings.
inline Result RunKpxStrings(const std::vector<std::string>& words) {
  std::vector<const char*> raw;
  for (const std::string& w : words) raw.push_back(w.c_str());
  return RunKpx(raw);
}

}  // namespace kelpdex::kpx
