// The search's test of Long Text and Images/Files fields: a value waiting to be saved is read
// from the sheet's pending list, a saved one from the document's side file.
#pragma once

#include <string>
#include <string_view>

#include "search/run_filters.h"
#include "store/workbook.h"

namespace kelpdex {

// Whether `needle` occurs in `text`: without regard to case (the code page's upper case) unless
// `matchCase`, and with `wholeWord` only between non-word characters.
bool ContainsText(std::string_view text, std::string_view needle, bool wholeWord, bool matchCase);

class SideFileMatcher : public LongTextMatcher {
 public:
  // `sidePath` is the side file of the document the sheet belongs to; empty for a document never
  // saved, whose values are all pending.
  SideFileMatcher(Worksheet& data, std::string sidePath)
      : data_(data), sidePath_(std::move(sidePath)) {}

  // Long Text: the plain text of the value, rich text reduced to its characters. Images/Files:
  // the name of each file, the first hit deciding.
  bool Matches(const LongTextRecord& record, std::string_view needle, bool wholeWord,
               bool matchCase, ErrorCode& error) override;

 private:
  Worksheet& data_;
  std::string sidePath_;
};

}  // namespace kelpdex
