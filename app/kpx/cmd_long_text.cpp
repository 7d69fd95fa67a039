// kpx put-text and get-text: the value of a Long Text cell, which lives in the side file.
#include <string>

#include "kpx/kpx_args.h"
#include "kpx/kpx_commands.h"
#include "kpx/kpx_document.h"
#include "kpx/kpx_side_values.h"
#include "persist/side_values.h"
#include "platform/os.h"

namespace kelpdex::kpx {

int RunPutText(CommandContext& context) {
  const CommandInfo& self = *FindCommand("put-text");
  Args args(context.words, {"table", "record", "field", "from", "text"}, {});
  if (args.ok() && args.positionals().size() != 1) {
    return UsageError(context, self, "one FILE is needed");
  }
  if (args.ok() && args.Value("from").has_value() == args.Value("text").has_value()) {
    return UsageError(context, self, "one of --from and --text is needed");
  }
  // Both come as UTF-8, as everything on the command line, and are kept in the code page.
  std::string value;
  if (args.ok() && args.Value("from")) {
    std::string bytes;
    if (!platform::ReadWholeFile(*args.Value("from"), bytes)) {
      return Fail(context, *args.Value("from") + ": " + ErrorText(err::kFileOpenRead));
    }
    value = FromTerminal(bytes);
  } else if (args.ok()) {
    value = FromTerminal(*args.Value("text"));
  }
  CommandDocument document(context);
  ValueCell cell;
  int status =
      OpenValueCell(context, self, args, document, FieldType::kLongText, false, true, cell);
  if (status != kExitSuccess) return status;
  SetLongTextValue(document.book, *cell.table.data, cell.row, cell.column, std::move(value));
  return document.Save() ? kExitSuccess : kExitFailure;
}

int RunGetText(CommandContext& context) {
  const CommandInfo& self = *FindCommand("get-text");
  Args args(context.words, {"table", "record", "field"}, {});
  if (args.ok() && args.positionals().size() != 1) {
    return UsageError(context, self, "one FILE is needed");
  }
  CommandDocument document(context);
  ValueCell cell;
  int status =
      OpenValueCell(context, self, args, document, FieldType::kLongText, true, false, cell);
  if (status != kExitSuccess) return status;
  std::string text;
  bool present = false;
  ErrorCode error = err::kNone;
  if (!ReadLongTextValue(*cell.table.data, cell.sidePath, cell.row, cell.column, text, present,
                         error)) {
    return Fail(context, ErrorText(error));
  }
  std::string shown = ToTerminal(text);
  std::fwrite(shown.data(), 1, shown.size(), context.out);
  return kExitSuccess;
}

}  // namespace kelpdex::kpx
