// The one dispatch: a command id goes to the handler of its family. A handler calls the logic,
// shows a failure itself, and refreshes what the command changed.
#pragma once

#include <cstdint>
#include <string>

namespace kelpdex::views {

class MainFrame;

// False when the id is unknown or the command is disabled (no document, not built yet, ...).
bool DispatchCommand(MainFrame& frame, uint16_t id);

// The handlers, one per group of families.
void RunFileCommand(MainFrame& frame, uint16_t id);  // file, recent files, exit
void RunEditCommand(MainFrame& frame,
                    uint16_t id);  // undo, clipboard, convert, values, dates, layout
void RunTableCommand(MainFrame& frame, uint16_t id);   // tables and fields, change table
void RunRecordCommand(MainFrame& frame, uint16_t id);  // records, stepping, Go To, find and replace
void RunSearchCommand(MainFrame& frame, uint16_t id);  // filters, keys, sort, set operations
void RunSettingsCommand(MainFrame& frame,
                        uint16_t id);  // file format, locales, profiles, shell, help
// Load Profile once its file is chosen: false, with the failure shown, when it cannot be read.
bool LoadProfileIntoFrame(MainFrame& frame, const std::string& path);
void RunFormatCommand(MainFrame& frame, uint16_t id);  // the Format Field sheet
void RunSplitCommand(MainFrame& frame, uint16_t id);   // the table's and the binary pane's splits

}  // namespace kelpdex::views
