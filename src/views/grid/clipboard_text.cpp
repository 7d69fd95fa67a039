#include "views/grid/clipboard_text.h"

namespace kelpdex::views {

void AppendClipboardCell(std::string& out, std::string_view cell) {
  if (cell.find_first_of("\t\"") == std::string_view::npos) {
    out.append(cell);
    return;
  }
  out += '"';
  for (char c : cell) {
    if (c == '"') out += '"';
    out += c;
  }
  out += '"';
}

std::vector<std::vector<std::string>> ParseClipboardText(std::string_view text, size_t cellLimit) {
  std::vector<std::vector<std::string>> lines;
  std::vector<std::string> line;
  std::string cell;
  bool quoted = false, cellStarted = false;
  auto endCell = [&] {
    if (cell.size() > cellLimit) cell.resize(cellLimit);
    line.push_back(std::move(cell));
    cell.clear();
    cellStarted = false;
  };
  for (size_t i = 0; i < text.size(); ++i) {
    char c = text[i];
    if (quoted) {
      if (c == '"' && i + 1 < text.size() && text[i + 1] == '"') {
        cell += '"';
        ++i;
      } else if (c == '"') {
        quoted = false;
      } else {
        cell += c;
      }
      continue;
    }
    if (c == '"' && !cellStarted && cell.empty()) {
      quoted = true;
      cellStarted = true;
    } else if (c == '\t') {
      endCell();
    } else if (c == '\r' || c == '\n') {
      if (c == '\r' && i + 1 < text.size() && text[i + 1] == '\n') ++i;
      endCell();
      lines.push_back(std::move(line));
      line.clear();
    } else {
      cell += c;
      cellStarted = true;
    }
  }
  // A last line without its line break still counts.
  if (cellStarted || !cell.empty() || !line.empty()) {
    endCell();
    lines.push_back(std::move(line));
  }
  return lines;
}

}  // namespace kelpdex::views
