// What the lifecycle decides from a file name and the clock: the kind of file to open, and what
// the frame's timer should do about AutoSave and AutoClose.
#pragma once

#include <cstdint>
#include <string_view>

#include "core/session_settings.h"

namespace kelpdex {

// How a file is opened: 0 native, 1 text, 2 Excel 2003 XML, 4 dBase IV (the xBase reader
// corrects the dialect from the file's header).
namespace open_kind {
constexpr uint8_t kNative = 0;
constexpr uint8_t kText = 1;
constexpr uint8_t kExcelXml = 2;
constexpr uint8_t kDbase4 = 4;
}  // namespace open_kind

// By the extension, without regard to case: ".kpx" native, ".txt", ".csv", ".tsv" text, ".xml"
// Excel, ".dbf" xBase; anything else is opened as native.
uint8_t GuessFormat(std::string_view path);

enum class TimerAction { kNone, kSave, kClose, kSaveAndClose };

// The timer's decision. AutoSave saves a modified document that has a file once the minutes since
// its last save have run out; AutoClose closes after that many idle minutes, saving first where
// the document is modified. A modified document without a file is never closed by the timer:
// that would lose the user's work.
TimerAction AutoTimerAction(const SessionSettings& settings, bool modified, bool hasFile,
                            double minutesSinceSave, double minutesIdle);

}  // namespace kelpdex
