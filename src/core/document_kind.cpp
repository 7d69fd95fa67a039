#include "core/document_kind.h"

#include "text/code_page.h"

namespace kelpdex {

uint8_t GuessFormat(std::string_view path) {
  // The last four characters, compared upper-cased with the known extensions.
  if (path.size() < 4) return open_kind::kNative;
  std::string_view tail = path.substr(path.size() - 4);
  struct Known {
    const char* extension;
    uint8_t kind;
  };
  static constexpr Known kKnown[] = {{".KPX", open_kind::kNative},   {".TXT", open_kind::kText},
                                     {".CSV", open_kind::kText},     {".TSV", open_kind::kText},
                                     {".XML", open_kind::kExcelXml}, {".DBF", open_kind::kDbase4}};
  for (const Known& k : kKnown) {
    if (text::EqualNoCase(tail, k.extension)) return k.kind;
  }
  return open_kind::kNative;
}

TimerAction AutoTimerAction(const SessionSettings& settings, bool modified, bool hasFile,
                            double minutesSinceSave, double minutesIdle) {
  if (settings.autoCloseMinutes > 0 && minutesIdle >= settings.autoCloseMinutes) {
    if (!modified) return TimerAction::kClose;
    if (hasFile) return TimerAction::kSaveAndClose;
  }
  if (settings.autoSaveMinutes > 0 && modified && hasFile &&
      minutesSinceSave >= settings.autoSaveMinutes) {
    return TimerAction::kSave;
  }
  return TimerAction::kNone;
}

}  // namespace kelpdex
