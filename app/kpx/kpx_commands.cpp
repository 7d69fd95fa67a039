#include "kpx/kpx_commands.h"

namespace kelpdex::kpx {

const std::vector<CommandInfo>& Commands() {
  static const std::vector<CommandInfo> commands = {
      {"locale", "[--choice N | --list]",
       "show the regional settings a locale choice gives on this machine", RunLocale},
  };
  return commands;
}

const CommandInfo* FindCommand(const std::string& name) {
  for (const CommandInfo& command : Commands()) {
    if (name == command.name) return &command;
  }
  return nullptr;
}

int UsageError(CommandContext& context, const CommandInfo& command, const std::string& message) {
  std::fprintf(context.err, "kpx: %s\nusage: kpx %s %s\n", message.c_str(), command.name,
               command.synopsis);
  return kExitUsage;
}

}  // namespace kelpdex::kpx
