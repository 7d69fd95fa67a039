// A bounded writer into a caller's buffer. Writing past the end is dropped rather than overrun, and
// the text stays NUL terminated, so the formatters never allocate on the hot path.
#pragma once

#include <cstddef>
#include <cstring>
#include <string_view>

namespace kelpdex {

class TextWriter {
 public:
  // `capacity` counts the NUL.
  TextWriter(char* out, size_t capacity) : out_(out), limit_(capacity - 1) { out_[0] = '\0'; }

  void Put(char c) {
    if (length_ < limit_) out_[length_++] = c;
    out_[length_] = '\0';
  }
  void Put(std::string_view text) {
    size_t n = text.size() < limit_ - length_ ? text.size() : limit_ - length_;
    std::memcpy(out_ + length_, text.data(), n);
    length_ += n;
    out_[length_] = '\0';
  }
  void Repeat(char c, int count) {
    for (int i = 0; i < count; ++i) Put(c);
  }
  // printf's "%0*d" with the value 0: `count` zeros, and one zero for a count below 1.
  void Zeros(int count) { Repeat('0', count < 1 ? 1 : count); }
  // A non-negative integer in at least `width` digits.
  void Unsigned(unsigned long long value, int width = 1) {
    char digits[24];
    int n = 0;
    do {
      digits[n++] = static_cast<char>('0' + value % 10);
      value /= 10;
    } while (value != 0);
    Repeat('0', width - n);
    while (n > 0) Put(digits[--n]);
  }

  size_t length() const { return length_; }
  bool full() const { return length_ == limit_; }
  const char* data() const { return out_; }

 private:
  char* out_;
  size_t limit_;
  size_t length_ = 0;
};

}  // namespace kelpdex
