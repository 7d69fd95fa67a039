#include "search/long_text_matcher.h"

#include "persist/side_values.h"
#include "text/code_page.h"
#include "text/rtf_text.h"

namespace kelpdex {

bool ContainsText(std::string_view text, std::string_view needle, bool wholeWord, bool matchCase) {
  if (needle.empty() || needle.size() > text.size()) return false;
  for (size_t at = 0; at + needle.size() <= text.size(); ++at) {
    size_t i = 0;
    for (; i < needle.size(); ++i) {
      char a = text[at + i], b = needle[i];
      if (matchCase ? a != b : text::CharUpper(a) != text::CharUpper(b)) break;
    }
    if (i < needle.size()) continue;
    if (!wholeWord) return true;
    bool before = at == 0 || !text::IsCharAlphaNumeric(text[at - 1]);
    size_t end = at + needle.size();
    bool after = end == text.size() || !text::IsCharAlphaNumeric(text[end]);
    if (before && after) return true;
  }
  return false;
}

bool SideFileMatcher::Matches(const LongTextRecord& record, std::string_view needle, bool wholeWord,
                              bool matchCase, ErrorCode& error) {
  bool present = false;
  if (record.type == FieldType::kLongText) {
    std::string value;
    if (!ReadLongTextValue(data_, sidePath_, record.row, record.field, value, present, error)) {
      return false;
    }
    return present && ContainsText(text::LongTextPlain(value), needle, wholeWord, matchCase);
  }
  BinaryObjectList files;
  if (!ReadObjectsValue(data_, sidePath_, record.row, record.field, files, present, error)) {
    return false;
  }
  for (const BinaryObjectItem* item = files.first(); present && item != nullptr;
       item = item->next) {
    if (ContainsText(item->name, needle, wholeWord, matchCase)) return true;
  }
  return false;
}

}  // namespace kelpdex
