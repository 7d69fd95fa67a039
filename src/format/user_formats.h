// The list of format strings the format dialog offers for the UserDefined kind: a built-in set,
// extended by the formats the user has typed, which the settings file keeps between sessions.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace kelpdex {

class UserFormatList {
 public:
  // The user's own formats beyond the built-in ones; more are refused.
  static constexpr size_t kMaxUserFormats = 256;

  UserFormatList();

  size_t size() const { return formats_.size(); }
  size_t builtInCount() const { return builtIn_; }
  const std::string& at(size_t index) const { return formats_[index]; }

  // Appends a format (checked in the generic notation, in which the list is kept). A format
  // already in the list is not added again and counts as success. False for a string that is no
  // valid format, is longer than a format may be, or when the list is full.
  bool Add(std::string_view text, std::string_view name = {});
  // The name a user gave a format, empty for none.
  const std::string& nameAt(size_t index) const { return names_[index]; }
  // The formats added beyond the built-in ones, in the order added, as the settings file
  // writes them.
  std::vector<std::string> UserFormats() const;
  void ResetToBuiltIn();

 private:
  std::vector<std::string> formats_;
  std::vector<std::string> names_;
  size_t builtIn_ = 0;
};

// The session's list.
UserFormatList& UserNumberFormats();

}  // namespace kelpdex
