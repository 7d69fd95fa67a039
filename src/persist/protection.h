// Password protection of the binary forms. The plain stream is enciphered whole with RC4, behind
// a head that carries the MD5 digest of the plain stream; that digest is the only proof of a
// password, so a wrong password is found by deciphering the whole file.
//
// The enciphered part: D[0], then max(1, D[0] * 4) copies of D[1] so that the data starts at a
// place that differs from file to file, then the 16 bytes of D, then the stream.
#pragma once

#include <cstdint>
#include <string_view>

#include "core/error_code.h"
#include "persist/file_stream.h"
#include "persist/rc4_cipher.h"
#include "store/workbook.h"

namespace kelpdex {

// The key length a header's second digit gives: '2' 128 bits, '1' 40 bits; 0 for anything else,
// which no key can be made for.
int KeyBitsOfHeader(uint8_t digit);

// Writes a protected document whole: the header ("32100000000" with the read-only copy of mode 1,
// "32000000000" for mode 2), the copy, the enciphered head and stream, always with a 128-bit key,
// and flushes. False with the stream's error: 37 when the document has no password to derive the
// key from, 71 when enciphering failed, or the stream's own.
bool WriteProtectedDocument(FileStream& stream, const Workbook& book);

// Proves `password` against the enciphered part, which starts `start` bytes into the (inflated)
// file: deciphers everything to the end of the file into a digest and compares it with the head's.
// On success the stream stands again at the first byte of the plain stream, behind the head, with
// `cipher` ready for it. False with `error`: 36 no key for this header, 37 a wrong password or a
// part too short to hold its head, 70 a failed decipher, or the stream's own.
bool StartProtectedStream(FileStream& stream, uint64_t start, std::string_view password,
                          uint8_t keyDigit, Rc4Cipher& cipher, ErrorCode& error);

}  // namespace kelpdex
