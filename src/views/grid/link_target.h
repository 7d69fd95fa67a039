// What a click on a Text / Link cell opens: the displayed text made into an address.
#pragma once

#include <string>
#include <string_view>

namespace kelpdex::views {

// The address to open, or empty when the text is no link. Leading blanks go; a known scheme is
// kept as written, "www." gets "http://", a drive letter "file://", and any other text with "@"
// "mailto:".
std::string LinkTarget(std::string_view displayed);

}  // namespace kelpdex::views
