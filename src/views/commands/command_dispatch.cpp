#include "views/commands/command_dispatch.h"

#include "views/commands/command_table.h"
#include "views/frame/binary_pane.h"
#include "views/frame/grid_panes.h"
#include "views/frame/main_frame.h"
#include "views/grid/grid_view.h"

namespace kelpdex::views {

// Split Window: Horizontally and Vertically toggle their half of the layout, None removes both.
void RunSplitCommand(MainFrame& frame, uint16_t id) {
  GridPanes& panes = frame.panes();
  const bool below = panes.splitHorizontally();
  const bool right = panes.splitVertically();
  const int binary = frame.binaryPanes().split();
  switch (id) {
    case cmd::kSplitTableHorizontal:
      frame.SplitTable(!below, right);
      break;
    case cmd::kSplitTableVertical:
      frame.SplitTable(below, !right);
      break;
    case cmd::kSplitTableNone:
      frame.SplitTable(false, false);
      break;
    case cmd::kSplitBinaryHorizontal:
      frame.SplitBinary(binary == 1 ? 0 : 1);
      break;
    case cmd::kSplitBinaryVertical:
      frame.SplitBinary(binary == 2 ? 0 : 2);
      break;
    case cmd::kSplitBinaryNone:
      frame.SplitBinary(0);
      break;
  }
}

bool DispatchCommand(MainFrame& frame, uint16_t id) {
  const Command* command = FindCommand(id);
  if (command == nullptr || !frame.IsEnabled(id)) return false;
  // A command sees the finished cell: an open edit is committed first. Undo is the exception
  // only while the edit control answers Ctrl+Z itself, which never reaches here.
  frame.grid().CommitEdit(0);
  switch (command->family) {
    case Family::kFile:
      RunFileCommand(frame, id);
      break;
    case Family::kUndo:
    case Family::kClipboard:
    case Family::kConvert:
    case Family::kStepValue:
    case Family::kInsertDate:
    case Family::kLayout:
      RunEditCommand(frame, id);
      break;
    case Family::kTablesFields:
    case Family::kChangeTable:
      RunTableCommand(frame, id);
      break;
    case Family::kRecords:
    case Family::kGoBack:
    case Family::kGoForward:
    case Family::kNavigation:
      RunRecordCommand(frame, id);
      break;
    case Family::kSort:
    case Family::kSearchKeys:
    case Family::kSetOperations:
    case Family::kFilter:
      RunSearchCommand(frame, id);
      break;
    case Family::kFileFormat:
    case Family::kLocale:
    case Family::kSettings:
    case Family::kHelp:
      RunSettingsCommand(frame, id);
      break;
    case Family::kSplit:
      RunSplitCommand(frame, id);
      break;
    case Family::kFormatSheet:
      RunFormatCommand(frame, id);
      break;
    case Family::kNotBuilt:
      return false;
  }
  return true;
}

}  // namespace kelpdex::views
