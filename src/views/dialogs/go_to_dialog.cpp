#include "views/dialogs/go_to_dialog.h"

#include <QDialogButtonBox>
#include <QFormLayout>
#include <QLineEdit>

#include "core/reporting.h"
#include "core/strings.h"
#include "search/navigation.h"

namespace kelpdex::views {

namespace {
// The record box reads at most this many characters.
constexpr int kGoToTextMax = 20;
}  // namespace

GoToDialog::GoToDialog(uint32_t current, uint32_t count, QWidget* parent)
    : QDialog(parent), count_(count) {
  setWindowTitle("Go To");
  auto* form = new QFormLayout(this);
  box_ = new QLineEdit(QString::number(current), this);
  box_->setMaxLength(kGoToTextMax);
  box_->setMinimumWidth(160);
  form->addRow("Go to &record:", box_);
  auto* buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel, this);
  form->addRow(buttons);
  form->setSizeConstraint(QLayout::SetFixedSize);
  connect(buttons, &QDialogButtonBox::accepted, this, &GoToDialog::accept);
  connect(buttons, &QDialogButtonBox::rejected, this, &GoToDialog::reject);
  box_->selectAll();
  box_->setFocus();
}

void GoToDialog::accept() {
  uint32_t record = 0;
  if (!ParseGoTo(box_->text().toStdString(), record) || record < 1 || record > count_) {
    // Without records there is nowhere to go; the range would read "between 1 and 0".
    ShowMessage(count_ == 0 ? FormatString(133)
                            : FormatString(130, {1, static_cast<long long>(count_)}));
    box_->setFocus();
    box_->selectAll();
    return;
  }
  record_ = record;
  QDialog::accept();
}

}  // namespace kelpdex::views
