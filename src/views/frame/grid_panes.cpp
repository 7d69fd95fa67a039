#include "views/frame/grid_panes.h"

#include <QEvent>
#include <QSplitter>
#include <QVBoxLayout>

#include "views/grid/grid_view.h"

namespace kelpdex::views {

GridPanes::GridPanes(QWidget* parent) : QWidget(parent) {
  auto* layout = new QVBoxLayout(this);
  layout->setContentsMargins(0, 0, 0, 0);
  rows_ = new QSplitter(Qt::Vertical, this);
  rows_->setChildrenCollapsible(false);
  layout->addWidget(rows_);
  for (QSplitter*& column : paneRows_) {
    column = new QSplitter(Qt::Horizontal, rows_);
    column->setChildrenCollapsible(false);
    rows_->addWidget(column);
  }
  grids_[0] = new GridView(paneRows_[0]);
  grids_[0]->setObjectName("Grid");
  paneRows_[0]->addWidget(grids_[0]);
  Wire(*grids_[0]);
  active_ = grids_[0];
  paneRows_[1]->hide();
}

GridView* GridPanes::MakePane(int slot) {
  if (grids_[slot] != nullptr) return grids_[slot];
  auto* grid = new GridView(paneRows_[slot / 2]);
  grid->setObjectName(QStringLiteral("Grid%1").arg(slot));
  Wire(*grid);
  paneRows_[slot / 2]->insertWidget(slot % 2, grid);
  grids_[slot] = grid;
  if (paneCreated) paneCreated(*grid);
  grid->FollowPane(*active_);
  return grid;
}

void GridPanes::Wire(GridView& grid) {
  grid.installEventFilter(this);
  // One selection over all panes, and a change of cells repaints every pane.
  connect(&grid, &GridView::selectionChanged, this, [this, &grid] {
    for (GridView* other : grids_) {
      if (other != nullptr && other != &grid) other->FollowSelection(grid);
    }
  });
  connect(&grid, &GridView::documentChanged, this, [this] {
    for (GridView* other : grids_) {
      if (other != nullptr) other->viewport()->update();
    }
  });
}

void GridPanes::SetSplit(bool below, bool right) {
  below_ = below;
  right_ = right;
  bool wanted[4] = {true, right, below, below && right};
  for (int slot = 1; slot < 4; ++slot) {
    if (wanted[slot]) {
      MakePane(slot)->show();
    } else if (grids_[slot] != nullptr) {
      if (active_ == grids_[slot]) {
        active_ = grids_[0];
        grids_[0]->FollowPane(*grids_[slot]);
      }
      // The pane goes with its editor; an open edit there ends as any way out of a cell does.
      grids_[slot]->CommitEdit(0);
      delete grids_[slot];
      grids_[slot] = nullptr;
    }
  }
  paneRows_[1]->setVisible(below);
  // Halves of the space for a fresh split; the user's drag sizes them afterwards.
  if (below) rows_->setSizes({rows_->height() / 2, rows_->height() / 2});
  for (QSplitter* column : paneRows_) {
    if (right) column->setSizes({column->width() / 2, column->width() / 2});
  }
  emit activeChanged();
}

void GridPanes::ForEach(const std::function<void(GridView&)>& action) const {
  action(*active_);
  for (GridView* grid : grids_) {
    if (grid != nullptr && grid != active_) action(*grid);
  }
}

void GridPanes::SyncFromActive() {
  for (GridView* grid : grids_) {
    if (grid != nullptr && grid != active_) grid->FollowPane(*active_);
  }
}

bool GridPanes::eventFilter(QObject* watched, QEvent* event) {
  if (event->type() == QEvent::FocusIn) {
    for (GridView* grid : grids_) {
      if (grid == watched && grid != active_) {
        active_->CommitEdit(0);
        active_ = grid;
        emit activeChanged();
      }
    }
  }
  return QWidget::eventFilter(watched, event);
}

}  // namespace kelpdex::views
