#include "exchange/xbase_field_lines.h"

#include <algorithm>
#include <cstdio>

namespace kelpdex {

int XbaseTypeIndex(char letter) {
  for (int i = 0; i < static_cast<int>(std::size(kXbaseTypeChoices)); ++i) {
    if (kXbaseTypeChoices[i].letter == letter) return i;
  }
  return -1;
}

std::string XbaseFieldLine(int number, const XbaseField& field) {
  const char* kind = nullptr;
  switch (field.type) {
    case 'C':
      kind = "Text";
      break;
    case 'F':
      kind = "Float";
      break;
    case 'L':
      kind = "Logical";
      break;
    case 'D':
      kind = "Date";
      break;
    case 'M':
      kind = "Memo";
      break;
    case 'Y':
      kind = "Currency";
      break;
    case 'I':
      kind = "Integer";
      break;
    case 'B':
      kind = "Binary";
      break;
    case 'G':
      kind = "Ole objects";
      break;
    case 'P':
      kind = "Memo/Picture";
      break;
    case 'T':
      kind = "DateTime";
      break;
    default:
      break;
  }
  char line[96];
  if (field.type == 'N') {
    std::snprintf(line, sizeof line, "%d.  %s [Numeric: %d/%d]", number, field.name.c_str(),
                  field.length, field.decimals);
  } else if (kind != nullptr) {
    std::snprintf(line, sizeof line, "%d.  %s [%s: %d]", number, field.name.c_str(), kind,
                  field.length);
  } else {
    std::snprintf(line, sizeof line, "%d.  %s [Unknow]", number, field.name.c_str());
  }
  return line;
}

std::string XbaseSummaryLine(const XbaseHeader& header) {
  char line[96];
  std::snprintf(line, sizeof line, "Summary: %u record(s), updated on %d/%d/%d",
                static_cast<unsigned>(header.recordCount), 1900 + header.year, header.month,
                header.day);
  return line;
}

bool ReadXbaseFileHeader(const std::string& path, XbaseHeader& header, ErrorCode& error) {
  FileStream in;
  if (!in.Open(path, StreamMode::kRead, false)) {
    error = in.error();
    return false;
  }
  return ReadXbaseHeader(in, header, error);
}

void FitXbaseField(XbaseField& field) {
  switch (field.type) {
    case 'D':
      field.length = 8;
      field.decimals = 0;
      break;
    case 'L':
      field.length = 1;
      field.decimals = 0;
      break;
    case 'M':
      field.length = 10;
      field.decimals = 0;
      break;
    case 'N':
    case 'F':
      // Room for a sign, a point and at least one digit before it.
      field.length = std::clamp<uint16_t>(field.length, 1, 20);
      field.decimals = field.length < 3 ? 0 : std::min<uint8_t>(field.decimals, field.length - 2);
      break;
    default:
      field.length = std::clamp<uint16_t>(field.length, 1, 254);
      field.decimals = 0;
      break;
  }
}

}  // namespace kelpdex
