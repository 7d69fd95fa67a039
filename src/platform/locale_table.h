// The 134 regional-settings choices: 0 generic, 1 system default, 2 user default, then the
// languages in the order the options dialog lists them.
#pragma once

#include <cstdint>

namespace kelpdex::platform {

constexpr int kLocaleChoiceCount = 134;
constexpr uint32_t kLocaleSystemDefault = 0x0800;
constexpr uint32_t kLocaleUserDefault = 0x0400;

// The LCID of a choice: 0 for choice 0 (generic, no LCID) and for a choice out of range.
uint32_t LocaleIdOfChoice(int choice);
// The menu text of a choice ("Generic (Fixed)", "System Default", "User Default", then language
// names such as "German (Germany)"); nullptr out of range.
const char* LocaleChoiceName(int choice);
// The choice whose LCID is `lcid`, or -1 when the table has none.
int FindLocaleChoice(uint32_t lcid);
// The POSIX locale name ("de_DE") of a language LCID, nullptr for an LCID not in the table and
// for the two defaults.
const char* PosixLocaleName(uint32_t lcid);

}  // namespace kelpdex::platform
