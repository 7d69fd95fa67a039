// kpx attach, objects and compact: the files of an Images/Files cell, and the side file that
// holds them.
#include <string>

#include "format/generic_date.h"
#include "kpx/kpx_args.h"
#include "kpx/kpx_commands.h"
#include "kpx/kpx_document.h"
#include "kpx/kpx_side_values.h"
#include "persist/side_values.h"
#include "platform/file_meta.h"
#include "platform/os.h"

namespace kelpdex::kpx {

namespace {

// The type word of an object added here is the file's modification time as a generic date,
// which is what the object list shows beside the size.
std::string ModifiedText(const std::string& path) {
  platform::LocalTime at;
  if (!platform::FileModifiedTime(path, at)) return "-";
  return FormatGenericDate(at);
}

// The files the cell holds, pending or saved; false after telling why.
bool ReadCellObjects(CommandContext& context, const ValueCell& cell, BinaryObjectList& list) {
  bool present = false;
  ErrorCode error = err::kNone;
  if (ReadObjectsValue(*cell.table.data, cell.sidePath, cell.row, cell.column, list, present,
                       error)) {
    return true;
  }
  Fail(context, ErrorText(error));
  return false;
}

}  // namespace

int RunAttach(CommandContext& context) {
  const CommandInfo& self = *FindCommand("attach");
  Args args(context.words, {"table", "record", "field"}, {});
  if (args.ok() && args.positionals().size() < 2) {
    return UsageError(context, self, "FILE and at least one PATH are needed");
  }
  CommandDocument document(context);
  ValueCell cell;
  int status = OpenValueCell(context, self, args, document, FieldType::kFiles, false, true, cell);
  if (status != kExitSuccess) return status;
  // The files join those the cell holds already.
  BinaryObjectList list;
  if (!ReadCellObjects(context, cell, list)) return kExitFailure;
  for (size_t i = 1; i < args.positionals().size(); ++i) {
    const std::string& path = args.positionals()[i];
    std::string bytes;
    if (platform::FolderExists(path))
      return Fail(context, path + ": " + ErrorText(err::kFolderPath));
    if (!platform::ReadWholeFile(path, bytes)) {
      return Fail(context, path + ": " + ErrorText(err::kFileOpenRead));
    }
    if (list.Append(FromTerminal(platform::FileNameOf(path)), ModifiedText(path), bytes) ==
        nullptr) {
      return Fail(context, ErrorText(err::kOutOfMemory));
    }
  }
  SetObjectsValue(document.book, *cell.table.data, cell.row, cell.column, list);
  return document.Save() ? kExitSuccess : kExitFailure;
}

int RunObjects(CommandContext& context) {
  const CommandInfo& self = *FindCommand("objects");
  Args args(context.words, {"table", "record", "field", "extract"}, {});
  if (args.ok() && args.positionals().size() != 1) {
    return UsageError(context, self, "one FILE is needed");
  }
  CommandDocument document(context);
  ValueCell cell;
  int status = OpenValueCell(context, self, args, document, FieldType::kFiles, true, false, cell);
  if (status != kExitSuccess) return status;
  BinaryObjectList list;
  if (!ReadCellObjects(context, cell, list)) return kExitFailure;
  std::optional<std::string> folder = args.Value("extract");
  if (folder && !platform::CreateFolder(*folder)) {
    return Fail(context, *folder + ": " + ErrorText(err::kFileOpenWrite));
  }
  for (const BinaryObjectItem* item = list.first(); item != nullptr; item = item->next) {
    std::string name = ToTerminal(item->name);
    std::fprintf(context.out, "%s\t%u\t%s\n", TsvEscaped(name).c_str(), item->size, item->type);
    if (!folder) continue;
    // Only the name's last part: a stored name never places a file outside the folder.
    std::string file = platform::FileNameOf(name);
    if (file.empty() || file == "." || file == "..") file = "object";
    std::string target = platform::JoinPath(*folder, file);
    if (!platform::WriteWholeFile(target, item->Bytes())) {
      return Fail(context, target + ": " + ErrorText(err::kFileOpenWrite));
    }
  }
  return kExitSuccess;
}

int RunCompact(CommandContext& context) {
  const CommandInfo& self = *FindCommand("compact");
  Args args(context.words, {}, {});
  if (!args.ok()) return UsageError(context, self, args.error());
  if (args.positionals().size() != 1) return UsageError(context, self, "one FILE is needed");
  CommandDocument document(context);
  if (!document.Open(args.positionals()[0], false)) return kExitFailure;
  if (document.book.readOnly) {
    return Fail(context, document.book.fileName + ": " + ErrorText(err::kFileInUse));
  }
  auto result = document.session.CompactDatabase();
  return result == DocumentSession::Compaction::kFailed ? kExitFailure : kExitSuccess;
}

}  // namespace kelpdex::kpx
