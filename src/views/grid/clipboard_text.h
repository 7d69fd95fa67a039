// The clipboard's plain text form of a block of cells: records on lines ended by CR LF, fields
// divided by one tab, a text holding a tab or a double quote put in double quotes with its own
// quotes doubled. Reading reverses it.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace kelpdex::views {

void AppendClipboardCell(std::string& out, std::string_view cell);
// The cells of each line; a line break inside quotes stays in its cell. Each cell is cut at
// `cellLimit` characters.
std::vector<std::vector<std::string>> ParseClipboardText(std::string_view text, size_t cellLimit);

}  // namespace kelpdex::views
