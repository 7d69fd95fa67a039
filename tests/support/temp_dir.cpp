#include "support/temp_dir.h"

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <random>
#include <stdexcept>

namespace kelpdex::testing {

namespace fs = std::filesystem;

TempDir::TempDir() {
#ifdef _WIN32
  // No mkdtemp: a random name is tried until create_directory makes a folder of its own.
  std::random_device random;
  for (int attempt = 0; attempt < 100 && path_.empty(); ++attempt) {
    fs::path candidate = fs::temp_directory_path() / ("kelpdex-test-" + std::to_string(random()));
    if (fs::create_directory(candidate)) path_ = candidate.string();
  }
  if (path_.empty()) throw std::runtime_error("cannot make a temporary folder");
#else
  std::string tmpl = (fs::temp_directory_path() / "kelpdex-test-XXXXXX").string();
  if (mkdtemp(tmpl.data()) == nullptr) throw std::runtime_error("mkdtemp failed");
  path_ = tmpl;
#endif
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

#ifdef _WIN32
// The C runtime's own environment, which getenv reads; an empty value removes the variable.
static int setenv(const char* name, const char* value, int) {
  return _putenv_s(name, value);
}
static int unsetenv(const char* name) {
  return _putenv_s(name, "");
}
#endif

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
