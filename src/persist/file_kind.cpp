#include "persist/file_kind.h"

#include <cstring>

namespace kelpdex {

NativeFormat FormatOfFileKind(NativeFileKind kind) {
  switch (kind) {
    case NativeFileKind::kXml:
      return NativeFormat::kXml;
    case NativeFileKind::kXmlCompressed:
      return NativeFormat::kXmlCompressed;
    case NativeFileKind::kBinary:
      return NativeFormat::kBinary;
    case NativeFileKind::kBinaryCompressed:
      return NativeFormat::kBinaryCompressed;
    case NativeFileKind::kNone:
    case NativeFileKind::kOlderDatabase:
    case NativeFileKind::kEmpty:
      break;
  }
  return NativeFormat::kDefault;
}

bool DetectFileKind(FileStream& stream, NativeFileKind& kind, ProtectionMode& protection) {
  protection = ProtectionMode::kNone;
  kind = NativeFileKind::kNone;
  if (!stream.Rewind()) return false;
  uint8_t head[kBinaryHeaderSize];
  size_t got = stream.ReadSome(head, sizeof head);
  if (!stream.ok()) return false;
  if (got < kBinaryHeaderSize) {
    kind = NativeFileKind::kEmpty;
    return true;
  }
  bool compressed = stream.compressed();
  if (std::memcmp(head + 4, "Kelpdex", 7) == 0) {
    kind = NativeFileKind::kOlderDatabase;
    return true;
  }
  if (std::memcmp(head, "<?xml", 5) == 0) {
    kind = compressed ? NativeFileKind::kXmlCompressed : NativeFileKind::kXml;
    return true;
  }
  bool digits = head[0] >= '1' && head[0] <= '3';
  for (uint8_t c : head) digits &= c >= '0' && c <= '9';
  if (!digits) {
    stream.SetError(err::kInvalidBinaryFormat);
    return false;
  }
  kind = compressed ? NativeFileKind::kBinaryCompressed : NativeFileKind::kBinary;
  if (head[1] >= '1') {
    protection = head[2] == '1' ? ProtectionMode::kReadOnlyCopy : ProtectionMode::kEncrypted;
  }
  return true;
}

bool SniffFile(const std::string& path, NativeFileKind& kind, ProtectionMode& protection,
               ErrorCode& error) {
  FileStream stream;
  bool ok =
      stream.Open(path, StreamMode::kRead, true, 4096) && DetectFileKind(stream, kind, protection);
  error = stream.error();
  stream.Close();
  return ok;
}

}  // namespace kelpdex
