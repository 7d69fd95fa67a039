// What a native file holds, told from its first 11 bytes read through gzip.
#pragma once

#include <cstdint>
#include <string>

#include "core/document_kind.h"
#include "persist/file_stream.h"

namespace kelpdex {

// kXml to kBinaryCompressed have the values of the NativeFormat they are written in; the others
// are no form a save writes.
enum class NativeFileKind : uint8_t {
  kNone = 0,
  kXml = 1,
  kXmlCompressed = 2,
  kBinary = 3,
  kBinaryCompressed = 4,
  kOlderDatabase = 5,  // the earlier single-table form
  kEmpty = 6,          // a new database is to be made in it
};

// The form a save keeps for a file of this kind: the sniffed form where it is one of the four
// writable ones, else kDefault, which leaves the choice to the session's default.
NativeFormat FormatOfFileKind(NativeFileKind kind);

// 0 none, 1 a read-only copy ahead of the enciphered one, 2 enciphered only.
enum class ProtectionMode : uint8_t { kNone = 0, kReadOnlyCopy = 1, kEncrypted = 2 };

constexpr size_t kBinaryHeaderSize = 11;

// Reads the start of a stream opened for reading with gzip. False with code 33 for a start that
// is none of the known kinds. The stream is left after the 11 bytes (or at its end).
bool DetectFileKind(FileStream& stream, NativeFileKind& kind, ProtectionMode& protection);
// Opens `path`, detects, closes. The stream's error (60, 69) or 33 on failure.
bool SniffFile(const std::string& path, NativeFileKind& kind, ProtectionMode& protection,
               ErrorCode& error);

}  // namespace kelpdex
