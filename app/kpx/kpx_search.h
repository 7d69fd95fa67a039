// The record set of kpx's commands: filters as the command line gives them, and the search run
// on the table a command selected.
#pragma once

#include <string>
#include <utility>
#include <vector>

#include "kpx/kpx_args.h"
#include "kpx/kpx_commands.h"
#include "kpx/kpx_document.h"
#include "store/catalogue.h"

namespace kelpdex::kpx {

// The operator digit of an --op name (Pattern .. Or); 0 when it is none of them.
int FilterOpDigit(const std::string& name);

// The filter text for a field from what the command line gave: an operator and value, or a
// formula (digit 0). Returns kExitSuccess, or kExitFailure with `why` for a text the filter
// cannot hold (over 1,024 characters, characters outside the code page).
int MakeCommandFilter(int digit, const std::string& utf8, std::string& filter, std::string& why);

// The --filter FIELD:OP:VALUE and --expr FIELD:FORMULA options of a command, as one filter text
// per field; `given` is false when there were none. kExitUsage or kExitFailure with `why`.
int ReadTransientFilters(const Args& args, const TableSpec& table,
                         std::vector<std::string>& filters, bool& given, std::string& why);

// The --by (sort) or --sort (dump) options, FIELD or FIELD:desc, first most significant: a field
// index and whether it sorts descending each. kExitUsage or kExitFailure with `why`.
int ReadSortOptions(const Args& args, const TableSpec& table,
                    std::vector<std::pair<uint16_t, bool>>& keys, std::string& why,
                    const char* option = "by");

// The selected table's record set as it is shown: narrowed by its filters in force, or by
// `filters`, then ordered by its sort keys, or by `sort` when given.
bool ApplyRecordSet(CommandDocument& document, const TableSpec& table,
                    const std::vector<std::string>* filters, uint32_t& found,
                    const std::vector<std::pair<uint16_t, bool>>* sort = nullptr);

// The records of the set in force as dump prints them: tab-separated lines (with `header` a first
// line of field names) or a JSON array; at most `limit` records when it is not negative.
int PrintRecordSet(CommandContext& context, CommandDocument& document, const TableSpec& table,
                   bool json, bool header, long limit);

}  // namespace kelpdex::kpx
