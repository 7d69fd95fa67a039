// The main frame: the single top-level window. It holds no document data; it shows the one
// document through the grid, keeps the menus, bars and status in step with it (UpdateUi), and
// routes every command id through the one dispatch.
#pragma once

#include <QMainWindow>
#include <QPointer>
#include <map>
#include <memory>

#include "core/session_settings.h"
#include "document/document_session.h"
#include "store/workbook.h"
#include "undo/undo_stack.h"
#include "views/frame/qt_exchange_dialogs.h"

class QAction;
class QCheckBox;
class QComboBox;
class QLabel;
class QLineEdit;
class QMenu;
class QSpinBox;
class QSplitter;
class QTabBar;
class QTimer;
class QToolBar;

namespace kelpdex::views {

class BinaryPanes;
class GridPanes;
class GridView;
class QtPrompter;
class StatusProgress;

class MainFrame : public QMainWindow, public DocumentView {
  Q_OBJECT

 public:
  MainFrame(Workbook& book, SessionSettings& settings, QWidget* parent = nullptr);
  ~MainFrame() override;

  Workbook& book() { return book_; }
  DocumentSession& session() { return *session_; }
  SessionSettings& settings() { return settings_; }
  UndoStack& undo() { return *undo_; }
  // The grid pane in focus; commands act on it.
  GridView& grid();
  GridPanes& panes() { return *panes_; }
  BinaryPanes& binaryPanes() { return *binary_; }
  // Split Window: the table's panes and the binary-field pane.
  void SplitTable(bool below, bool right);
  void SplitBinary(int mode);
  QtPrompter& prompter() { return *prompter_; }
  QtExchangeDialogs& exchangeDialogs() { return *exchangeDialogs_; }
  StatusProgress& progress() { return *progress_; }
  bool HasDocument() const { return book_.firstNode != nullptr; }

  // Routes a command id to the handler of its family. False when the id is unknown, disabled,
  // or the frame is busy with long work.
  bool Dispatch(int id);
  // Sets enabled and checked states, the record box and the found count from the document.
  void UpdateUi();
  // The one refresh of everything that depends on the current table; `full` refills the tab
  // strip and the table list too.
  void RebuildForTable(bool full);
  // Makes table `index` current, keeping the view's state in the table it leaves.
  void SelectTable(int index);
  bool IsEnabled(int id);
  // The current table's fields and record set made again, its filters and sort applied; a
  // failure is shown.
  bool SearchCurrentTable();

  // The find bar's texts and options.
  void ShowFindBar();
  QString FindText() const;
  QString ReplaceText() const;
  bool MatchCase() const;
  bool WholeCells() const;
  void RememberFindTexts();
  void FocusRecordBox();
  // The record bar's amount for Insert and Remove.
  int RecordAmount() const;
  QAction* ActionOf(int id) const;
  QToolBar* findBar() const { return findBar_; }
  QLineEdit* recordBox() const { return recordBox_; }
  QTabBar* tabStrip() const { return tabs_; }
  QLabel* foundPane() const { return foundPane_; }

  // The floating filter dialog while one is open: a new one closes it first.
  QPointer<QWidget> filterDialog;

  // DocumentView.
  void TitleChanged(const std::string& title) override;
  void StatusChanged(const std::string& status) override;
  void DocumentShown() override;
  void DocumentCleared() override;
  void RecentFilesChanged() override;

  // The window's rectangle and show state, and the bars, into the settings (at close).
  void StoreWindowState();
  // The settings' grid font on every table pane, their looks drawn again.
  void ApplyGridFont();
  void RestoreWindowState();

 protected:
  void closeEvent(QCloseEvent* event) override;
  bool eventFilter(QObject* watched, QEvent* event) override;

 private:
  void BuildActions();
  void BuildMenus();
  void BuildBars();
  void BuildStatusBar();
  void FillSearchKeys();
  void OnRecordBoxEntered();
  void OnSearchKeyChosen(int index);
  void OnTimer();
  void ScheduleIdle();
  void WireGrid(GridView& grid);
  // The binary-field pane follows the current record; hidden for a table without such fields.
  void ShowBinaryPane();

  Workbook& book_;
  SessionSettings& settings_;
  std::unique_ptr<DocumentSession> session_;
  std::unique_ptr<UndoStack> undo_;
  std::unique_ptr<QtPrompter> prompter_;
  std::unique_ptr<QtExchangeDialogs> exchangeDialogs_;
  std::unique_ptr<StatusProgress> progress_;
  GridPanes* panes_ = nullptr;
  BinaryPanes* binary_ = nullptr;
  QSplitter* paneSplitter_ = nullptr;
  QTabBar* tabs_ = nullptr;
  std::map<int, QAction*> actions_;
  QMenu* recentMenu_ = nullptr;
  QToolBar* mainBar_ = nullptr;
  QToolBar* recordBar_ = nullptr;
  QToolBar* findBar_ = nullptr;
  QComboBox* tableCombo_ = nullptr;
  QLineEdit* recordBox_ = nullptr;
  QSpinBox* amount_ = nullptr;
  QComboBox* keyCombo_ = nullptr;
  QComboBox* findCombo_ = nullptr;
  QComboBox* replaceCombo_ = nullptr;
  QCheckBox* matchCase_ = nullptr;
  QCheckBox* wholeCells_ = nullptr;
  QLabel* promptPane_ = nullptr;
  QLabel* formatPane_ = nullptr;
  QLabel* foundPane_ = nullptr;
  QLabel* zoomPane_ = nullptr;
  QTimer* idle_ = nullptr;
  QTimer* autoSave_ = nullptr;
  double minutesIdle_ = 0;
  double minutesSinceSave_ = 0;
  bool busy_ = false;
  bool rebuilding_ = false;
};

}  // namespace kelpdex::views
