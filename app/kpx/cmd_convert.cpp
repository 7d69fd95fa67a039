// kpx convert: a document saved under another name and native form, its side file with it.
#include <string>

#include "kpx/kpx_args.h"
#include "kpx/kpx_commands.h"
#include "kpx/kpx_document.h"

namespace kelpdex::kpx {

int RunConvert(CommandContext& context) {
  const CommandInfo& self = *FindCommand("convert");
  Args args(context.words, {"format"}, {});
  if (!args.ok()) return UsageError(context, self, args.error());
  if (args.positionals().size() != 2) return UsageError(context, self, "IN and OUT are needed");
  std::optional<NativeFormat> format;
  if (std::optional<std::string> name = args.Value("format")) {
    format = ParseFormatOption(*name);
    if (!format) return UsageError(context, self, "unknown format '" + *name + "'");
  }
  CommandDocument document(context);
  // Reading a file another process has open is harmless; the copy is written elsewhere.
  if (!document.Open(args.positionals()[0], true)) return kExitFailure;
  // Without --format the copy keeps the form the document came in.
  if (format) document.book.fileFormat = *format;
  if (document.book.protectionMode != 0 && format && IsXmlFormat(*format)) {
    return Fail(context,
                "the XML forms hold no password: unprotect the document first, or "
                "convert it to binary or binary.gz");
  }
  document.prompter.saveChoice = SaveFileChoice{args.positionals()[1], FileFilter::kDefault};
  return document.session.SaveDocumentAs() ? kExitSuccess : kExitFailure;
}

}  // namespace kelpdex::kpx
