#include "core/password.h"

#include <cstring>

namespace kelpdex {

void WipeBytes(void* data, size_t size) {
  // Stores through a volatile pointer are observable behaviour: they survive even when the
  // buffer is about to be freed.
  volatile unsigned char* p = static_cast<volatile unsigned char*>(data);
  for (size_t i = 0; i < size; ++i) p[i] = 0;
}

bool Password::Set(std::string_view text) {
  Wipe();
  if (text.size() > kMaxLength) return false;
  std::memcpy(text_, text.data(), text.size());
  size_ = text.size();
  return true;
}

void Password::Wipe() {
  WipeBytes(text_, sizeof text_);
  size_ = 0;
}

}  // namespace kelpdex
