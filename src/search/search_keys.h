// The search keys of a table: the filter column "Key{Default}" that is in force, and the named
// keys behind it, each a snapshot of the filters at the time it was added. Every operation that
// changes them first hands the table definition to the undo recorder.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "store/catalogue.h"

namespace kelpdex {

// The key list of the toolbar: "(None)", "Default", then the named keys in column order. A key
// index counts from "Default" (0), so list position = key index + 1.
constexpr int kNoneEntry = 0;
// More key columns than this, "Default" among them, and Add quietly does nothing.
constexpr uint16_t kMaxKeyColumns = 100;

enum class KeyResult : uint8_t {
  kDone,
  // Refused without a word in the desktop, which only beeps or stays quiet:
  kEmptyName,
  kTooManyKeys,  // more than kMaxKeyColumns already
  kNoRoom,       // a catalogue cell would be pushed past the last column
  kNameExists,   // message 159
  kNameTooLong,  // the title would pass 1,024 characters
  kNoSuchKey,    // Rename and Delete take only the named keys
  kFailed,       // the workbook's error code says why (21 out of memory, 23 no such sheet)
};

// The one undo step of a change to filters, keys or the sort order, taken before anything
// changes. False with the workbook's code (21) when the recorder refuses it.
bool RecordTableDefinition(const TableSpec& table);

// The names of the list entries past "(None)": "Default" and each named key.
std::vector<std::string> SearchKeyNames(const TableSpec& table);
// A field's filter in key `keyIndex`; empty when it has none.
std::string GetKeyFilterText(const TableSpec& table, uint16_t keyIndex, uint16_t fieldIndex);
// The key index of a name ("Default" included), compared without regard to case; -1 if none.
int FindSearchKey(const TableSpec& table, std::string_view name);

// Stores `filterText` as the field's filter in force; an empty text removes it. False with the
// workbook's code: 21, or 23 past the last field.
bool SetFieldFilter(const TableSpec& table, uint16_t fieldIndex, std::string_view filterText);
// Remove All Filters: every field's filter in force goes.
bool ClearAllFilters(const TableSpec& table);

KeyResult AddSearchKey(const TableSpec& table, std::string_view name);
KeyResult RenameSearchKey(const TableSpec& table, uint16_t keyIndex, std::string_view name);
KeyResult DeleteSearchKey(const TableSpec& table, uint16_t keyIndex);
// `listIndex` is a position of the key list: "(None)" clears the filters in force for good,
// "Default" keeps them, a named key has its filters copied into force. The caller re-runs the
// search.
KeyResult SelectSearchKey(const TableSpec& table, uint16_t listIndex);

}  // namespace kelpdex
