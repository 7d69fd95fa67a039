#include "persist/protection.h"

#include <algorithm>
#include <cstring>

#include "persist/binary_format.h"
#include "persist/file_kind.h"

namespace kelpdex {

namespace {

constexpr size_t kMaxHead = 1 + 255 * 4 + kDigestSize;
// The password check reads in pieces of this size.
constexpr size_t kCheckPiece = 4096;

size_t FillerLength(uint8_t first) {
  return std::max<size_t>(1, static_cast<size_t>(first) * 4);
}

// Reads and deciphers the head; `digest` gets D. False with `error` when the file ends inside the
// head (37: nothing proves the password), the cipher fails (70), or the head does not hold
// together.
bool ReadHead(FileStream& stream, Rc4Cipher& cipher, uint8_t digest[kDigestSize],
              ErrorCode& error) {
  uint8_t head[kMaxHead];
  if (stream.ReadSome(head, 1) != 1) {
    error = stream.ok() ? err::kInvalidPassword : stream.error();
    return false;
  }
  if (!cipher.Transform(head, 1)) {
    error = err::kDecrypt;
    return false;
  }
  size_t rest = FillerLength(head[0]) + kDigestSize;
  if (stream.ReadSome(head + 1, rest) != rest) {
    error = stream.ok() ? err::kInvalidPassword : stream.error();
    return false;
  }
  if (!cipher.Transform(head + 1, rest)) {
    error = err::kDecrypt;
    return false;
  }
  size_t filler = FillerLength(head[0]);
  std::memcpy(digest, head + 1 + filler, kDigestSize);
  // The filler is D[1] throughout in every file a save makes. Holding it to that leaves no byte of
  // the enciphered part whose damage could pass unnoticed.
  bool same = head[0] == digest[0];
  for (size_t i = 0; i < filler; ++i) same &= head[1 + i] == digest[1];
  WipeBytes(head, sizeof head);
  if (!same) error = err::kInvalidPassword;
  return same;
}

}  // namespace

int KeyBitsOfHeader(uint8_t digit) {
  if (digit == '2') return 128;
  if (digit == '1') return 40;
  return 0;
}

bool WriteProtectedDocument(FileStream& stream, const Workbook& book) {
  if (book.password.empty()) {
    stream.SetError(err::kInvalidPassword);
    return false;
  }
  bool copy = book.protectionMode == 1;
  stream.Write(copy ? "32100000000" : "32000000000", kBinaryHeaderSize);
  if (copy) WriteBinaryStream(stream, book, nullptr, true);
  Rc4Cipher cipher;
  if (!cipher.Start(book.password.view(), 128)) {
    stream.SetError(err::kCryptoKeyFailed);
    return false;
  }
  uint8_t digest[kDigestSize];
  ComputeDocumentDigest(book, digest);
  uint8_t head[kMaxHead];
  size_t filler = FillerLength(digest[0]);
  head[0] = digest[0];
  std::memset(head + 1, digest[1], filler);
  std::memcpy(head + 1 + filler, digest, kDigestSize);
  stream.WriteBlock(head, 1 + filler + kDigestSize, &cipher);
  WriteBinaryStream(stream, book, &cipher, false);
  return stream.Flush();
}

bool StartProtectedStream(FileStream& stream, uint64_t start, std::string_view password,
                          uint8_t keyDigit, Rc4Cipher& cipher, ErrorCode& error) {
  int bits = KeyBitsOfHeader(keyDigit);
  if (!cipher.Start(password, bits)) {
    error = err::kCryptoKeyFailed;
    return false;
  }
  uint8_t expected[kDigestSize];
  if (!ReadHead(stream, cipher, expected, error)) return false;
  // The whole rest of the file, deciphered, must give the digest of the head.
  Md5Digest hash;
  uint8_t piece[kCheckPiece];
  for (;;) {
    size_t got = stream.ReadSome(piece, sizeof piece);
    if (got == 0) break;
    if (!cipher.Transform(piece, got)) {
      error = err::kDecrypt;
      return false;
    }
    hash.Update(piece, got);
  }
  WipeBytes(piece, sizeof piece);
  if (!stream.ok()) {
    error = stream.error();
    return false;
  }
  uint8_t found[kDigestSize];
  hash.Final(found);
  if (std::memcmp(found, expected, kDigestSize) != 0) {
    cipher.Stop();
    error = err::kInvalidPassword;
    return false;
  }
  // RC4 cannot be wound back: the key stream starts afresh at the head.
  if (!stream.Rewind() || !stream.Skip(start)) {
    error = stream.ok() ? err::kFileSeek : stream.error();
    return false;
  }
  cipher.Start(password, bits);
  return ReadHead(stream, cipher, expected, error);
}

}  // namespace kelpdex
