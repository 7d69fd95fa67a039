// Base64 with the standard alphabet and '=' padding, as used by the side file, mail parts and the
// stored SMTP credentials.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace kelpdex::text {

// One unbroken run of Base64.
std::string Base64Encode(std::string_view bytes);
// Lines of at most 76 characters, each encoding a group of at most 57 bytes and ending in CR LF.
// Empty input gives an empty string.
std::string Base64EncodeLines(std::string_view bytes);
void AppendBase64Lines(std::string& out, std::string_view bytes);
// Decodes into `out` (replacing its contents), skipping CR, LF, blanks and tabs. Returns false on
// a character outside the alphabet, misplaced padding, or a length that is not a whole number of
// quads once blanks are removed; `out` then holds a meaningless partial result.
bool Base64Decode(std::string_view text, std::string& out);
// Decodes whole quads with no blanks between them into `out`, which must hold length / 4 * 3
// bytes, and sets `written`. `=` may only pad the last quad, and `padded` tells that it did:
// nothing may follow it. False on any other character or a length that is no multiple of 4.
bool Base64DecodeQuads(const char* text, size_t length, uint8_t* out, size_t& written,
                       bool& padded);

}  // namespace kelpdex::text
