// Whole files as bytes, for tests that write a document by hand or compare saved files.
#pragma once

#include <fstream>
#include <sstream>
#include <string>

namespace kelpdex::testing {

inline std::string ReadFileBytes(const std::string& path) {
  std::ifstream in(path, std::ios::binary);
  std::stringstream s;
  s << in.rdbuf();
  return s.str();
}

inline void WriteFileBytes(const std::string& path, const std::string& bytes) {
  std::ofstream out(path, std::ios::binary);
  out << bytes;
}

}  // namespace kelpdex::testing
