#include "support/temp_dir.h"

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <stdexcept>

namespace kelpdex::testing {

namespace fs = std::filesystem;

TempDir::TempDir() {
  std::string tmpl = (fs::temp_directory_path() / "kelpdex-test-XXXXXX").string();
  if (mkdtemp(tmpl.data()) == nullptr) throw std::runtime_error("mkdtemp failed");
  path_ = tmpl;
}

TempDir::~TempDir() {
  std::error_code ec;
  fs::remove_all(path_, ec);
}

std::string TempDir::Path(std::string_view name) const {
  return (fs::path(path_) / fs::path(name)).string();
}

std::string TempDir::Write(std::string_view name, std::string_view bytes) const {
  fs::path p = fs::path(path_) / fs::path(name);
  fs::create_directories(p.parent_path());
  std::ofstream out(p, std::ios::binary | std::ios::trunc);
  out.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
  if (!out) throw std::runtime_error("cannot write test file");
  return p.string();
}

ScopedEnv::ScopedEnv(const char* name, const char* value) : name_(name) {
  const char* old = std::getenv(name);
  hadOld_ = old != nullptr;
  if (hadOld_) old_ = old;
  if (value != nullptr) {
    setenv(name, value, 1);
  } else {
    unsetenv(name);
  }
}

ScopedEnv::~ScopedEnv() {
  if (hadOld_) {
    setenv(name_.c_str(), old_.c_str(), 1);
  } else {
    unsetenv(name_.c_str());
  }
}

}  // namespace kelpdex::testing
