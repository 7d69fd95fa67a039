#include "views/dialogs/filter_dialog.h"

#include <QCheckBox>
#include <QComboBox>
#include <QDialogButtonBox>
#include <QFormLayout>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QPushButton>
#include <QRadioButton>
#include <QTimer>
#include <QVBoxLayout>

#include "search/filter_text.h"
#include "views/dialogs/dialog_text.h"
#include "views/dialogs/function_picker.h"

namespace kelpdex::views {

FilterDialog::FilterDialog(const std::string& fieldName, FieldType type,
                           std::string_view filterText, QWidget* parent)
    // A popup closes by itself on a press outside it, which is one of the ways to apply.
    : QDialog(parent, Qt::Popup), model_(fieldName, type, filterText) {
  setObjectName("FilterDialog");
  auto* layout = new QVBoxLayout(this);
  text_ = new QLineEdit(FromCodePage(model_.searchText()), this);
  text_->setMinimumWidth(240);
  if (model_.textOnly()) {
    auto* heading = new QLabel(FromCodePage(model_.Heading()), this);
    heading->setBuddy(text_);
    layout->addWidget(heading);
    layout->addWidget(text_);
    // The search of Long Text and file names ignores case and word ends; the boxes say so.
    auto* words = new QCheckBox("Match whole &words only", this);
    auto* matchCase = new QCheckBox("Match &case", this);
    words->setEnabled(false);
    matchCase->setEnabled(false);
    layout->addWidget(words);
    layout->addWidget(matchCase);
    connect(text_, &QLineEdit::textEdited, this,
            [this](const QString& t) { model_.SetSearchText(ToCodePage(t)); });
  } else {
    search_ = new QRadioButton(FromCodePage(model_.Heading()), this);
    operator_ = new QComboBox(this);
    for (const char* name : kFilterOperatorNames) operator_->addItem(name);
    operator_->setCurrentIndex(model_.operatorIndex() >= 0 ? model_.operatorIndex()
                                                           : FilterDialogModel::kDefaultOperator);
    expressionSide_ = new QRadioButton("&Expression:", this);
    expression_ = new QLineEdit(FromCodePage(model_.expression()), this);
    (model_.side() == FilterDialogModel::Side::kSearch ? search_ : expressionSide_)
        ->setChecked(true);
    auto* type = new QFormLayout;
    type->addRow("Search &Type:", operator_);
    layout->addWidget(search_);
    layout->addWidget(text_);
    layout->addLayout(type);
    layout->addWidget(expressionSide_);
    layout->addWidget(expression_);
    formulas_ = new QPushButton("&Formulas >", this);
    formulas_->setAutoDefault(false);
    formulas_->setCheckable(true);
    picker_ = new FunctionPicker(this);
    picker_->hide();
    layout->addWidget(formulas_, 0, Qt::AlignLeft);
    layout->addWidget(picker_);
    connect(formulas_, &QPushButton::toggled, this, [this](bool open) {
      picker_->setVisible(open);
      formulas_->setText(open ? "&Formulas <" : "&Formulas >");
      if (open) picker_->functionList()->setFocus();
    });
    connect(picker_, &FunctionPicker::functionChosen, this, [this](const QString& name) {
      // A function builds an expression: the Expression side goes with it, and "=" starts it.
      expressionSide_->setChecked(true);
      if (expression_->text().isEmpty()) expression_->setText("=");
      expression_->insert(name + "(");
      model_.SetExpressionText(ToCodePage(expression_->text()));
      expression_->setFocus();
      // The Enter that chose the function goes on to the dialog next; it must not apply.
      picked_ = true;
      QTimer::singleShot(0, this, [this] { picked_ = false; });
    });
    model_.OnExpressionPreview(
        [this](const std::string& shown) { expression_->setText(FromCodePage(shown)); });
    connect(text_, &QLineEdit::textEdited, this, [this](const QString& t) {
      search_->setChecked(true);
      model_.SetSearchText(ToCodePage(t));
    });
    connect(operator_, &QComboBox::activated, this, [this](int index) {
      search_->setChecked(true);
      model_.SetOperator(index);
    });
    connect(expression_, &QLineEdit::textEdited, this, [this](const QString& t) {
      expressionSide_->setChecked(true);
      model_.SetExpressionText(ToCodePage(t));
    });
    connect(search_, &QRadioButton::toggled, this, [this](bool on) {
      model_.SetSide(on ? FilterDialogModel::Side::kSearch : FilterDialogModel::Side::kExpression);
    });
  }
  auto* buttons = new QDialogButtonBox(QDialogButtonBox::Cancel, this);
  layout->addWidget(buttons);
  layout->setSizeConstraint(QLayout::SetFixedSize);
  connect(buttons, &QDialogButtonBox::rejected, this, [this] {
    ending_ = Ending::kCancelled;
    close();
  });
  text_->setFocus();
}

void FilterDialog::Apply() {
  if (ending_ == Ending::kOpen) ending_ = Ending::kApplied;
  close();
}

void FilterDialog::keyPressEvent(QKeyEvent* event) {
  const bool enter = event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter;
  if (enter && picked_) {
    picked_ = false;
    return;
  }
  if (enter && !(event->modifiers() & Qt::ControlModifier)) {
    Apply();
    return;
  }
  if (event->key() == Qt::Key_Escape) {
    ending_ = Ending::kCancelled;
    close();
    return;
  }
  QDialog::keyPressEvent(event);
}

void FilterDialog::hideEvent(QHideEvent* event) {
  QDialog::hideEvent(event);
  // A popup that hides while still open was left by a press outside it: that applies.
  if (ending_ == Ending::kOpen) ending_ = Ending::kApplied;
  if (ending_ == Ending::kApplied || ending_ == Ending::kCancelled) {
    bool apply = ending_ == Ending::kApplied;
    ending_ = Ending::kReported;
    emit closedWith(apply);
  }
}

}  // namespace kelpdex::views
