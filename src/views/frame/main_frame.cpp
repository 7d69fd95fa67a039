#include "views/frame/main_frame.h"

#include <QAction>
#include <QApplication>
#include <QClipboard>
#include <QCloseEvent>
#include <QComboBox>
#include <QLabel>
#include <QLineEdit>
#include <QMimeData>
#include <QScreen>
#include <QSplitter>
#include <QTabBar>
#include <QTimer>
#include <QToolBar>
#include <QVBoxLayout>

#include "core/reporting.h"
#include "search/run_filters.h"
#include "search/sort_keys.h"
#include "store/catalogue.h"
#include "table/table_state.h"
#include "text/utf8.h"
#include "views/commands/command_dispatch.h"
#include "views/commands/command_table.h"
#include "views/frame/binary_pane.h"
#include "views/frame/grid_panes.h"
#include "views/frame/qt_prompter.h"
#include "views/frame/status_progress.h"
#include "views/grid/grid_view.h"

namespace kelpdex::views {

namespace {

// The profile names a family only; size and the rest stay the desktop's. An empty name is the
// desktop's own font.
void SetGridFont(GridView& grid, const SessionSettings& settings) {
  QFont font = QApplication::font(&grid);
  if (!settings.fontName.empty()) {
    font.setFamily(QString::fromUtf8(text::Cp1252ToUtf8(settings.fontName)));
  }
  grid.setFont(font);
  grid.InvalidateLooks();
}

}  // namespace

MainFrame::MainFrame(Workbook& book, SessionSettings& settings, QWidget* parent)
    : QMainWindow(parent), book_(book), settings_(settings) {
  setObjectName("MainFrame");
  session_ = std::make_unique<DocumentSession>(book_, settings_);
  session_->SetView(this);
  undo_ = std::make_unique<UndoStack>(book_);
  book_.undoLevel = settings_.undoLevel;
  prompter_ = std::make_unique<QtPrompter>(this);
  exchangeDialogs_ = std::make_unique<QtExchangeDialogs>(this);
  session_->exchangeFiles().SetDialogs(exchangeDialogs_.get());

  auto* central = new QWidget(this);
  auto* layout = new QVBoxLayout(central);
  layout->setContentsMargins(0, 0, 0, 0);
  layout->setSpacing(0);
  tabs_ = new QTabBar(central);
  tabs_->setObjectName("TableTabs");
  tabs_->setShape(QTabBar::RoundedSouth);
  tabs_->setExpanding(false);
  tabs_->setFocusPolicy(Qt::NoFocus);
  // The grid's panes and the binary-field pane share the space the user gives each.
  paneSplitter_ = new QSplitter(Qt::Horizontal, central);
  paneSplitter_->setChildrenCollapsible(false);
  panes_ = new GridPanes(paneSplitter_);
  binary_ = new BinaryPanes(paneSplitter_);
  paneSplitter_->addWidget(panes_);
  paneSplitter_->addWidget(binary_);
  paneSplitter_->setStretchFactor(0, 3);
  paneSplitter_->setStretchFactor(1, 1);
  binary_->hide();
  layout->addWidget(paneSplitter_, 1);
  layout->addWidget(tabs_);
  setCentralWidget(central);

  BuildActions();
  BuildMenus();
  BuildBars();
  BuildStatusBar();
  progress_ = std::make_unique<StatusProgress>(statusBar());

  WireGrid(panes_->first());
  panes_->paneCreated = [this](GridView& grid) { WireGrid(grid); };
  connect(panes_, &GridPanes::activeChanged, this, [this] { UpdateUi(); });
  connect(tabs_, &QTabBar::currentChanged, this, [this](int index) {
    if (!rebuilding_ && index >= 0) SelectTable(index);
  });

  // Idle turns: UpdateUi runs once the queue is empty after input, not on a busy loop.
  idle_ = new QTimer(this);
  idle_->setSingleShot(true);
  idle_->setInterval(0);
  connect(idle_, &QTimer::timeout, this, &MainFrame::UpdateUi);
  qApp->installEventFilter(this);
  // AutoSave and AutoClose are checked every half minute against the settings' minutes.
  autoSave_ = new QTimer(this);
  autoSave_->setInterval(30 * 1000);
  connect(autoSave_, &QTimer::timeout, this, &MainFrame::OnTimer);
  autoSave_->start();

  panes_->first().SetDocument(&book_, &settings_);
  session_->UpdateTitle();
  UpdateUi();
}

MainFrame::~MainFrame() {
  qApp->removeEventFilter(this);
  session_->SetView(nullptr);
  session_->ResetDocument();
}

GridView& MainFrame::grid() {
  return panes_->active();
}

void MainFrame::WireGrid(GridView& grid) {
  SetGridFont(grid, settings_);
  grid.commandHook = [this](int id) { Dispatch(id); };
  connect(&grid, &GridView::documentChanged, this, [this] {
    session_->MarkModified(true);
    ShowBinaryPane();
    UpdateUi();
  });
  connect(&grid, &GridView::selectionChanged, this, [this] {
    ShowBinaryPane();
    UpdateUi();
  });
  connect(&grid, &GridView::filterRequested, this, [this](int) { Dispatch(33113); });
}

void MainFrame::ApplyGridFont() {
  panes_->ForEach([this](GridView& grid) { SetGridFont(grid, settings_); });
}

void MainFrame::SplitTable(bool below, bool right) {
  grid().CommitEdit(0);
  panes_->SetSplit(below, right);
}

void MainFrame::SplitBinary(int mode) {
  binary_->SetSplit(mode);
}

void MainFrame::ShowBinaryPane() {
  bool shown = HasDocument() && binary_->ShowRecord(book_, grid());
  binary_->setVisible(shown);
}

bool MainFrame::Dispatch(int id) {
  // Long work lets events through to repaint and to reach Cancel; no command may start then.
  if (busy_ || progress_->active()) return false;
  busy_ = true;
  bool ran = DispatchCommand(*this, static_cast<uint16_t>(id));
  busy_ = false;
  // A command works on the pane in focus; the others show what it did.
  panes_->SyncFromActive();
  ShowBinaryPane();
  UpdateUi();
  return ran;
}

bool MainFrame::IsEnabled(int id) {
  const Command* command = FindCommand(static_cast<uint16_t>(id));
  if (command == nullptr) return false;
  if (IsRecentFileId(static_cast<uint16_t>(id))) {
    return static_cast<size_t>(id - cmd::kRecentFirst) < settings_.recentFiles.size();
  }
  bool document = HasDocument();
  uint16_t fields = document ? grid().fieldCount() : 0;
  switch (command->rule) {
    case EnableRule::kAlways:
      return true;
    case EnableRule::kDocument:
      return document;
    case EnableRule::kNamedFile:
      return document && !book_.fileName.empty();
    case EnableRule::kWritable:
      return document && !book_.readOnly;
    case EnableRule::kFields:
      return document && fields > 0;
    case EnableRule::kUndo:
      return document && undo_->CanUndo();
    case EnableRule::kRedo:
      return document && undo_->CanRedo();
    case EnableRule::kPaste: {
      if (!document || fields == 0) return false;
      const QMimeData* mime = QApplication::clipboard()->mimeData();
      return mime != nullptr && (mime->hasText() || mime->hasUrls());
    }
    case EnableRule::kSortKeys: {
      TableSpec table;
      return document && fields > 0 && CurrentTable(book_, table) && HasSortKeys(table);
    }
    case EnableRule::kNotBuilt:
      return false;
  }
  return false;
}

void MainFrame::UpdateUi() {
  for (auto& [id, action] : actions_) {
    if (IsRecentFileId(static_cast<uint16_t>(id))) continue;
    action->setEnabled(IsEnabled(id));
  }
  // Ctrl+Z belongs to the edit control while a cell is being edited.
  if (grid().editing()) actions_[cmd::kUndo]->setEnabled(false);
  if (!HasDocument()) {
    recordBox_->clear();
    foundPane_->clear();
    return;
  }
  int format = static_cast<int>(book_.fileFormat);
  for (int f = 0; f <= 4; ++f) {
    int id = f == 0 ? cmd::kFormatDefault : cmd::kFormatXml + f - 1;
    actions_[id]->setChecked(f == format);
  }
  actions_[cmd::kLocaleGeneric]->setChecked(currentLocale.localeIndex == 0);
  actions_[cmd::kLocaleSystem]->setChecked(currentLocale.localeIndex == 1);
  actions_[cmd::kLocaleUser]->setChecked(currentLocale.localeIndex == 2);
  actions_[cmd::kSplitTableHorizontal]->setChecked(panes_->splitHorizontally());
  actions_[cmd::kSplitTableVertical]->setChecked(panes_->splitVertically());
  actions_[cmd::kSplitTableNone]->setChecked(!panes_->splitHorizontally() &&
                                             !panes_->splitVertically());
  actions_[cmd::kSplitBinaryHorizontal]->setChecked(binary_->split() == 1);
  actions_[cmd::kSplitBinaryVertical]->setChecked(binary_->split() == 2);
  actions_[cmd::kSplitBinaryNone]->setChecked(binary_->split() == 0);
  actions_[cmd::kFreezeFields]->setChecked(grid().frozenFields() > 0);
  const GridSelection& s = grid().selection();
  if (!recordBox_->hasFocus()) {
    recordBox_->setText(s.firstPosition == s.lastPosition
                            ? QString::number(s.firstPosition + 1)
                            : QString("%1-%2").arg(s.firstPosition + 1).arg(s.lastPosition + 1));
  }
  foundPane_->setText(QString::fromUtf8(text::Cp1252ToUtf8(FoundText(book_.records.count()))));
}

void MainFrame::RebuildForTable(bool full) {
  rebuilding_ = true;
  if (full) {
    tabs_->blockSignals(true);
    tableCombo_->blockSignals(true);
    while (tabs_->count() > 0) tabs_->removeTab(0);
    tableCombo_->clear();
    for (uint32_t i = 0; Worksheet* sheet = book_.TableByIndex(i); ++i) {
      QString name = QString::fromUtf8(text::Cp1252ToUtf8(sheet->Name()));
      tabs_->addTab(name);
      tableCombo_->addItem(name);
    }
    tabs_->blockSignals(false);
    tableCombo_->blockSignals(false);
  }
  int current = TableIndexOf(book_, book_.currentSheet);
  tabs_->setCurrentIndex(current);
  tableCombo_->setCurrentIndex(current);
  grid().Rebuild();
  panes_->SyncFromActive();
  ShowBinaryPane();
  FillSearchKeys();
  rebuilding_ = false;
  session_->UpdateTitle();
  UpdateUi();
}

void MainFrame::SelectTable(int index) {
  if (!HasDocument()) return;
  grid().CommitEdit(0);
  Worksheet* sheet = book_.TableByIndex(static_cast<uint32_t>(index));
  if (sheet == nullptr || sheet == book_.currentSheet) return;
  grid().StoreState();
  book_.currentSheet = sheet;
  SearchCurrentTable();
  RebuildForTable(false);
}

bool MainFrame::SearchCurrentTable() {
  // The field defaults belong to one table: they are read again before the search and before
  // any edit reaches the new table.
  if (!RefreshCurrentTable(book_) || !RunSearch(book_)) {
    ShowError(book_.errorCode);
    return false;
  }
  return true;
}

void MainFrame::TitleChanged(const std::string& title) {
  setWindowTitle(QString::fromUtf8(text::Cp1252ToUtf8(title)));
}

void MainFrame::StatusChanged(const std::string& status) {
  formatPane_->setText(QString::fromUtf8(text::Cp1252ToUtf8(status)));
}

void MainFrame::DocumentShown() {
  if (book_.currentSheet == nullptr) book_.currentSheet = book_.TableByIndex(0);
  if (book_.currentSheet != nullptr) SearchCurrentTable();
  RebuildForTable(true);
}

void MainFrame::DocumentCleared() {
  rebuilding_ = true;
  while (tabs_->count() > 0) tabs_->removeTab(0);
  tableCombo_->clear();
  keyCombo_->clear();
  rebuilding_ = false;
  grid().Rebuild();
  panes_->SyncFromActive();
  ShowBinaryPane();
  formatPane_->clear();
  UpdateUi();
}

void MainFrame::closeEvent(QCloseEvent* event) {
  grid().CommitEdit(0);
  if (HasDocument() && !session_->AskToSave()) {
    event->ignore();
    return;
  }
  StoreWindowState();
  event->accept();
}

bool MainFrame::eventFilter(QObject* watched, QEvent* event) {
  switch (event->type()) {
    case QEvent::KeyPress:
    case QEvent::MouseButtonRelease:
    case QEvent::FocusIn:
      minutesIdle_ = 0;
      ScheduleIdle();
      break;
    default:
      break;
  }
  return QMainWindow::eventFilter(watched, event);
}

void MainFrame::ScheduleIdle() {
  if (!idle_->isActive()) idle_->start();
}

void MainFrame::OnTimer() {
  minutesIdle_ += 0.5;
  minutesSinceSave_ = book_.modified ? minutesSinceSave_ + 0.5 : 0;
  if (busy_ || grid().editing()) return;
  session_->OnTimer(minutesSinceSave_, minutesIdle_);
}

void MainFrame::StoreWindowState() {
  QRect r = normalGeometry();
  settings_.windowLeft = r.left();
  settings_.windowTop = r.top();
  settings_.windowRight = r.right() + 1;
  settings_.windowBottom = r.bottom() + 1;
  settings_.windowShow = isMaximized()   ? show::kMaximized
                         : isMinimized() ? show::kMinimize
                                         : show::kNormal;
}

void MainFrame::RestoreWindowState() {
  int width = settings_.windowRight - settings_.windowLeft;
  int height = settings_.windowBottom - settings_.windowTop;
  if (width >= 200 && height >= 150) {
    setGeometry(settings_.windowLeft, settings_.windowTop, width, height);
  } else {
    resize(1000, 680);
  }
}

}  // namespace kelpdex::views
