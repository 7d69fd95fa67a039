// Sort Order: five rows of a field list and an Ascending/Descending pair over the sort order
// model, which keeps the stored order so that a definition reads back as it was chosen.
#pragma once

#include <QDialog>
#include <array>

#include "search/sort_keys.h"

class QComboBox;
class QRadioButton;

namespace kelpdex::views {

class SortOrderDialog : public QDialog {
  Q_OBJECT

 public:
  SortOrderDialog(SortOrderDialogModel& model, QWidget* parent = nullptr);

  QComboBox* fieldList(int row) const { return fields_[row]; }
  QRadioButton* ascending(int row) const { return ascending_[row]; }
  QRadioButton* descending(int row) const { return descending_[row]; }

  // The rows go into the model; the caller applies it.
  void accept() override;

 private:
  SortOrderDialogModel& model_;
  std::array<QComboBox*, SortOrderDialogModel::kRows> fields_{};
  std::array<QRadioButton*, SortOrderDialogModel::kRows> ascending_{};
  std::array<QRadioButton*, SortOrderDialogModel::kRows> descending_{};
};

}  // namespace kelpdex::views
