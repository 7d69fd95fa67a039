// The lists of the Options dialog and how a setting maps to a list position: the minutes of
// AutoSave and AutoClose, the moves after Enter and the default file formats.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "core/document_kind.h"

namespace kelpdex {

// "(No action)", "Move down by one record", ... by WhenEnterPressed.
extern const char* const kEnterActionTexts[5];
// "XML", "XML compressed (gzipped)", "Binary", "Binary compressed (gzipped)": formats 1 to 4.
extern const char* const kFileFormatTexts[4];

// The minutes offered, 0 ("Never") first and ascending; a value a profile brought that is no
// step of its own is put in its place, so the list always shows the setting in force.
std::vector<int32_t> MinuteChoices(int32_t current);
// "Never", or "After %d %s" with "min" for one and "mins" otherwise; AutoClose's entries add
// " (of inactivity)".
std::string MinutesText(int32_t minutes, bool inactivity);
// The list position of a default file format and back; kDefault reads as XML.
int FileFormatIndex(NativeFormat format);
NativeFormat FileFormatOfIndex(int index);

}  // namespace kelpdex
