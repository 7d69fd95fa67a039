#include "core/strings.h"

#include <cstdio>
#include <string>

namespace kelpdex {

namespace {

struct StringEntry {
  int id;
  const char* text;
};

// Shown to users exactly as they stand, spelling included.
constexpr StringEntry kStringTable[] = {
    {101, "Save changes to %1!s!?"},
    {128, "Kelpdex"},
    {130, "Please enter an integer between %1!d! and %2!d!."},
    {131, "Please enter no more than %1!d! characters."},
    {132, "The minimum margin for the current printer is %1!s!."},
    {133, "Invalid value."},
    {137, "Updating all fomulas in all displayed records may take a long time. Continue?"},
    {146, "The entered passwords do not match. Please re-type your password."},
    {147, "Please enter at least 6 characters as a password."},
    {149,
     "To apply your current password protection and encryption settings for this workbook, you "
     "must use the native binary file format.\n\nClick OK to switch to the binary file format "
     "and to continue saving the workbook."},
    {150,
     "Your current password protection and encryption settings for will be ignored for this file "
     "format."},
    {151, "New Database"},
    {156, "Deleting the table will permanently delete all the records it contains.\nContinue?"},
    {157, "A table with that name already exists. Please enter a unique name."},
    {158, "A field with that name already exists. Please enter a unique field name."},
    {159, "A key with that name already exists. Please enter a unique key name."},
    {165, "A form with that name already exists. Please enter a unique form name."},
    {170,
     "The selected drop-down list will be permanently deleted. (This action can't be undone.)\n"
     "Continue?"},
    {173,
     "Sorry, this type of conversion is not available.\n'Memo/Long Text' and 'Images/Files' "
     "fields can't be changed.\n"},
    {174,
     "The database contains neither 'Long Text' nor 'Images/Files' fields.\nNo compacting is "
     "necessary."},
    {175, "The database doesn't require compacting."},
    {176, "The database was successfully compacted."},
    {177, "Your account does not have permission to update the registry database."},
    {179, "No more occurrences found."},
    {180, "Please enter a valid field name starting with a letter."},
    {181, "Warning!\nYou're about to open an executable file. Continue?"},
};

bool IsDigit(char c) {
  return c >= '0' && c <= '9';
}

// Formats one argument with a printf conversion taken from the pattern. Only the conversion
// letters that make sense for the argument's kind are honoured; anything else prints it plainly.
void AppendFormatted(std::string& out, std::string_view format, const MessageArg& arg) {
  char conversion = format.empty() ? 's' : format.back();
  std::string flags(format.substr(0, format.empty() ? 0 : format.size() - 1));
  for (char c : flags) {
    bool allowed = IsDigit(c) || c == '-' || c == '+' || c == ' ' || c == '#' || c == '.';
    if (!allowed) {
      flags.clear();
      break;
    }
  }
  char buf[128];
  if (arg.isText) {
    if (conversion != 's' || flags.empty()) {
      out.append(arg.text);
      return;
    }
    std::string text(arg.text);
    std::string fmt = "%" + flags + "s";
    int n = std::snprintf(nullptr, 0, fmt.c_str(), text.c_str());
    if (n < 0) return;
    std::string tmp(static_cast<size_t>(n) + 1, '\0');
    std::snprintf(tmp.data(), tmp.size(), fmt.c_str(), text.c_str());
    tmp.resize(static_cast<size_t>(n));
    out += tmp;
    return;
  }
  switch (conversion) {
    case 'd':
    case 'i':
    case 'u':
    case 'x':
    case 'X':
    case 'o': {
      std::string fmt = "%" + flags + "ll" + conversion;
      std::snprintf(buf, sizeof buf, fmt.c_str(), arg.number);
      out += buf;
      return;
    }
    case 'c':
      out += static_cast<char>(arg.number);
      return;
    default:
      std::snprintf(buf, sizeof buf, "%lld", arg.number);
      out += buf;
      return;
  }
}

}  // namespace

const char* LoadStringText(int id) {
  for (const StringEntry& e : kStringTable) {
    if (e.id == id) return e.text;
  }
  return nullptr;
}

std::string FormatMessageText(std::string_view pattern, std::initializer_list<MessageArg> args) {
  std::string out;
  out.reserve(pattern.size() + 32);
  size_t i = 0;
  while (i < pattern.size()) {
    char c = pattern[i];
    if (c != '%' || i + 1 >= pattern.size()) {
      out += c;
      ++i;
      continue;
    }
    char next = pattern[i + 1];
    if (next == '%') {
      out += '%';
      i += 2;
      continue;
    }
    if (!IsDigit(next) || next == '0') {
      out += c;
      ++i;
      continue;
    }
    size_t j = i + 1;
    int number = 0;
    while (j < pattern.size() && IsDigit(pattern[j]) && number < 10) {
      number = number * 10 + (pattern[j] - '0');
      ++j;
    }
    std::string_view format = "s";
    if (j < pattern.size() && pattern[j] == '!') {
      size_t close = pattern.find('!', j + 1);
      if (close != std::string_view::npos) {
        format = pattern.substr(j + 1, close - j - 1);
        j = close + 1;
      }
    }
    if (number >= 1 && static_cast<size_t>(number) <= args.size()) {
      AppendFormatted(out, format, args.begin()[number - 1]);
    }
    i = j;
  }
  return out;
}

std::string FormatString(int id, std::initializer_list<MessageArg> args) {
  const char* text = LoadStringText(id);
  if (text == nullptr) return std::string();
  return FormatMessageText(text, args);
}

}  // namespace kelpdex
