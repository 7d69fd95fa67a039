// A fresh folder for one test, removed with everything in it when the object goes.
#pragma once

#include <string>
#include <string_view>

namespace kelpdex::testing {

class TempDir {
 public:
  TempDir();
  ~TempDir();
  TempDir(const TempDir&) = delete;
  TempDir& operator=(const TempDir&) = delete;

  const std::string& path() const { return path_; }
  // path() joined with a relative name.
  std::string Path(std::string_view name) const;
  // Writes a file below the folder (creating parent folders) and returns its full path.
  std::string Write(std::string_view name, std::string_view bytes) const;

 private:
  std::string path_;
};

// Sets an environment variable for the lifetime of the object, then restores it.
class ScopedEnv {
 public:
  ScopedEnv(const char* name, const char* value);  // value nullptr unsets
  ~ScopedEnv();
  ScopedEnv(const ScopedEnv&) = delete;
  ScopedEnv& operator=(const ScopedEnv&) = delete;

 private:
  std::string name_;
  std::string old_;
  bool hadOld_;
};

}  // namespace kelpdex::testing
