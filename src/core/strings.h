// The numbered string table (titles and questions) and the "%1!s!" insertion form its texts use.
#pragma once

#include <cstdint>
#include <initializer_list>
#include <string>
#include <string_view>

namespace kelpdex {

namespace str {
constexpr int kSaveChanges = 101;
constexpr int kAppName = 128;
constexpr int kEnterInteger = 130;
constexpr int kMaxCharacters = 131;
constexpr int kMinimumMargin = 132;
constexpr int kInvalidValue = 133;
constexpr int kUpdateAllFormulas = 137;
constexpr int kPasswordsDiffer = 146;
constexpr int kPasswordTooShort = 147;
constexpr int kSwitchToBinary = 149;
constexpr int kProtectionIgnored = 150;
constexpr int kNewDatabase = 151;
constexpr int kDeleteTable = 156;
constexpr int kTableExists = 157;
constexpr int kFieldExists = 158;
constexpr int kKeyExists = 159;
constexpr int kFormExists = 165;
constexpr int kConversionUnavailable = 173;
constexpr int kNothingToCompact = 174;
constexpr int kNoCompactingNeeded = 175;
constexpr int kCompacted = 176;
constexpr int kRegistryDenied = 177;
constexpr int kNoMoreOccurrences = 179;
constexpr int kInvalidFieldName = 180;
constexpr int kOpenExecutable = 181;
}  // namespace str

// The text of a string id, or nullptr when the table has none.
const char* LoadStringText(int id);

// One insertion argument: text or a whole number.
struct MessageArg {
  MessageArg(const char* s) : text(s != nullptr ? s : ""), isText(true) {}
  MessageArg(std::string_view s) : text(s), isText(true) {}
  MessageArg(const std::string& s) : text(s), isText(true) {}
  MessageArg(int n) : number(n) {}
  MessageArg(long n) : number(n) {}
  MessageArg(long long n) : number(n) {}
  MessageArg(unsigned n) : number(n) {}

  std::string_view text;
  long long number = 0;
  bool isText = false;
};

// Expands "%N" and "%N!fmt!" inserts (N from 1 to 99, fmt a printf conversion such as "s", "d",
// "5d" or "x") and "%%". An insert whose number has no argument expands to nothing.
std::string FormatMessageText(std::string_view pattern, std::initializer_list<MessageArg> args);

// LoadStringText followed by FormatMessageText; an unknown id gives an empty string.
std::string FormatString(int id, std::initializer_list<MessageArg> args = {});

}  // namespace kelpdex
