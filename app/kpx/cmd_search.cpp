// kpx filter and kpx key: the filters in force and the search keys, saved into the document.
#include <string>

#include "core/strings.h"
#include "kpx/kpx_args.h"
#include "kpx/kpx_commands.h"
#include "kpx/kpx_document.h"
#include "kpx/kpx_search.h"
#include "search/search_keys.h"
#include "search/sort_keys.h"
#include "store/field_row.h"

namespace kelpdex::kpx {

namespace {

// The word a key result leaves for a command line, where the desktop would only beep.
std::string KeyResultText(KeyResult result, const std::string& name) {
  switch (result) {
    case KeyResult::kEmptyName:
      return "a key needs a name";
    case KeyResult::kTooManyKeys:
      return "the table holds as many keys as it can";
    case KeyResult::kNoRoom:
      return "the table's catalogue has no free column for another key";
    case KeyResult::kNameExists:
      return LoadStringText(str::kKeyExists);
    case KeyResult::kNameTooLong:
      return "a key name may hold at most 1,019 characters";
    case KeyResult::kNoSuchKey:
      return "no key named '" + name + "' that can be changed";
    default:
      return std::string();
  }
}

}  // namespace

int RunFilter(CommandContext& context) {
  const CommandInfo& self = *FindCommand("filter");
  Args args(context.words, {"table", "field", "op", "value", "expr"}, {"clear", "clear-all"});
  if (!args.ok()) return UsageError(context, self, args.error());
  if (args.positionals().size() != 1) return UsageError(context, self, "one FILE is needed");
  bool clearAll = args.Flag("clear-all");
  int ways = (args.Value("op") || args.Value("value") ? 1 : 0) + (args.Value("expr") ? 1 : 0) +
             (args.Flag("clear") ? 1 : 0);
  if (clearAll ? (ways != 0 || args.Value("field")) : (ways != 1 || !args.Value("field"))) {
    return UsageError(context, self,
                      "give --field F with one of --op OP --value TEXT, --expr FORMULA or "
                      "--clear, or --clear-all alone");
  }
  int digit = 0;
  if (args.Value("op") || args.Value("value")) {
    if (!args.Value("op") || !args.Value("value")) {
      return UsageError(context, self, "--op and --value go together");
    }
    digit = FilterOpDigit(*args.Value("op"));
    if (digit == 0) {
      return UsageError(context, self,
                        "unknown operator '" + *args.Value("op") +
                            "' (Pattern, Equal, NotEqual, Greater, Less, Between, And or Or)");
    }
  }

  CommandDocument document(context);
  if (!document.Open(args.positionals()[0], false)) return kExitFailure;
  TableSpec table;
  if (!document.SelectTable(args.Value("table").value_or(""), table)) return kExitFailure;
  bool done;
  if (clearAll) {
    done = ClearAllFilters(table);
  } else {
    int field = FindFieldIndex(table, *args.Value("field"));
    if (field < 0) return Fail(context, "no field named '" + *args.Value("field") + "'");
    std::string filter, why;
    if (!args.Flag("clear")) {
      FieldSpec fieldRow;
      ReadField(table, static_cast<uint16_t>(field), fieldRow);
      // A Long Text or Images/Files field is searched for a plain text, never by an operator.
      if (digit != 0 && !HoldsCellValues(fieldRow.type) && fieldRow.type != FieldType::kUnknown) {
        return Fail(context, "a " + std::string(FieldTypeText(fieldRow.type, false)) +
                                 " field takes --expr TEXT, the text to look for");
      }
      std::string typed = digit != 0 ? *args.Value("value") : *args.Value("expr");
      if (MakeCommandFilter(digit, typed, filter, why) != kExitSuccess) return Fail(context, why);
    }
    done = SetFieldFilter(table, static_cast<uint16_t>(field), filter);
  }
  if (!done) return Fail(context, ErrorText(document.book.errorCode));
  return document.Save() ? kExitSuccess : kExitFailure;
}

int RunKey(CommandContext& context) {
  const CommandInfo& self = *FindCommand("key");
  Args args(context.words, {"table"}, {});
  if (!args.ok()) return UsageError(context, self, args.error());
  const std::vector<std::string>& words = args.positionals();
  size_t needed = words.size() >= 2 && words[1] == "rename" ? 4 : 3;
  if (words.size() != needed ||
      (words[1] != "add" && words[1] != "delete" && words[1] != "rename" && words[1] != "select")) {
    return UsageError(context, self,
                      "FILE and one of add NAME, delete NAME, rename OLD NEW, "
                      "select NAME");
  }
  CommandDocument document(context);
  if (!document.Open(words[0], false)) return kExitFailure;
  TableSpec table;
  if (!document.SelectTable(args.Value("table").value_or(""), table)) return kExitFailure;
  const std::string& verb = words[1];
  std::string name, why;
  // Names are stored in the code page; one it cannot hold names no key.
  if (!NameFromTerminal(words[2], "key", name, why)) return Fail(context, why);
  KeyResult result;
  if (verb == "add") {
    result = AddSearchKey(table, name);
  } else if (verb == "select") {
    int list = name == "None" ? kNoneEntry : FindSearchKey(table, name) + 1;
    result = list < 1 && name != "None" ? KeyResult::kNoSuchKey
                                        : SelectSearchKey(table, static_cast<uint16_t>(list));
  } else {
    int key = FindSearchKey(table, name);
    uint16_t index = key > 0 ? static_cast<uint16_t>(key) : 0;
    if (verb == "delete") {
      result = DeleteSearchKey(table, index);
    } else {
      std::string newName;
      if (!NameFromTerminal(words[3], "key", newName, why)) return Fail(context, why);
      result = RenameSearchKey(table, index, newName);
    }
  }
  if (result == KeyResult::kFailed) return Fail(context, ErrorText(document.book.errorCode));
  if (result != KeyResult::kDone) return Fail(context, KeyResultText(result, words[2]));
  return document.Save() ? kExitSuccess : kExitFailure;
}

int RunSort(CommandContext& context) {
  const CommandInfo& self = *FindCommand("sort");
  Args args(context.words, {"table", "by"}, {"none"});
  if (!args.ok()) return UsageError(context, self, args.error());
  if (args.positionals().size() != 1) return UsageError(context, self, "one FILE is needed");
  bool none = args.Flag("none");
  if (none == !args.Values("by").empty()) {
    return UsageError(context, self, "give --by FIELD[:desc] at least once, or --none");
  }
  CommandDocument document(context);
  if (!document.Open(args.positionals()[0], false)) return kExitFailure;
  TableSpec table;
  if (!document.SelectTable(args.Value("table").value_or(""), table)) return kExitFailure;
  std::vector<std::pair<uint16_t, bool>> keys;
  std::string why;
  int status = ReadSortOptions(args, table, keys, why);
  if (status == kExitUsage) return UsageError(context, self, why);
  if (status != kExitSuccess) return Fail(context, why);
  ErrorCode error = SetSortKeys(table, keys);
  if (error != err::kNone) return Fail(context, ErrorText(error));
  return document.Save() ? kExitSuccess : kExitFailure;
}

}  // namespace kelpdex::kpx
