#include "persist/rc4_cipher.h"

#include "core/password.h"

namespace kelpdex {

Md5Digest::~Md5Digest() {
  WipeBytes(&context_, sizeof context_);
}

void Md5Digest::Restart() {
  md5_init(&context_);
}

void Md5Digest::Final(uint8_t out[kDigestSize]) {
  md5_digest(&context_, kDigestSize, out);
}

bool Rc4Cipher::Start(std::string_view password, int bits) {
  Stop();
  if (bits != 40 && bits != 128) return false;
  uint8_t key[kDigestSize];
  Md5Digest hash;
  hash.Update(password.data(), password.size());
  hash.Final(key);
  arcfour_set_key(&state_, static_cast<size_t>(bits / 8), key);
  WipeBytes(key, sizeof key);
  keyed_ = true;
  return true;
}

void Rc4Cipher::Stop() {
  WipeBytes(&state_, sizeof state_);
  keyed_ = false;
}

bool Rc4Cipher::Transform(uint8_t* data, size_t size) {
  return TransformInto(data, data, size);
}

bool Rc4Cipher::TransformInto(const uint8_t* from, uint8_t* to, size_t size) {
  if (!keyed_) return false;
  arcfour_crypt(&state_, size, to, from);
  return true;
}

}  // namespace kelpdex
