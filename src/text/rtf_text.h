// The plain text of a Long Text value. A value that begins with "{\rtf" (or "{urtf") is rich
// text, and what a reader sees of it is its characters without the control words, destinations
// such as the font table, or pictures; search, the grid and kpx all go by that text.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace kelpdex::text {

bool IsRichText(std::string_view value);
// Rich text reduced to its characters in the document's code page, paragraphs and line breaks
// as "\n"; any other value as it stands.
std::string LongTextPlain(std::string_view value);
// The start of the plain text as a cell shows it: up to the first line break, at most `max`
// bytes.
std::string LongTextPreview(std::string_view value, size_t max);

}  // namespace kelpdex::text
