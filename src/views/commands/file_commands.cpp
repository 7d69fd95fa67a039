// File menu: New, Open, Reload, Close, Save, Save As, Compact, Protection, the recent files
// and Exit. The session does the work and shows its own failures.
#include "document/protection_rules.h"
#include "views/commands/command_dispatch.h"
#include "views/commands/command_table.h"
#include "views/frame/main_frame.h"
#include "views/frame/status_progress.h"
#include "views/grid/grid_view.h"

namespace kelpdex::views {

void RunFileCommand(MainFrame& frame, uint16_t id) {
  DocumentSession& session = frame.session();
  if (IsRecentFileId(id)) {
    LongWork work(frame.progress());
    session.OpenRecent(id - cmd::kRecentFirst);
    return;
  }
  switch (id) {
    case cmd::kNew:
      session.NewDatabase();
      break;
    case cmd::kOpen: {
      LongWork work(frame.progress());
      session.OpenWithDialog();
      break;
    }
    case cmd::kReload: {
      LongWork work(frame.progress());
      session.ReloadDocument();
      break;
    }
    case cmd::kClose:
      session.CloseDocument();
      break;
    case cmd::kSave:
      // The grid's scroll and selection go with the table into the file.
      frame.grid().StoreState();
      session.SaveDocument();
      break;
    case cmd::kSaveAs:
      frame.grid().StoreState();
      session.SaveDocumentAs();
      break;
    case cmd::kCompact:
      session.CompactDatabase();
      break;
    case cmd::kProtection:
      ChangeProtection(session);
      break;
    case cmd::kExit:
      frame.close();
      break;
    default:
      break;
  }
}

}  // namespace kelpdex::views
