// kpx convert: a document saved under another name and native form, its side file with it.
#include <string>

#include "kpx/kpx_args.h"
#include "kpx/kpx_commands.h"
#include "kpx/kpx_document.h"
#include "persist/document_file.h"

namespace kelpdex::kpx {

int RunConvert(CommandContext& context) {
  const CommandInfo& self = *FindCommand("convert");
  Args args(context.words, {"format"}, {});
  if (!args.ok()) return UsageError(context, self, args.error());
  if (args.positionals().size() != 2) return UsageError(context, self, "IN and OUT are needed");
  uint8_t format = 0;
  if (std::optional<std::string> name = args.Value("format")) {
    format = ParseFormatOption(*name);
    if (format == 0) return UsageError(context, self, "unknown format '" + *name + "'");
  }
  CommandDocument document(context);
  // Reading a file another process has open is harmless; the copy is written elsewhere.
  if (!document.Open(args.positionals()[0], true)) return kExitFailure;
  // Without --format the copy keeps the form the document came in.
  if (format != 0) document.book.fileFormat = format;
  document.prompter.saveChoice = SaveFileChoice{args.positionals()[1], 0};
  return document.session.SaveDocumentAs() ? kExitSuccess : kExitFailure;
}

}  // namespace kelpdex::kpx
