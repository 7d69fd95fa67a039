#include "kpx/kpx_search.h"

#include "persist/document_file.h"
#include "search/filter_text.h"
#include "search/long_text_matcher.h"
#include "search/run_filters.h"
#include "search/sort_rows.h"
#include "store/field_row.h"
#include "text/utf8.h"

namespace kelpdex::kpx {

namespace {

// The command line's names of the operators, digit - 1.
constexpr const char* kOpNames[filter_op::kLast] = {"Pattern", "Equal",   "NotEqual", "Greater",
                                                    "Less",    "Between", "And",      "Or"};

}  // namespace

int FilterOpDigit(const std::string& name) {
  for (int i = 0; i < filter_op::kLast; ++i) {
    if (name == kOpNames[i]) return i + 1;
  }
  return 0;
}

int MakeCommandFilter(int digit, const std::string& utf8, std::string& filter, std::string& why) {
  size_t replaced = 0;
  std::string operand = text::Utf8ToCp1252(utf8, &replaced);
  if (replaced > 0) {
    why = "the filter holds characters the document's code page cannot hold";
    return kExitFailure;
  }
  filter = MakeFilterText(digit, operand);
  if (filter.size() > kFilterTextMax) {
    why = "a filter may hold at most 1,024 characters";
    return kExitFailure;
  }
  return kExitSuccess;
}

int ReadTransientFilters(const Args& args, const TableSpec& table,
                         std::vector<std::string>& filters, bool& given, std::string& why) {
  filters.assign(FieldCount(table), std::string());
  given = false;
  for (const char* option : {"filter", "expr"}) {
    bool expression = std::string(option) == "expr";
    for (const std::string& value : args.Values(option)) {
      given = true;
      size_t colon = value.find(':');
      size_t second = expression ? colon : value.find(':', colon + 1);
      if (colon == std::string::npos || colon == 0 || second == std::string::npos) {
        why = expression ? "--expr is FIELD:FORMULA, not '" + value + "'"
                         : "--filter is FIELD:OP:VALUE, not '" + value + "'";
        return kExitUsage;
      }
      int digit = 0;
      if (!expression) {
        digit = FilterOpDigit(value.substr(colon + 1, second - colon - 1));
        if (digit == 0) {
          why = "unknown operator in '" + value +
                "' (Pattern, Equal, NotEqual, Greater, Less, Between, And or Or)";
          return kExitUsage;
        }
      }
      int field = FindFieldIndex(table, value.substr(0, colon));
      if (field < 0) {
        why = "no field named '" + value.substr(0, colon) + "'";
        return kExitFailure;
      }
      int status = MakeCommandFilter(digit, value.substr(second + 1), filters[field], why);
      if (status != kExitSuccess) return status;
    }
  }
  return kExitSuccess;
}

int ReadSortOptions(const Args& args, const TableSpec& table,
                    std::vector<std::pair<uint16_t, bool>>& keys, std::string& why,
                    const char* option) {
  keys.clear();
  for (const std::string& value : args.Values(option)) {
    std::string name = value;
    bool descending = false;
    size_t colon = value.rfind(':');
    if (colon != std::string::npos && value.substr(colon + 1) == "desc") {
      name = value.substr(0, colon);
      descending = true;
    }
    int field = FindFieldIndex(table, name);
    if (field < 0) {
      why = "no field named '" + name + "'";
      return kExitFailure;
    }
    keys.emplace_back(static_cast<uint16_t>(field), descending);
  }
  if (keys.size() >= kMaxSortKeys) {
    why = ErrorText(err::kTooManySortKeys);
    return kExitFailure;
  }
  return kExitSuccess;
}

bool ApplyRecordSet(CommandDocument& document, const TableSpec& table,
                    const std::vector<std::string>* filters, uint32_t& found,
                    const std::vector<std::pair<uint16_t, bool>>* sort) {
  FilterOptions options;
  options.filters = filters;
  SideFileMatcher matcher(*table.data, SideFilePath(document.book.fileName));
  options.matcher = &matcher;
  RecordSet& records = document.book.records;
  if (!RunFilters(table, records, options, found)) return false;
  if (sort == nullptr) {
    SortRecordSet(table, records);
    return true;
  }
  // The keys given stand in for the stored ones, with the commands' meaning of a direction.
  SortKeys keys;
  for (const auto& [field, descending] : *sort) {
    keys.fields[keys.count] = field;
    keys.flags[keys.count++] = !descending;
  }
  SortRows(*table.data, keys, records.rows(), records.count());
  return true;
}

}  // namespace kelpdex::kpx
