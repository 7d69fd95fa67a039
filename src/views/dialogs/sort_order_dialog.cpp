#include "views/dialogs/sort_order_dialog.h"

#include <QButtonGroup>
#include <QComboBox>
#include <QDialogButtonBox>
#include <QGridLayout>
#include <QLabel>
#include <QRadioButton>

#include "views/dialogs/dialog_text.h"

namespace kelpdex::views {

SortOrderDialog::SortOrderDialog(SortOrderDialogModel& model, QWidget* parent)
    : QDialog(parent), model_(model) {
  setWindowTitle("Sort Order");
  auto* grid = new QGridLayout(this);
  for (int r = 0; r < SortOrderDialogModel::kRows; ++r) {
    const SortOrderDialogModel::Row& row = model.row(r);
    auto* label = new QLabel(QString("&%1.").arg(r + 1), this);
    fields_[r] = new QComboBox(this);
    for (const std::string& c : model.choices()) fields_[r]->addItem(FromCodePage(c));
    fields_[r]->setCurrentIndex(row.field + 1);
    fields_[r]->setMinimumWidth(200);
    label->setBuddy(fields_[r]);
    // Each row's pair is a group of its own, so the arrow keys move within the row.
    auto* group = new QButtonGroup(this);
    ascending_[r] = new QRadioButton("Ascending", this);
    descending_[r] = new QRadioButton("Descending", this);
    group->addButton(ascending_[r]);
    group->addButton(descending_[r]);
    (row.descending ? descending_[r] : ascending_[r])->setChecked(true);
    grid->addWidget(label, r, 0);
    grid->addWidget(fields_[r], r, 1);
    grid->addWidget(ascending_[r], r, 2);
    grid->addWidget(descending_[r], r, 3);
  }
  auto* buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel, this);
  grid->addWidget(buttons, SortOrderDialogModel::kRows, 0, 1, 4);
  connect(buttons, &QDialogButtonBox::accepted, this, &SortOrderDialog::accept);
  connect(buttons, &QDialogButtonBox::rejected, this, &SortOrderDialog::reject);
  grid->setSizeConstraint(QLayout::SetFixedSize);
  fields_[0]->setFocus();
}

void SortOrderDialog::accept() {
  for (int r = 0; r < SortOrderDialogModel::kRows; ++r) {
    model_.row(r).field = fields_[r]->currentIndex() - 1;
    model_.row(r).descending = descending_[r]->isChecked();
  }
  QDialog::accept();
}

}  // namespace kelpdex::views
