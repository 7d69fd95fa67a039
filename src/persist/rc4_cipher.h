// RC4 and MD5 as a protected binary document uses them. The key is made the way the platform's
// crypto service makes an RC4 key from a password without salt: the first 16 bytes (5 for a
// 40-bit key) of the MD5 of the password's bytes.
#pragma once

#include <nettle/arcfour.h>
#include <nettle/md5.h>

#include <cstddef>
#include <cstdint>
#include <string_view>

#include "persist/stream_cipher.h"

namespace kelpdex {

constexpr size_t kDigestSize = 16;

class Md5Digest {
 public:
  Md5Digest() { Restart(); }
  ~Md5Digest();
  Md5Digest(const Md5Digest&) = delete;
  Md5Digest& operator=(const Md5Digest&) = delete;

  void Restart();
  void Update(const void* data, size_t size) {
    md5_update(&context_, size, static_cast<const uint8_t*>(data));
  }
  // The digest of everything given since the last restart; starts over afterwards.
  void Final(uint8_t out[kDigestSize]);

 private:
  md5_ctx context_;
};

// One RC4 key stream, run on across every call from the first byte of the enciphered part to the
// last. Its state, which the password determines, is overwritten when the cipher goes.
class Rc4Cipher : public StreamCipher {
 public:
  Rc4Cipher() = default;
  ~Rc4Cipher() override { Stop(); }
  Rc4Cipher(const Rc4Cipher&) = delete;
  Rc4Cipher& operator=(const Rc4Cipher&) = delete;

  // Derives the key and starts the key stream afresh. False for a key length other than 40 or
  // 128 bits.
  bool Start(std::string_view password, int bits);
  // Forgets the key: later transforms fail.
  void Stop();
  bool keyed() const { return keyed_; }

  bool Transform(uint8_t* data, size_t size) override;
  // The same from `from` into `to`, which may be the same bytes.
  bool TransformInto(const uint8_t* from, uint8_t* to, size_t size);

 private:
  arcfour_ctx state_;
  bool keyed_ = false;
};

}  // namespace kelpdex
