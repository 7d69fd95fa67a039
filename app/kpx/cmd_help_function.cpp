#include <string>
#include <string_view>

#include "functions/help_table.h"
#include "kpx/kpx_args.h"
#include "kpx/kpx_commands.h"
#include "text/utf8.h"

namespace kelpdex::kpx {

int RunHelpFunction(CommandContext& context) {
  const CommandInfo& self = *FindCommand("help-function");
  Args args(context.words, {}, {});
  if (!args.ok()) return UsageError(context, self, args.error());
  if (args.positionals().size() != 1) return UsageError(context, self, "give one function name");
  std::string_view name = args.positionals()[0];
  // A name as a formula writes it, "left(", is taken too.
  if (name.ends_with("(")) name.remove_suffix(1);
  const HelpEntry* entry = FindHelpEntry(name);
  if (entry == nullptr) {
    std::fprintf(context.err, "kpx: no help entry for the function '%s'\n",
                 std::string(name).c_str());
    return kExitFailure;
  }
  std::fprintf(context.out, "category: %s\n",
               std::string(HelpCategoryText(HelpCategory(*entry))).c_str());
  // The entry's lines (syntax, description, examples, blank lines between) end with CR LF; the
  // terminal gets plain line ends.
  std::string help;
  for (const char* p = entry->help; *p != '\0'; ++p) {
    if (*p != '\r') help += *p;
  }
  std::fputs(text::Cp1252ToUtf8(help).c_str(), context.out);
  return kExitSuccess;
}

}  // namespace kelpdex::kpx
