// Every command of the frame in one table: its id, menu text with mnemonic, accelerators, the
// menu it stands in, the family whose handler runs it and the rule that enables it. Menus,
// toolbars and QActions are all made from this table.
#pragma once

#include <cstdint>
#include <span>

namespace kelpdex::views {

// Where a command shows. kPopup commands have no main menu entry (toolbars, context menus).
enum class MenuPlace : uint8_t {
  kFile,
  kEdit,
  kConvert,  // Edit > Convert
  kInsert,
  kFormat,
  kDatabase,
  kTools,
  kSplit,       // Tools > Split Window
  kFileFormat,  // Tools > File Format
  kSettings,
  kLocales,  // Settings > Locales
  kHelp,
  kPopup,
};

// One handler per family; a handler takes several ids and looks at the id.
enum class Family : uint8_t {
  kFile,
  kUndo,
  kClipboard,
  kConvert,
  kStepValue,
  kInsertDate,
  kTablesFields,
  kGoBack,
  kGoForward,
  kChangeTable,
  kFormatSheet,
  kLayout,
  kSort,
  kFileFormat,
  kSearchKeys,
  kLocale,
  kSetOperations,
  kFilter,
  kRecords,
  kNavigation,
  kSplit,
  kSettings,
  kHelp,
  kNotBuilt,  // printing, mail, forms, images: shown, never enabled
};

enum class EnableRule : uint8_t {
  kAlways,
  kDocument,   // a document is open
  kNamedFile,  // a document with a file of its own (Reload)
  kWritable,   // open and not read-only: Save, Save As, Compact, Protection
  kFields,     // the current table has fields
  kUndo,
  kRedo,
  kPaste,     // the clipboard holds text or files
  kSortKeys,  // a field of the current table has a sort key
  kNotBuilt,
};

struct Command {
  uint16_t id;
  const char* text;  // menu text with its mnemonic; nullptr for a separator
  // Accelerators in QKeySequence's portable form, ", " between alternatives; empty for none.
  const char* keys;
  MenuPlace place;
  Family family;
  EnableRule rule;
  bool checkable;
  // Keys the menu shows but the views handle themselves (F12, Del, Ctrl+Enter).
  const char* shownKeys;
};

namespace cmd {
constexpr uint16_t kNew = 57600;
constexpr uint16_t kOpen = 57601;
constexpr uint16_t kClose = 57602;
constexpr uint16_t kSave = 57603;
constexpr uint16_t kSaveAs = 57604;
constexpr uint16_t kReload = 32802;
constexpr uint16_t kCompact = 33138;
constexpr uint16_t kProtection = 32803;
constexpr uint16_t kOptions = 32983;
constexpr uint16_t kRecentFirst = 57616;
constexpr uint16_t kRecentLast = 57631;  // the range ends here: 57632 is Delete
constexpr uint16_t kExit = 57665;
constexpr uint16_t kUndo = 57643;
constexpr uint16_t kRedo = 57644;
constexpr uint16_t kCut = 57635;
constexpr uint16_t kCopy = 57634;
constexpr uint16_t kPaste = 57637;
constexpr uint16_t kDelete = 57632;
constexpr uint16_t kFindReplace = 57636;
constexpr uint16_t kFindNext = 33148;  // the find bar's button
constexpr uint16_t kReplace = 33149;
constexpr uint16_t kReplaceAll = 33150;
constexpr uint16_t kAddTable = 33066;
constexpr uint16_t kRenameTable = 33067;
constexpr uint16_t kAddField = 33068;
constexpr uint16_t kDeleteTable = 33069;
constexpr uint16_t kDeleteField = 33071;
constexpr uint16_t kModifyField = 33072;
constexpr uint16_t kInsertField = 33114;
constexpr uint16_t kMoveFieldLeft = 33098;
constexpr uint16_t kMoveFieldRight = 33099;
constexpr uint16_t kNextTable = 33096;
constexpr uint16_t kPreviousTable = 33097;
constexpr uint16_t kSetSearchFilter = 33113;
constexpr uint16_t kRemoveAllFilters = 33146;
constexpr uint16_t kFindDuplicates = 33143;
constexpr uint16_t kFindComplement = 33145;
constexpr uint16_t kSort = 32820;
constexpr uint16_t kAscending = 33073;
constexpr uint16_t kDescending = 33074;
constexpr uint16_t kNoSorting = 33075;
constexpr uint16_t kGoTo = 32807;
constexpr uint16_t kInsertRecords = 32782;
constexpr uint16_t kRemoveRecords = 32783;
constexpr uint16_t kUpdateFormulas = 33139;
constexpr uint16_t kDefaultValues = 33140;
constexpr uint16_t kSplitTableHorizontal = 32809;
constexpr uint16_t kSplitTableNone = 32810;
constexpr uint16_t kSplitTableVertical = 32811;
constexpr uint16_t kSplitBinaryHorizontal = 32812;
constexpr uint16_t kSplitBinaryVertical = 32813;
constexpr uint16_t kSplitBinaryNone = 32814;
constexpr uint16_t kFormatXml = 32992;
constexpr uint16_t kFormatDefault = 32996;
constexpr uint16_t kLocaleGeneric = 33018;
constexpr uint16_t kLocaleUser = 33019;
constexpr uint16_t kLocaleSystem = 33021;
constexpr uint16_t kRowHeight = 33095;
constexpr uint16_t kAutoRowHeight = 32815;
constexpr uint16_t kColumnWidth = 32816;
constexpr uint16_t kAutoColumnWidth = 32817;
constexpr uint16_t kGoTop = 32778;
constexpr uint16_t kStepBack = 32779;
constexpr uint16_t kStepForward = 32780;
constexpr uint16_t kGoBottom = 32781;
constexpr uint16_t kSearchToolbar = 32785;
constexpr uint16_t kGoToBox = 33062;
constexpr uint16_t kFreezeFields = 33151;
}  // namespace cmd

std::span<const Command> CommandTable();
// The entry of `id`, or nullptr; a recent-file id answers with the range's entry.
const Command* FindCommand(uint16_t id);
constexpr bool IsRecentFileId(uint16_t id) {
  return id >= cmd::kRecentFirst && id <= cmd::kRecentLast;
}

}  // namespace kelpdex::views
