// The native binary document: an 11-digit header, then count-prefixed sections in a fixed order,
// little-endian throughout. Blocks of cells and style runs travel as their used bytes, so a load
// is a series of block reads.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "persist/file_stream.h"
#include "store/workbook.h"

namespace kelpdex {

namespace binary {
constexpr uint8_t kVersion = 3;
constexpr uint32_t kUserNameSize = 128;
constexpr uint32_t kDateSize = 50;
constexpr uint32_t kColumnRecordSize = 6;
constexpr uint32_t kOldDropDownRecordSize = 34;
}  // namespace binary

// Writes the header "30000000000" and the stream: the document as it is. A document with a
// protection mode goes out protected instead (see WriteProtectedDocument).
bool WriteBinaryDocument(FileStream& stream, const Workbook& book);
// The stream alone, enciphered when `cipher` is given. `readOnlyCopy` writes every formula as its
// value and clears the Auto flags: the copy a protected file carries in front of its cipher text.
bool WriteBinaryStream(FileStream& stream, const Workbook& book, StreamCipher* cipher,
                       bool readOnlyCopy);

// The MD5 of exactly the bytes WriteBinaryStream would write without a cipher, found by walking the
// document once more instead of keeping a copy of the stream.
void ComputeDocumentDigest(const Workbook& book, uint8_t digest[16]);

// The pieces other formats carry in the native form. The workbook's drop-down lists, fonts and
// styles, as the stream holds them, appended to `out`.
void WriteBinaryStyles(const Workbook& book, std::string& out);
// One sheet's parts besides its cells (containers, column formats, row words, style runs, page
// and sheet settings) as the stream holds them, appended to `out`; style ids are the workbook's.
void WriteBinarySheetLayout(const Worksheet& sheet, std::string& out);
// Reads what WriteBinaryStyles wrote into `lists` and `styles`, which it replaces. False for bytes
// that do not hold together, or that go on past the styles.
bool ReadBinaryStyles(std::string_view bytes, DropDownLists& lists, StyleTable& styles);
// Reads what WriteBinarySheetLayout wrote into `sheet`, whose formats, containers and settings it
// replaces and whose cells it leaves; a style run must name a style below `styleCount`. False
// with `error` set: 33 for bytes that do not hold together, 21 out of memory. The sheet may then
// hold part of the layout.
bool ReadBinarySheetLayout(std::string_view bytes, Worksheet& sheet, uint16_t styleCount,
                           ErrorCode& error);

// Reads a whole binary file from its first byte into `book`, which is replaced only when the read
// succeeds. `password` null: an enciphered file fails with 37, and a file carrying a read-only
// copy opens that copy, read-only. With a password the enciphered stream is read once it proved
// the password, and the password stays in the workbook. The workbook's protection mode is the
// file's. False with the workbook's errorCode set: the stream's own error, 33 for a stream that
// does not hold together, 44 for a table whose catalogue is missing, 36 and 37 as the protection
// check gives them.
bool ReadBinaryDocument(FileStream& stream, Workbook& book, const char* password = nullptr,
                        const std::string& documentPath = std::string());

}  // namespace kelpdex
