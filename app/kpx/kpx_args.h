// Argument reading shared by the kpx subcommands: positionals, "--flag" and "--name value".
#pragma once

#include <optional>
#include <string>
#include <vector>

namespace kelpdex::kpx {

class Args {
 public:
  // `valueOptions` take a value ("--name value" or "--name=value"); `flagOptions` take none.
  Args(const std::vector<std::string>& words, std::vector<std::string> valueOptions,
       std::vector<std::string> flagOptions);

  bool ok() const { return error_.empty(); }
  // Why the words could not be read, for a usage message.
  const std::string& error() const { return error_; }

  bool Flag(const std::string& name) const;
  std::optional<std::string> Value(const std::string& name) const;
  // Every value of an option given more than once, in order.
  std::vector<std::string> Values(const std::string& name) const;
  const std::vector<std::string>& positionals() const { return positionals_; }

  // Reads an option as a whole number within [lo, hi]; false (with error()) when it is not one.
  bool IntValue(const std::string& name, long lo, long hi, long& out);

 private:
  std::vector<std::pair<std::string, std::string>> values_;
  std::vector<std::string> flags_;
  std::vector<std::string> positionals_;
  std::string error_;
};

}  // namespace kelpdex::kpx
