#include "functions/help_table.h"

#include <algorithm>

#include "text/code_page.h"

namespace kelpdex {

namespace {

constexpr std::string_view kCategoryTexts[help::kCategoryCount] = {
    "mathematical",
    "text",
    "date/time",
    "financial",
    "lookup & reference",
    "logical",
    "informational",
    "engineering",
    "statistical",
    "optimization & minimization",
    "matrix, over-/determined eq. systems",
};

// One line per family that is built; a family that lands adds its own.
std::span<const HelpEntry> (*const kFamilies[])() = {
    MathHelp,        LogicalHelp,   InformationalHelp, TextHelp,   DateHelp,
    StatisticalHelp, FinancialHelp, EngineeringHelp,   LookupHelp, MatrixHelp,
    OptimisationHelp,
};

}  // namespace

std::string_view HelpCategoryText(int category) {
  if (category < 0 || category >= help::kCategoryCount) return std::string_view();
  return kCategoryTexts[category];
}

std::vector<std::string_view> HelpArgumentNames(const HelpEntry& entry) {
  std::vector<std::string_view> names;
  for (const char* name : entry.arguments) {
    if (name == nullptr) break;
    names.emplace_back(name);
  }
  return names;
}

const std::vector<const HelpEntry*>& HelpEntries() {
  static const std::vector<const HelpEntry*> entries = [] {
    std::vector<const HelpEntry*> all;
    for (auto family : kFamilies) {
      for (const HelpEntry& entry : family()) all.push_back(&entry);
    }
    // The families may list in any order; the picker wants categories together, each family's
    // own order kept.
    std::stable_sort(all.begin(), all.end(), [](const HelpEntry* a, const HelpEntry* b) {
      return HelpCategory(*a) < HelpCategory(*b);
    });
    return all;
  }();
  return entries;
}

const HelpEntry* FindHelpEntry(std::string_view name) {
  for (const HelpEntry* entry : HelpEntries()) {
    if (text::EqualNoCase(entry->name, name)) return entry;
  }
  return nullptr;
}

std::vector<std::string_view> HelpNamesOfCategory(int category) {
  std::vector<std::string_view> names;
  for (const HelpEntry* entry : HelpEntries()) {
    if (HelpCategory(*entry) == category) names.emplace_back(entry->name);
  }
  return names;
}

}  // namespace kelpdex
