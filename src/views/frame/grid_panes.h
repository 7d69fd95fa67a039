// The table's panes: one grid, split horizontally and/or vertically into up to two by two. Each
// pane scrolls on its own; all of them show one selection, the one of the pane last in focus.
#pragma once

#include <QWidget>
#include <array>
#include <functional>

class QSplitter;

namespace kelpdex::views {

class GridView;

class GridPanes : public QWidget {
  Q_OBJECT

 public:
  explicit GridPanes(QWidget* parent = nullptr);

  // The pane commands act on: the one last in focus.
  GridView& active() const { return *active_; }
  GridView& first() const { return *grids_[0]; }
  bool splitHorizontally() const { return below_; }
  bool splitVertically() const { return right_; }
  // Adds or removes the second row and the second column of panes. A new pane starts at the
  // active pane's selection and scroll place.
  void SetSplit(bool below, bool right);
  // Every pane that exists, the active one first.
  void ForEach(const std::function<void(GridView&)>& action) const;
  // After a command changed the active pane's table, fields or selection, the others follow,
  // keeping their own scroll places.
  void SyncFromActive();

  // Called for each pane as it is made, so the frame can wire its signals.
  std::function<void(GridView&)> paneCreated;

 signals:
  void activeChanged();

 protected:
  bool eventFilter(QObject* watched, QEvent* event) override;

 private:
  GridView* MakePane(int slot);
  void Wire(GridView& grid);

  QSplitter* rows_ = nullptr;
  std::array<QSplitter*, 2> paneRows_{};
  // Slots: 0 top left, 1 top right, 2 bottom left, 3 bottom right.
  std::array<GridView*, 4> grids_{};
  GridView* active_ = nullptr;
  bool below_ = false;
  bool right_ = false;
};

}  // namespace kelpdex::views
