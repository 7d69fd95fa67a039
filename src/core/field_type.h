// The types of a table's fields. Here rather than with the catalogue because the New Database
// wizard's answers, which the Prompter carries, name them too.
#pragma once

#include <cstdint>

namespace kelpdex {

// The values are those of a sheet object's type: Long Text and Images/Files are bits apart.
enum class FieldType : uint8_t {
  kUnknown = 0,  // a catalogue row whose type text is none of the known ones
  kText = 1,
  kNumber = 2,
  kLongText = 4,
  kFiles = 8,  // "Images/Files"
};

// Text and Number fields hold their values in the data sheet: they are typed into, defaulted and
// calculated. Long Text and Images/Files hold a reference to the side file.
constexpr bool HoldsCellValues(FieldType type) {
  return type == FieldType::kText || type == FieldType::kNumber;
}

}  // namespace kelpdex
