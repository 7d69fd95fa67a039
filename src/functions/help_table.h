// The function picker's reference: one help entry per function a user can pick, grouped by
// category. It stands apart from the function table, so its names and texts are free to differ
// from the handlers' names.
#pragma once

#include <cstdint>
#include <span>
#include <string_view>
#include <vector>

namespace kelpdex {

// The categories, by index; HelpCategoryText gives their names.
namespace help {
constexpr uint8_t kMathematical = 0;
constexpr uint8_t kText = 1;
constexpr uint8_t kDateTime = 2;
constexpr uint8_t kFinancial = 3;
constexpr uint8_t kLookup = 4;
constexpr uint8_t kLogical = 5;
constexpr uint8_t kInformational = 6;
constexpr uint8_t kEngineering = 7;
constexpr uint8_t kStatistical = 8;
constexpr uint8_t kOptimization = 9;
constexpr uint8_t kMatrix = 10;
constexpr int kCategoryCount = 11;
}  // namespace help

// Stands in the argument-count place of `code` for a function that takes any number of arguments.
constexpr uint32_t kVariableArguments = 256;

struct HelpEntry {
  // Category in the low byte; above it the number of required arguments, or kVariableArguments.
  uint32_t code;
  // The display name in mixed case, for example "sumX2mY2".
  const char* name;
  // Argument names in order, the list ended by the first null; an optional argument stands in
  // square brackets, and "..." ends the list of a function with a variable count.
  const char* arguments[8];
  // A digit per named argument ("..." aside): 1 for a matrix, array or range taken as a whole,
  // 0 for a scalar.
  const char* flags;
  // Syntax line, blank line, description, blank line, worked examples ("=... returns X"); every
  // line ends with CR LF.
  const char* help;
};

constexpr uint32_t HelpCode(uint8_t category, uint32_t argumentCount) {
  return category | argumentCount << 8;
}
inline uint8_t HelpCategory(const HelpEntry& entry) {
  return static_cast<uint8_t>(entry.code & 0xFF);
}
inline uint32_t HelpArgumentCount(const HelpEntry& entry) {
  return entry.code >> 8;
}

// "mathematical", "text", ...; empty outside 0..10.
std::string_view HelpCategoryText(int category);
// The argument names of an entry, in order.
std::vector<std::string_view> HelpArgumentNames(const HelpEntry& entry);

// Every entry of every family built so far, grouped by category in index order.
const std::vector<const HelpEntry*>& HelpEntries();
// The entry of a display name, compared case-insensitively; nullptr when there is none.
const HelpEntry* FindHelpEntry(std::string_view name);
// The display names of one category, in table order.
std::vector<std::string_view> HelpNamesOfCategory(int category);

// The families' own arrays. A family adds its file (help_<family>.cpp), declares its function
// here and lists it in help_table.cpp.
std::span<const HelpEntry> MathHelp();
std::span<const HelpEntry> LogicalHelp();
std::span<const HelpEntry> InformationalHelp();
std::span<const HelpEntry> TextHelp();
std::span<const HelpEntry> DateHelp();
std::span<const HelpEntry> StatisticalHelp();
std::span<const HelpEntry> FinancialHelp();
std::span<const HelpEntry> EngineeringHelp();
std::span<const HelpEntry> LookupHelp();
std::span<const HelpEntry> MatrixHelp();
std::span<const HelpEntry> OptimisationHelp();

}  // namespace kelpdex
