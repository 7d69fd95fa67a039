#include "kpx/kpx_args.h"

#include <algorithm>
#include <cerrno>
#include <cstdlib>

namespace kelpdex::kpx {

namespace {

bool Contains(const std::vector<std::string>& list, const std::string& name) {
  return std::find(list.begin(), list.end(), name) != list.end();
}

}  // namespace

Args::Args(const std::vector<std::string>& words, std::vector<std::string> valueOptions,
           std::vector<std::string> flagOptions) {
  bool optionsEnded = false;
  for (size_t i = 0; i < words.size() && error_.empty(); ++i) {
    const std::string& word = words[i];
    if (optionsEnded || word.size() < 3 || word.compare(0, 2, "--") != 0) {
      if (word == "--") {
        optionsEnded = true;
      } else {
        positionals_.push_back(word);
      }
      continue;
    }
    std::string name = word.substr(2);
    std::optional<std::string> inlineValue;
    size_t eq = name.find('=');
    if (eq != std::string::npos) {
      inlineValue = name.substr(eq + 1);
      name.resize(eq);
    }
    if (Contains(valueOptions, name)) {
      if (inlineValue) {
        values_.emplace_back(name, *inlineValue);
      } else if (i + 1 < words.size()) {
        values_.emplace_back(name, words[++i]);
      } else {
        error_ = "option --" + name + " needs a value";
      }
    } else if (Contains(flagOptions, name) && !inlineValue) {
      flags_.push_back(name);
    } else {
      error_ = "unknown option --" + name;
    }
  }
}

bool Args::Flag(const std::string& name) const {
  return Contains(flags_, name);
}

std::optional<std::string> Args::Value(const std::string& name) const {
  std::optional<std::string> last;
  for (const auto& [key, value] : values_) {
    if (key == name) last = value;
  }
  return last;
}

std::vector<std::string> Args::Values(const std::string& name) const {
  std::vector<std::string> all;
  for (const auto& [key, value] : values_) {
    if (key == name) all.push_back(value);
  }
  return all;
}

bool Args::IntValue(const std::string& name, long lo, long hi, long& out) {
  std::optional<std::string> text = Value(name);
  if (!text) return true;
  errno = 0;
  char* end = nullptr;
  long value = std::strtol(text->c_str(), &end, 10);
  if (text->empty() || *end != '\0' || errno != 0 || value < lo || value > hi) {
    error_ = "--" + name + " takes a whole number from " + std::to_string(lo) + " to " +
             std::to_string(hi);
    return false;
  }
  out = value;
  return true;
}

}  // namespace kelpdex::kpx
