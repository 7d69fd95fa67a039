// A password in force or typed into a dialog. It lives in one fixed buffer that is overwritten when
// the password goes, so that no freed heap block or string copy keeps it after a document closes.
#pragma once

#include <cstddef>
#include <string_view>

namespace kelpdex {

// Overwrites `size` bytes at `data` with zeros in a way the compiler may not drop as a dead store.
void WipeBytes(void* data, size_t size);

class Password {
 public:
  // What the password boxes take; longer input is refused rather than cut.
  static constexpr size_t kMaxLength = 1024;

  Password() = default;
  ~Password() { Wipe(); }
  Password(const Password&) = delete;
  Password& operator=(const Password&) = delete;

  // False, with the password wiped, when `text` is longer than kMaxLength.
  bool Set(std::string_view text);
  // Copies another password without passing through a temporary string.
  void CopyFrom(const Password& other) {
    if (&other != this) Set(other.view());
  }
  // Overwrites the whole buffer, not only the characters in use.
  void Wipe();

  bool empty() const { return size_ == 0; }
  size_t size() const { return size_; }
  const char* c_str() const { return text_; }
  std::string_view view() const { return std::string_view(text_, size_); }

 private:
  char text_[kMaxLength + 1] = {};
  size_t size_ = 0;
};

// The answers of the Database Protection dialog.
struct ProtectionAnswers {
  bool protect = false;        // "&Password protection with" rather than "&No protection"
  bool allowReadOnly = false;  // "&Allow read-only access without the password"
  Password password;
  Password confirmation;
};

// How the Open Password dialog was left.
enum class PasswordChoice : unsigned char {
  kCancel,    // the open ends
  kPassword,  // OK with the password typed
  kReadOnly,  // "Open As &Read-Only": the plain copy, without a password
};

}  // namespace kelpdex
