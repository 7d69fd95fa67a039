// The frame's menus, toolbars, record bar, find bar and status bar, all made from the command
// table.
#include <QAction>
#include <QApplication>
#include <QCheckBox>
#include <QComboBox>
#include <QLabel>
#include <QLineEdit>
#include <QMenuBar>
#include <QPushButton>
#include <QSpinBox>
#include <QStatusBar>
#include <QToolBar>
#include <QToolButton>

#include "core/reporting.h"
#include "document/recent_files.h"
#include "search/navigation.h"
#include "search/run_filters.h"
#include "search/search_keys.h"
#include "store/catalogue.h"
#include "table/table_state.h"
#include "text/utf8.h"
#include "views/commands/command_table.h"
#include "views/frame/main_frame.h"
#include "views/grid/grid_view.h"

namespace kelpdex::views {

namespace {

QString Utf8(std::string_view codePage) {
  return QString::fromUtf8(text::Cp1252ToUtf8(codePage));
}

}  // namespace

void MainFrame::BuildActions() {
  for (const Command& c : CommandTable()) {
    if (c.id == 0 || IsRecentFileId(c.id)) continue;
    QString text = QString::fromUtf8(c.text);
    if (c.shownKeys != nullptr) text += "\t" + QString::fromUtf8(c.shownKeys);
    auto* action = new QAction(text, this);
    action->setObjectName(QString("cmd%1").arg(c.id));
    QList<QKeySequence> keys;
    for (const QString& k : QString::fromUtf8(c.keys).split(", ", Qt::SkipEmptyParts)) {
      keys << QKeySequence(k, QKeySequence::PortableText);
    }
    action->setShortcuts(keys);
    action->setCheckable(c.checkable);
    action->setEnabled(false);
    const uint16_t id = c.id;
    connect(action, &QAction::triggered, this, [this, id] { Dispatch(id); });
    addAction(action);
    actions_[id] = action;
  }
}

QAction* MainFrame::ActionOf(int id) const {
  auto it = actions_.find(id);
  return it == actions_.end() ? nullptr : it->second;
}

void MainFrame::BuildMenus() {
  QMenuBar* bar = menuBar();
  QMenu* file = bar->addMenu("&File");
  QMenu* edit = bar->addMenu("&Edit");
  QMenu* insert = bar->addMenu("&Insert");
  QMenu* format = bar->addMenu("F&ormat");
  QMenu* database = bar->addMenu("&Database");
  QMenu* tools = bar->addMenu("&Tools");
  QMenu* settings = bar->addMenu("&Settings");
  QMenu* view = bar->addMenu("&View");
  QMenu* help = bar->addMenu("&Help");
  // Submenus stand where their first entry comes in the table.
  QMenu* convert = new QMenu("Con&vert", edit);
  QMenu* split = new QMenu("S&plit Window", tools);
  QMenu* fileFormat = new QMenu("File &Format", tools);
  QMenu* locales = new QMenu("&Locales", settings);
  bool convertAdded = false, splitAdded = false, formatAdded = false, localesAdded = false;
  auto menuOf = [&](MenuPlace place) -> QMenu* {
    switch (place) {
      case MenuPlace::kFile:
        return file;
      case MenuPlace::kEdit:
        return edit;
      case MenuPlace::kInsert:
        return insert;
      case MenuPlace::kFormat:
        return format;
      case MenuPlace::kDatabase:
        return database;
      case MenuPlace::kTools:
        return tools;
      case MenuPlace::kSettings:
        return settings;
      case MenuPlace::kHelp:
        return help;
      case MenuPlace::kConvert:
        if (!convertAdded) edit->addMenu(convert);
        convertAdded = true;
        return convert;
      case MenuPlace::kSplit:
        if (!splitAdded) tools->addMenu(split);
        splitAdded = true;
        return split;
      case MenuPlace::kFileFormat:
        if (!formatAdded) tools->addMenu(fileFormat);
        formatAdded = true;
        return fileFormat;
      case MenuPlace::kLocales:
        if (!localesAdded) settings->addMenu(locales);
        localesAdded = true;
        return locales;
      case MenuPlace::kPopup:
        return nullptr;
    }
    return nullptr;
  };
  for (const Command& c : CommandTable()) {
    QMenu* menu = menuOf(c.place);
    if (menu == nullptr) continue;
    if (c.id == 0) {
      menu->addSeparator();
    } else if (IsRecentFileId(c.id)) {
      recentMenu_ = menu->addMenu("Recent &Files");
    } else {
      menu->addAction(actions_[c.id]);
    }
  }
  // The enabling rules are applied as a menu opens, as well as at idle.
  for (QMenu* menu : {file, edit, insert, format, database, tools, settings, help}) {
    connect(menu, &QMenu::aboutToShow, this, &MainFrame::UpdateUi);
  }
  view->setObjectName("ViewMenu");
  RecentFilesChanged();
}

void MainFrame::RecentFilesChanged() {
  if (recentMenu_ == nullptr) return;
  recentMenu_->clear();
  std::vector<std::string> entries = RecentFileMenu(settings_);
  for (size_t i = 0; i < entries.size() && i <= cmd::kRecentLast - cmd::kRecentFirst; ++i) {
    QAction* action = recentMenu_->addAction(QString::fromStdString(entries[i]));
    if (settings_.recentFiles.empty()) {
      action->setEnabled(false);
      break;
    }
    const int id = cmd::kRecentFirst + static_cast<int>(i);
    action->setObjectName(QString("cmd%1").arg(id));
    connect(action, &QAction::triggered, this, [this, id] { Dispatch(id); });
  }
}

void MainFrame::BuildBars() {
  QMenu* view = menuBar()->findChild<QMenu*>("ViewMenu");
  mainBar_ = addToolBar("Toolbar");
  mainBar_->setObjectName("MainToolbar");
  mainBar_->setToolButtonStyle(Qt::ToolButtonTextOnly);
  auto button = [&](QToolBar* bar, const char* text, int id) {
    QAction* action = actions_[id];
    auto* b = new QToolButton(bar);
    b->setText(text);
    b->setDefaultAction(action);
    b->setText(text);
    bar->addWidget(b);
    connect(action, &QAction::changed, b, [b, text] { b->setText(text); });
  };
  button(mainBar_, " Image", 32799);
  button(mainBar_, " Search", cmd::kSearchToolbar);
  button(mainBar_, " Sort", cmd::kSort);
  button(mainBar_, " Send Mail", 32804);
  mainBar_->addSeparator();
  keyCombo_ = new QComboBox(mainBar_);
  keyCombo_->setObjectName("SearchKey");
  keyCombo_->setMinimumContentsLength(14);
  keyCombo_->setToolTip("Search Key");
  mainBar_->addWidget(keyCombo_);
  connect(keyCombo_, &QComboBox::activated, this, &MainFrame::OnSearchKeyChosen);
  button(mainBar_, " Go To", cmd::kGoTo);
  button(mainBar_, " Print All", 57607);

  addToolBarBreak();
  recordBar_ = addToolBar("Record Bar");
  recordBar_->setObjectName("RecordBar");
  recordBar_->addWidget(new QLabel(" Table:", recordBar_));
  tableCombo_ = new QComboBox(recordBar_);
  tableCombo_->setObjectName("TableCombo");
  tableCombo_->setMinimumContentsLength(static_cast<int>(sizeof("some_long_table_name_") - 1));
  recordBar_->addWidget(tableCombo_);
  connect(tableCombo_, &QComboBox::activated, this, [this](int index) { SelectTable(index); });
  recordBar_->addWidget(new QLabel(" Record:", recordBar_));
  recordBox_ = new QLineEdit(recordBar_);
  recordBox_->setObjectName("RecordBox");
  recordBox_->setFixedWidth(recordBox_->fontMetrics().horizontalAdvance("999,999,999") + 16);
  recordBar_->addWidget(recordBox_);
  connect(recordBox_, &QLineEdit::returnPressed, this, &MainFrame::OnRecordBoxEntered);
  button(recordBar_, " Insert", cmd::kInsertRecords);
  button(recordBar_, " Remove", cmd::kRemoveRecords);
  amount_ = new QSpinBox(recordBar_);
  amount_->setObjectName("Amount");
  amount_->setRange(1, 100000);
  recordBar_->addWidget(amount_);

  addToolBarBreak();
  findBar_ = addToolBar("Find Bar");
  findBar_->setObjectName("FindBar");
  findBar_->addWidget(new QLabel(" Find", findBar_));
  findCombo_ = new QComboBox(findBar_);
  findCombo_->setObjectName("FindText");
  findCombo_->setEditable(true);
  findCombo_->setMinimumContentsLength(16);
  findBar_->addWidget(findCombo_);
  findBar_->addWidget(new QLabel(" Replace with", findBar_));
  replaceCombo_ = new QComboBox(findBar_);
  replaceCombo_->setObjectName("ReplaceText");
  replaceCombo_->setEditable(true);
  replaceCombo_->setMinimumContentsLength(16);
  findBar_->addWidget(replaceCombo_);
  button(findBar_, " Find Next (F3)", cmd::kFindNext);
  button(findBar_, " Replace", cmd::kReplace);
  button(findBar_, " Replace All", cmd::kReplaceAll);
  matchCase_ = new QCheckBox(" Match case", findBar_);
  wholeCells_ = new QCheckBox(" Match whole cells", findBar_);
  findBar_->addWidget(matchCase_);
  findBar_->addWidget(wholeCells_);
  connect(findCombo_->lineEdit(), &QLineEdit::returnPressed, this,
          [this] { Dispatch(cmd::kFindNext); });
  findBar_->hide();

  for (QToolBar* bar : {mainBar_, recordBar_, findBar_}) view->addAction(bar->toggleViewAction());
}

void MainFrame::BuildStatusBar() {
  QStatusBar* bar = statusBar();
  promptPane_ = new QLabel("Ready", bar);
  formatPane_ = new QLabel(bar);
  formatPane_->setObjectName("FormatPane");
  foundPane_ = new QLabel(bar);
  foundPane_->setObjectName("FoundPane");
  zoomPane_ = new QLabel(" 100%", bar);
  bar->addWidget(promptPane_, 1);
  bar->addPermanentWidget(formatPane_);
  bar->addPermanentWidget(foundPane_);
  bar->addPermanentWidget(zoomPane_);
}

void MainFrame::FillSearchKeys() {
  keyCombo_->clear();
  TableSpec table;
  if (!HasDocument() || !CurrentTable(book_, table)) return;
  keyCombo_->addItem("(None)");
  for (const std::string& name : SearchKeyNames(table)) keyCombo_->addItem(Utf8(name));
  keyCombo_->setCurrentIndex(1);
}

void MainFrame::OnSearchKeyChosen(int index) {
  TableSpec table;
  if (!HasDocument() || !CurrentTable(book_, table) || index < 0) return;
  grid().CommitEdit(0);
  KeyResult result = SelectSearchKey(table, static_cast<uint16_t>(index));
  if (result == KeyResult::kFailed) {
    ShowError(book_.errorCode);
    return;
  }
  if (!RunSearch(book_)) ShowError(book_.errorCode);
  session_->MarkModified(true);
  RebuildForTable(false);
  keyCombo_->setCurrentIndex(index == kNoneEntry ? 1 : index);
}

void MainFrame::OnRecordBoxEntered() {
  if (!HasDocument()) return;
  grid().CommitEdit(0);
  uint32_t record = 0;
  GridSelection selection = grid().selection();
  if (!ParseGoTo(recordBox_->text().toStdString(), record) ||
      !GoToRecord(book_.records, record, selection)) {
    QApplication::beep();
    return;
  }
  selection.firstField = selection.lastField = grid().activeField();
  grid().SetSelection(selection);
  grid().setFocus();
  UpdateUi();
}

void MainFrame::ShowFindBar() {
  findBar_->show();
  findCombo_->setFocus();
  findCombo_->lineEdit()->selectAll();
}

QString MainFrame::FindText() const {
  return findCombo_->currentText();
}
QString MainFrame::ReplaceText() const {
  return replaceCombo_->currentText();
}
bool MainFrame::MatchCase() const {
  return matchCase_->isChecked();
}
bool MainFrame::WholeCells() const {
  return wholeCells_->isChecked();
}

void MainFrame::RememberFindTexts() {
  // A new text goes to the top of its history.
  for (QComboBox* combo : {findCombo_, replaceCombo_}) {
    QString text = combo->currentText();
    if (text.isEmpty()) continue;
    int at = combo->findText(text);
    if (at > 0) combo->removeItem(at);
    if (at != 0) combo->insertItem(0, text);
    combo->setCurrentIndex(0);
  }
}

void MainFrame::FocusRecordBox() {
  recordBox_->setFocus();
  recordBox_->selectAll();
}

int MainFrame::RecordAmount() const {
  return amount_->value();
}

}  // namespace kelpdex::views
