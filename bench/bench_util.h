// Shared pieces of the benchmark programs: a clock, peak memory, and the JSON line each job prints.
#pragma once

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>

namespace kelpdex::bench {

class Stopwatch {
 public:
  Stopwatch() : start_(std::chrono::steady_clock::now()) {}
  double Seconds() const {
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - start_).count();
  }

 private:
  std::chrono::steady_clock::time_point start_;
};

// A figure in kB of /proc/self/status, by its key ("VmHWM:", "VmRSS:"); 0 where there is none.
inline long ProcStatusKb(const char* key) {
  FILE* f = std::fopen("/proc/self/status", "r");
  if (f == nullptr) return 0;
  char line[256];
  long kb = 0;
  size_t keyLength = std::strlen(key);
  while (std::fgets(line, sizeof line, f) != nullptr) {
    if (std::strncmp(line, key, keyLength) == 0) kb = std::strtol(line + keyLength, nullptr, 10);
  }
  std::fclose(f);
  return kb;
}

// Peak resident memory of the process so far.
inline long PeakRssKb() {
  return ProcStatusKb("VmHWM:");
}

inline long CurrentRssKb() {
  return ProcStatusKb("VmRSS:");
}

// One job's result as one JSON line; `extra` is appended inside the object (",\"k\":v,...").
inline void Report(const char* op, long records, double seconds, long long bytes,
                   const std::string& extra = "") {
  std::printf(
      "{\"op\": \"%s\", \"records\": %ld, \"seconds\": %.6f, \"bytes\": %lld, "
      "\"peak_rss_kb\": %ld%s}\n",
      op, records, seconds, bytes, PeakRssKb(), extra.c_str());
  std::fflush(stdout);
}

// Reads "--records N" (default 1,000,000).
inline long RecordsArgument(int argc, char** argv, long fallback = 1000000) {
  for (int i = 1; i + 1 < argc; ++i) {
    if (std::strcmp(argv[i], "--records") == 0) return std::strtol(argv[i + 1], nullptr, 10);
  }
  return fallback;
}

}  // namespace kelpdex::bench
