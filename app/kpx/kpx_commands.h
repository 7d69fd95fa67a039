// The kpx subcommands. Each one reads its own words, writes results to `out` in UTF-8 and
// failures to `err`, and returns the process's exit status.
#pragma once

#include <cstdio>
#include <string>
#include <vector>

namespace kelpdex::kpx {

constexpr int kExitSuccess = 0;
constexpr int kExitFailure = 1;  // the operation failed; the message came from the error table
constexpr int kExitUsage = 2;    // the command line was wrong

struct CommandContext {
  std::vector<std::string> words;  // the words after the subcommand's name
  FILE* out;
  FILE* err;
  // --password-file, which every command that opens a document takes; empty when not given.
  std::string passwordFile;
};

struct CommandInfo {
  const char* name;
  const char* synopsis;  // the words after "kpx <name>"
  const char* summary;
  int (*run)(CommandContext& context);
};

// Every subcommand, in the order --help lists them.
const std::vector<CommandInfo>& Commands();
const CommandInfo* FindCommand(const std::string& name);

// Writes "kpx: <message>" and a pointer to the command's help to `err`; returns kExitUsage.
int UsageError(CommandContext& context, const CommandInfo& command, const std::string& message);

int RunNew(CommandContext& context);
int RunInfo(CommandContext& context);
int RunDump(CommandContext& context);
int RunSet(CommandContext& context);
int RunAddTable(CommandContext& context);
int RunAddField(CommandContext& context);
int RunDeleteField(CommandContext& context);
int RunRenameTable(CommandContext& context);
int RunEval(CommandContext& context);
int RunRecalc(CommandContext& context);
int RunConvert(CommandContext& context);
int RunLocale(CommandContext& context);
int RunFilter(CommandContext& context);
int RunKey(CommandContext& context);
int RunSort(CommandContext& context);
int RunDuplicates(CommandContext& context);
int RunComplement(CommandContext& context);
int RunFind(CommandContext& context);
int RunReplace(CommandContext& context);
int RunHelpFunction(CommandContext& context);
int RunProtect(CommandContext& context);
int RunUnprotect(CommandContext& context);
int RunPutText(CommandContext& context);
int RunGetText(CommandContext& context);
int RunAttach(CommandContext& context);
int RunObjects(CommandContext& context);
int RunCompact(CommandContext& context);

}  // namespace kelpdex::kpx
