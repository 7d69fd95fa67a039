#include "views/dialogs/text_file_dialog.h"

#include <QButtonGroup>
#include <QCheckBox>
#include <QComboBox>
#include <QDialogButtonBox>
#include <QGridLayout>
#include <QLabel>
#include <QLineEdit>
#include <QRadioButton>
#include <QVBoxLayout>

#include "core/reporting.h"
#include "exchange/text_options.h"
#include "exchange/text_separators.h"
#include "views/dialogs/dialog_text.h"

namespace kelpdex::views {

namespace {

constexpr const char* kOtherName = "other";
constexpr const char* kEncodings[] = {"UTF-8", "ANSI 8-bit", "ISO/OEM"};

}  // namespace

TextFileDialog::TextFileDialog(Direction direction, TextFileOptions& options, QWidget* parent)
    : QDialog(parent), options_(options) {
  setWindowTitle(direction == Direction::kImport ? "Open Text File" : "Save Text File");
  auto* grid = new QGridLayout;
  bySeparator_ = new QRadioButton("&Cell separator:", this);
  byWidths_ = new QRadioButton("&Fixed field widths:", this);
  auto* group = new QButtonGroup(this);
  group->addButton(bySeparator_);
  group->addButton(byWidths_);
  separators_ = new QComboBox(this);
  for (const NamedSeparator& named : kNamedSeparators) separators_->addItem(named.name);
  separators_->addItem(kOtherName);
  other_ = new QLineEdit(this);
  other_->setMaxLength(1);
  other_->setFixedWidth(other_->fontMetrics().horizontalAdvance("MM") + 12);
  widths_ = new QLineEdit(this);
  widths_->setMinimumWidth(200);
  auto* example = new QLabel("Example: 10,25,8 for three fields", this);
  quote_ = new QLineEdit(this);
  quote_->setMaxLength(1);
  quote_->setFixedWidth(other_->width());
  encoding_ = new QComboBox(this);
  for (const char* name : kEncodings) encoding_->addItem(name);

  grid->addWidget(bySeparator_, 0, 0);
  grid->addWidget(separators_, 0, 1);
  grid->addWidget(other_, 0, 2, Qt::AlignLeft);
  grid->addWidget(byWidths_, 1, 0);
  grid->addWidget(widths_, 1, 1, 1, 2);
  grid->addWidget(example, 2, 1, 1, 2);
  auto* quoteLabel = new QLabel("&Quote:", this);
  quoteLabel->setBuddy(quote_);
  grid->addWidget(quoteLabel, 3, 0);
  grid->addWidget(quote_, 3, 1, Qt::AlignLeft);
  auto* encodingLabel = new QLabel("&Encoding:", this);
  encodingLabel->setBuddy(encoding_);
  grid->addWidget(encodingLabel, 4, 0);
  grid->addWidget(encoding_, 4, 1, 1, 2);
  if (direction == Direction::kImport) {
    conversion_ = new QComboBox(this);
    conversion_->addItem("No conversion");
    conversion_->addItem("Numbers");
    auto* conversionLabel = new QLabel("Con&version:", this);
    conversionLabel->setBuddy(conversion_);
    grid->addWidget(conversionLabel, 5, 0);
    grid->addWidget(conversion_, 5, 1, 1, 2);
  }
  header_ = new QCheckBox("First line holds the field &names", this);
  grid->addWidget(header_, 6, 0, 1, 3);

  auto* buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel, this);
  connect(buttons, &QDialogButtonBox::accepted, this, &TextFileDialog::accept);
  connect(buttons, &QDialogButtonBox::rejected, this, &TextFileDialog::reject);
  auto* column = new QVBoxLayout(this);
  column->addLayout(grid);
  column->addWidget(buttons);

  // The options in force.
  int index = SeparatorIndex(options.separator);
  separators_->setCurrentIndex(index);
  if (index == kOtherSeparator) other_->setText(FromCodePage(std::string(1, options.separator)));
  widths_->setText(QString::fromStdString(FormatTextWidths(options)));
  (options.fixedWidths ? byWidths_ : bySeparator_)->setChecked(true);
  quote_->setText(FromCodePage(std::string(1, options.quote)));
  encoding_->setCurrentIndex(static_cast<int>(options.encoding) - 1);
  if (conversion_ != nullptr) conversion_->setCurrentIndex(options.numbers ? 1 : 0);
  header_->setChecked(options.headerLine);

  connect(group, &QButtonGroup::buttonToggled, this, [this] { UpdateEnabling(); });
  connect(separators_, &QComboBox::currentIndexChanged, this, [this] { UpdateEnabling(); });
  UpdateEnabling();
  (options.fixedWidths ? static_cast<QWidget*>(widths_) : separators_)->setFocus();
  layout()->setSizeConstraint(QLayout::SetFixedSize);
}

void TextFileDialog::UpdateEnabling() {
  bool separated = bySeparator_->isChecked();
  separators_->setEnabled(separated);
  other_->setEnabled(separated && separators_->currentIndex() == kOtherSeparator);
  widths_->setEnabled(!separated);
}

void TextFileDialog::accept() {
  auto refuse = [](QLineEdit* box, const char* text) {
    ShowMessage(text);
    box->setFocus();
    box->selectAll();
  };
  TextFileOptions chosen = options_;
  chosen.fixedWidths = byWidths_->isChecked();
  if (!chosen.fixedWidths) {
    int index = separators_->currentIndex();
    if (index != kOtherSeparator) {
      chosen.separator = kNamedSeparators[index].separator;
    } else {
      std::string typed = ToCodePage(other_->text());
      if (typed.size() != 1) {
        refuse(other_, "Type the separator character in the box beside the list.");
        return;
      }
      chosen.separator = typed[0];
    }
  } else if (!ParseTextWidths(ToCodePage(widths_->text()), chosen)) {
    refuse(widths_, "The field widths are whole numbers from 1 to 65535, separated by commas.");
    return;
  }
  std::string quote = ToCodePage(quote_->text());
  if (quote != "\"" && quote != "'") {
    refuse(quote_, "The quote is \" or '.");
    return;
  }
  chosen.quote = quote[0];
  chosen.encoding = static_cast<TextEncoding>(encoding_->currentIndex() + 1);
  if (conversion_ != nullptr) chosen.numbers = conversion_->currentIndex() == 1;
  chosen.headerLine = header_->isChecked();
  options_ = chosen;
  QDialog::accept();
}

}  // namespace kelpdex::views
