#include "kpx/kpx_password.h"

#include <cstdio>
#include <cstring>

#include "text/utf8.h"

namespace kelpdex::kpx {

bool ReadPasswordFile(const std::string& path, Password& password, std::string& why) {
  password.Wipe();
  FILE* file = std::fopen(path.c_str(), "rb");
  if (file == nullptr) {
    why = "cannot read the password file " + path;
    return false;
  }
  // Four bytes a character is the most UTF-8 needs; one more tells a line that is too long.
  char line[Password::kMaxLength * 4 + 2];
  size_t size = 0;
  int c;
  while (size < sizeof line && (c = std::fgetc(file)) != EOF && c != '\n') {
    line[size++] = static_cast<char>(c);
  }
  std::fclose(file);
  if (size > 0 && line[size - 1] == '\r') --size;
  size_t replaced = 0;
  std::string text = text::Utf8ToCp1252(std::string_view(line, size), &replaced);
  WipeBytes(line, sizeof line);
  bool ok = false;
  if (text.empty()) {
    why = "the password file " + path + " holds no password on its first line";
  } else if (replaced != 0) {
    why = "the password in " + path +
          " holds characters outside the document's code page (Windows-1252)";
  } else if (size == sizeof line || !password.Set(text)) {
    why = "the password in " + path + " is longer than " + std::to_string(Password::kMaxLength) +
          " characters";
  } else {
    ok = true;
  }
  // The converted copy goes the way the buffer went.
  WipeBytes(text.data(), text.size());
  if (!ok) password.Wipe();
  return ok;
}

}  // namespace kelpdex::kpx
