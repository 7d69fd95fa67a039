#include "views/grid/link_target.h"

#include "text/code_page.h"

namespace kelpdex::views {

namespace {

constexpr const char* kSchemes[] = {"http:", "https:", "file:", "mailto:", "ftp:",      "gopher:",
                                    "nntp:", "news:",  "wais:", "telnet:", "prospero:", "res:"};

bool StartsWithNoCase(std::string_view text, std::string_view prefix) {
  if (text.size() < prefix.size()) return false;
  for (size_t i = 0; i < prefix.size(); ++i) {
    if (text::CharUpper(text[i]) != text::CharUpper(prefix[i])) {
      return false;
    }
  }
  return true;
}

bool IsLetter(char c) {
  return text::IsCharAlpha(c);
}

}  // namespace

std::string LinkTarget(std::string_view displayed) {
  size_t start = displayed.find_first_not_of(' ');
  if (start == std::string_view::npos) return {};
  std::string_view text = displayed.substr(start);
  for (const char* scheme : kSchemes) {
    if (StartsWithNoCase(text, scheme)) return std::string(text);
  }
  if (StartsWithNoCase(text, "www.")) return "http://" + std::string(text);
  if (text.size() >= 2 && IsLetter(text[0]) && text[1] == ':') return "file://" + std::string(text);
  if (text.find('@') != std::string_view::npos) return "mailto:" + std::string(text);
  return {};
}

}  // namespace kelpdex::views
