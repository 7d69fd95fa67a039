#include "kpx/kpx_cli.h"

#include <algorithm>
#include <cstring>

#include <cstring>
#include <string>
#include <vector>

#include "core/prompter.h"
#include "document/external_documents.h"
#include "kpx/kpx_commands.h"
#include "kpx/terminal_progress.h"

namespace kelpdex::kpx {

namespace {

void PrintHelp(FILE* to) {
  std::fputs(
      "usage: kpx <command> [arguments]\n"
      "       kpx --help | --version\n"
      "       kpx help <command>\n"
      "\n"
      "Works with Kelpdex databases without a window.\n"
      "\n"
      "Commands:\n",
      to);
  // The summaries stand in one column behind the longest name.
  int width = 0;
  for (const CommandInfo& command : Commands()) {
    width = std::max(width, static_cast<int>(std::strlen(command.name)));
  }
  for (const CommandInfo& command : Commands()) {
    std::fprintf(to, "  %-*s %s\n", width, command.name, command.summary);
  }
  std::fputs(
      "\nEvery command that opens a document takes --password-file P for a protected one: the\n"
      "first line of P is the password.\n"
      "\nExit status: 0 success, 1 the operation failed, 2 the command line was wrong.\n",
      to);
}

void PrintCommandHelp(FILE* to, const CommandInfo& command) {
  std::fprintf(to, "usage: kpx %s %s\n\n%s\n", command.name, command.synopsis, command.summary);
}

}  // namespace

int Main(int argc, const char* const* argv, FILE* out, FILE* err) {
  // Messages of the logic reach the user on standard error, one line each.
  ConsolePrompter prompter(err, stdin, "kpx: ");
  Prompter* previous = SetActivePrompter(&prompter);
  struct Restore {
    Prompter* previous;
    ~Restore() { SetActivePrompter(previous); }
  } restore{previous};
  InstallExternalDocuments();

  if (argc < 2) {
    PrintHelp(err);
    return kExitUsage;
  }
  std::string first = argv[1];
  if (first == "--help" || first == "-h") {
    PrintHelp(out);
    return kExitSuccess;
  }
  if (first == "--version") {
    std::fprintf(out, "kpx (Kelpdex) %s\n", KELPDEX_VERSION_STRING);
    return kExitSuccess;
  }
  if (first == "help") {
    if (argc < 3 || std::strcmp(argv[2], "--help") == 0 || std::strcmp(argv[2], "-h") == 0) {
      PrintHelp(out);
      return kExitSuccess;
    }
    const CommandInfo* command = FindCommand(argv[2]);
    if (command == nullptr) {
      std::fprintf(err, "kpx: unknown command '%s'\n", argv[2]);
      PrintHelp(err);
      return kExitUsage;
    }
    PrintCommandHelp(out, *command);
    return kExitSuccess;
  }
  const CommandInfo* command = FindCommand(first);
  if (command == nullptr) {
    std::fprintf(err, "kpx: unknown command '%s'\n", first.c_str());
    PrintHelp(err);
    return kExitUsage;
  }
  CommandContext context{{}, out, err, {}};
  bool optionsEnded = false;
  for (int i = 2; i < argc; ++i) {
    if (std::strcmp(argv[i], "--help") == 0) {
      PrintCommandHelp(out, *command);
      return kExitSuccess;
    }
    // The password file is everyone's option: taken here, so that no command has to list it.
    optionsEnded = optionsEnded || std::strcmp(argv[i], "--") == 0;
    if (!optionsEnded && std::strncmp(argv[i], "--password-file", 15) == 0) {
      if (argv[i][15] == '=') {
        context.passwordFile = argv[i] + 16;
        continue;
      }
      if (argv[i][15] == '\0') {
        if (i + 1 == argc)
          return UsageError(context, *command, "option --password-file needs a value");
        context.passwordFile = argv[++i];
        continue;
      }
    }
    context.words.emplace_back(argv[i]);
  }
  TerminalProgress progress(err, command->name);
  return command->run(context);
}

}  // namespace kelpdex::kpx
