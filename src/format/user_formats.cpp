#include "format/user_formats.h"

#include <memory>

#include "format/format_string.h"
#include "format/number_style.h"

namespace kelpdex {

namespace {

// Formats that cover what the style kinds cannot say on their own.
const char* const kBuiltIn[] = {
    "0",
    "0.00",
    "#,##0",
    "#,##0.00",
    "#,##0;[red]-#,##0",
    "#,##0.00;[red]-#,##0.00",
    "0%",
    "0.00%",
    "0.00E+00",
    "##0.0E+0",
    "# ?/?",
    "# ?\?/??",
    "yyyy-mm-dd",
    "dd.mm.yyyy",
    "mmm d, yyyy",
    "dddd",
    "hh:mm:ss",
    "[h]:mm:ss",
    "mm:ss.00",
    "@",
};

}  // namespace

UserFormatList::UserFormatList() {
  ResetToBuiltIn();
}

void UserFormatList::ResetToBuiltIn() {
  formats_.assign(std::begin(kBuiltIn), std::end(kBuiltIn));
  builtIn_ = formats_.size();
  names_.assign(builtIn_, std::string());
}

bool UserFormatList::Add(std::string_view text, std::string_view name) {
  if (text.size() > kFormatTextMax) return false;
  for (const std::string& known : formats_) {
    if (known == text) return true;
  }
  if (formats_.size() - builtIn_ >= kMaxUserFormats) return false;
  auto compiled = std::make_unique<CompiledFormat>();
  if (!ParseFormatString(text, *compiled)) return false;
  formats_.emplace_back(text);
  names_.emplace_back(name);
  return true;
}

std::vector<std::string> UserFormatList::UserFormats() const {
  return std::vector<std::string>(formats_.begin() + static_cast<std::ptrdiff_t>(builtIn_),
                                  formats_.end());
}

UserFormatList& UserNumberFormats() {
  static UserFormatList list;
  return list;
}

}  // namespace kelpdex
