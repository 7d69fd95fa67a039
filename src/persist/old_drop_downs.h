// The ".dat" file in which databases of the first binary versions kept their drop-down lists.
#pragma once

#include <string>

#include "store/workbook.h"

namespace kelpdex {

// The ".dat" file beside a document: the document's path with its extension replaced.
std::string OldDropDownPath(const std::string& documentPath);

// Adds the lists of the ".dat" file beside `documentPath` to the workbook's slots. A missing file
// changes nothing and is no failure; false for a file that is not one of ours or is cut short.
bool ReadOldDropDownFile(const std::string& documentPath, Workbook& book);

}  // namespace kelpdex
