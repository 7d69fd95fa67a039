// How the xBase field dialogs show a file's or an export's fields: one line per field, the
// types a user can choose, and the summary line of a file about to be read.
#pragma once

#include <string>

#include "exchange/xbase.h"

namespace kelpdex {

// The types an export field can take, in the order of the dialog's list.
struct XbaseTypeChoice {
  const char* name;
  char letter;
};
inline constexpr XbaseTypeChoice kXbaseTypeChoices[] = {{"Character", 'C'}, {"Numeric", 'N'},
                                                        {"Float", 'F'},     {"Logical", 'L'},
                                                        {"Date", 'D'},      {"Memo", 'M'}};

// The place of a type letter in kXbaseTypeChoices, or -1 for a type an export cannot write.
int XbaseTypeIndex(char letter);

// "1.  Name [Text: 20]" and the other forms, `number` counted from 1. A numeric field shows its
// decimals; a type no line form names is "[Unknow]".
std::string XbaseFieldLine(int number, const XbaseField& field);

// "Summary: 12 record(s), updated on 2024/5/17".
std::string XbaseSummaryLine(const XbaseHeader& header);

// Reads the header of the .dbf at `path` for the import dialog; false with `error` set.
bool ReadXbaseFileHeader(const std::string& path, XbaseHeader& header, ErrorCode& error);

// Keeps an edited field writable: the length and decimals a type cannot hold are brought into
// its range, and a Date, Logical or Memo field takes its fixed length.
void FitXbaseField(XbaseField& field);

}  // namespace kelpdex
