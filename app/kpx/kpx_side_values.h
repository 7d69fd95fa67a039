// What the Long Text and Images/Files commands share: the cell that --table, --record and
// --field name.
#pragma once

#include <cstdint>
#include <string>

#include "kpx/kpx_args.h"
#include "kpx/kpx_commands.h"
#include "kpx/kpx_document.h"

namespace kelpdex::kpx {

struct ValueCell {
  TableSpec table;
  uint32_t row = 0;
  uint16_t column = 0;
  std::string sidePath;
};

// Opens FILE (the one positional) and finds the cell. `type` is the field type the command
// needs; `newRecord` lets the record behind the last one be named. Returns kExitSuccess, or the
// exit status after the message.
int OpenValueCell(CommandContext& context, const CommandInfo& self, Args& args,
                  CommandDocument& document, FieldType type, bool readOnly, bool newRecord,
                  ValueCell& cell);

}  // namespace kelpdex::kpx
