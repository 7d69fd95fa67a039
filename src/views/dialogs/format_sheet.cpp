#include "views/dialogs/format_sheet.h"

#include <QCheckBox>
#include <QComboBox>
#include <QDialogButtonBox>
#include <QFontComboBox>
#include <QFormLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QPushButton>
#include <QSpinBox>
#include <QTabWidget>
#include <QVBoxLayout>
#include <algorithm>
#include <cstring>
#include <memory>

#include "core/reporting.h"
#include "core/strings.h"
#include "format/format_string.h"
#include "format/user_formats.h"
#include "store/bytes.h"
#include "views/dialogs/dialog_text.h"
#include "views/dialogs/drop_down_editor.h"

namespace kelpdex::views {

namespace {

constexpr const char* kKindTexts[format_kind::kCount] = {
    "Default",       "General",    "Currency", "Accounting", "Date",        "Time",
    "Date and Time", "Percentage", "Fraction", "Scientific", "User-defined"};
constexpr const char* kNegativeTexts[] = {"-1234", "1234 in red", "(1234)", "(1234) in red"};
constexpr const char* kColourNames[] = {"black", "maroon",  "green",  "olive", "navy", "purple",
                                        "teal",  "gray",    "silver", "red",   "lime", "yellow",
                                        "blue",  "fuchsia", "aqua",   "white"};
constexpr int kDateIndexes = 11;
constexpr int kTimeIndexes = 10;
// Horizontal and vertical codes of the style record, in the order the lists show them.
constexpr uint8_t kHorizontalCodes[] = {4, 1, 2, 3};
constexpr uint8_t kVerticalCodes[] = {4, 5, 7};
// The font record's weights: 0 normal, 2 bold.
constexpr uint8_t kBoldWeight = 2;

QString PatternOf(uint8_t kind, uint8_t index) {
  NumberStyle s;
  s.kind = kind;
  s.index = index;
  return FromCodePage(BuildFormatString(s, &currentLocale));
}

template <size_t N>
int IndexOfCode(const uint8_t (&codes)[N], uint8_t code, int fallback) {
  for (size_t i = 0; i < N; ++i) {
    if (codes[i] == code) return static_cast<int>(i);
  }
  return fallback;
}

}  // namespace

FormatSheet::FormatSheet(Workbook& book, const FieldFormat& format, const CellRecord* current,
                         Page page, QWidget* parent)
    : QDialog(parent), book_(book), edited_(format), current_(current) {
  setWindowTitle("Format Field");
  auto* layout = new QVBoxLayout(this);
  pages_ = new QTabWidget(this);
  pages_->addTab(MakeFontPage(), "&Font");
  pages_->addTab(MakeStylePage(), "&Style");
  pages_->addTab(MakeAlignmentPage(), "&Alignment");
  pages_->addTab(MakeDropDownPage(), "&Drop-down List");
  layout->addWidget(pages_);
  auto* buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel, this);
  layout->addWidget(buttons);
  layout->setSizeConstraint(QLayout::SetFixedSize);
  connect(buttons, &QDialogButtonBox::accepted, this, &FormatSheet::accept);
  connect(buttons, &QDialogButtonBox::rejected, this, &FormatSheet::reject);
  pages_->setCurrentIndex(page);
  // Each page opens with the focus on its first control.
  QWidget* first[] = {font_, kinds_, horizontal_, list_};
  first[page]->setFocus();
}

QWidget* FormatSheet::MakeFontPage() {
  auto* page = new QWidget(this);
  auto* form = new QFormLayout(page);
  const uint8_t* f = edited_.font.bytes;
  const uint8_t* b = edited_.style.bytes;
  font_ = new QFontComboBox(page);
  std::string_view name(reinterpret_cast<const char*>(f + font::kNameAt),
                        strnlen(reinterpret_cast<const char*>(f + font::kNameAt), 128));
  if (!name.empty()) font_->setCurrentFont(QFont(FromCodePage(name)));
  form->addRow("F&ont:", font_);
  size_ = new QSpinBox(page);
  // 0 keeps the grid's own size.
  size_->setRange(0, 255);
  size_->setSpecialValueText("Default");
  size_->setValue(f[font::kSizeAt]);
  form->addRow("Si&ze:", size_);
  bold_ = new QCheckBox("&Bold", page);
  bold_->setChecked(f[font::kWeightAt] >= kBoldWeight);
  italic_ = new QCheckBox("&Italic", page);
  italic_->setChecked(f[font::kItalicAt] != 0);
  underline_ = new QCheckBox("&Underline", page);
  underline_->setChecked(f[font::kUnderlineAt] != 0);
  strikeout_ = new QCheckBox("Stri&keout", page);
  strikeout_->setChecked(f[font::kStrikeoutAt] != 0);
  for (QCheckBox* box : {bold_, italic_, underline_, strikeout_}) form->addRow(box);
  colour_ = new QComboBox(page);
  colour_->addItem("Automatic");
  for (const char* colourName : kColourNames) colour_->addItem(colourName);
  if (b[style::kFontColourSetAt]) {
    char shown[8];
    ColourName(LoadU32(b + style::kFontColourAt), shown);
    int at = colour_->findText(shown);
    if (at < 0) colour_->addItem(shown), at = colour_->count() - 1;
    colour_->setCurrentIndex(at);
  }
  form->addRow("&Color:", colour_);
  connect(font_, &QFontComboBox::currentFontChanged, this, [this] { fontChosen_ = true; });
  return page;
}

QWidget* FormatSheet::MakeStylePage() {
  auto* page = new QWidget(this);
  auto* row = new QHBoxLayout(page);
  auto* left = new QVBoxLayout;
  kinds_ = new QListWidget(page);
  for (const char* text : kKindTexts) kinds_->addItem(text);
  kinds_->setFixedWidth(kinds_->sizeHintForColumn(0) + 24);
  auto* kindLabel = new QLabel("&Category:", page);
  kindLabel->setBuddy(kinds_);
  left->addWidget(kindLabel);
  left->addWidget(kinds_);
  row->addLayout(left);

  auto* right = new QVBoxLayout;
  // The tabs own Alt+F, S, A and D; the rows of one kind share no letter with them or each other.
  kindRows_ = new QFormLayout;
  fixed_ = new QCheckBox("Fi&xed decimal places:", page);
  decimals_ = new QSpinBox(page);
  decimals_->setRange(0, 14);
  kindRows_->addRow(fixed_, decimals_);
  leading_ = new QCheckBox("&Leading zeroes:", page);
  leadingCount_ = new QSpinBox(page);
  leadingCount_->setRange(0, 30);
  kindRows_->addRow(leading_, leadingCount_);
  group_ = new QCheckBox("&Group digits", page);
  kindRows_->addRow(group_);
  symbol_ = new QLineEdit(page);
  symbol_->setMaxLength(15);
  kindRows_->addRow("S&ymbol:", symbol_);
  position_ = new QComboBox(page);
  for (uint8_t p = 0; p < 4; ++p) position_->addItem(SymbolPositionName(p));
  kindRows_->addRow("Symbol &position:", position_);
  negative_ = new QComboBox(page);
  for (const char* text : kNegativeTexts) negative_->addItem(text);
  kindRows_->addRow("&Negative numbers:", negative_);
  dateTypes_ = new QListWidget(page);
  for (uint8_t i = 0; i < kDateIndexes; ++i) dateTypes_->addItem(PatternOf(format_kind::kDate, i));
  dateTypes_->setMaximumHeight(120);
  kindRows_->addRow("&Type:", dateTypes_);
  timeTypes_ = new QComboBox(page);
  for (uint8_t i = 0; i < kTimeIndexes; ++i) timeTypes_->addItem(PatternOf(format_kind::kTime, i));
  kindRows_->addRow("T&ime:", timeTypes_);
  dateAfter_ = new QCheckBox("Dat&e after time", page);
  kindRows_->addRow(dateAfter_);
  systemOrder_ = new QCheckBox("Use s&ystem date order", page);
  kindRows_->addRow(systemOrder_);
  denominatorDigits_ = new QSpinBox(page);
  denominatorDigits_->setRange(1, 9);
  kindRows_->addRow("Denominator di&gits:", denominatorDigits_);
  denominator_ = new QSpinBox(page);
  denominator_->setRange(0, 1000000);
  denominator_->setSpecialValueText("None");
  kindRows_->addRow("Fi&xed denominator:", denominator_);
  exponent_ = new QComboBox(page);
  for (const char* text : {"Free", "Fixed positive", "Fixed negative"}) exponent_->addItem(text);
  kindRows_->addRow("&Exponent:", exponent_);
  power_ = new QSpinBox(page);
  power_->setRange(0, 99);
  kindRows_->addRow("Po&wer:", power_);
  userFormat_ = new QComboBox(page);
  userFormat_->setEditable(true);
  userFormat_->setInsertPolicy(QComboBox::NoInsert);
  userFormat_->lineEdit()->setMaxLength(static_cast<int>(kFormatTextMax));
  userFormat_->setMinimumWidth(220);
  const UserFormatList& formats = UserNumberFormats();
  for (size_t i = 0; i < formats.size(); ++i) userFormat_->addItem(FromCodePage(formats.at(i)));
  kindRows_->addRow("F&ormat:", userFormat_);
  right->addLayout(kindRows_);
  right->addStretch(1);
  auto* sampleBox = new QGroupBox("Sample", page);
  auto* sampleLayout = new QVBoxLayout(sampleBox);
  sample_ = new QLabel(sampleBox);
  sample_->setMinimumWidth(220);
  sampleLayout->addWidget(sample_);
  right->addWidget(sampleBox);
  row->addLayout(right, 1);

  LoadStyleControls(ReadNumberStyle(edited_.style));
  auto changed = [this] {
    if (loading_) return;
    styleTouched_ = true;
    UpdateSample();
  };
  connect(kinds_, &QListWidget::currentRowChanged, this, [this, changed] {
    ShowKindRows();
    changed();
  });
  for (QCheckBox* box : {fixed_, leading_, group_, dateAfter_, systemOrder_}) {
    connect(box, &QCheckBox::toggled, this, changed);
  }
  for (QSpinBox* box : {decimals_, leadingCount_, denominatorDigits_, denominator_, power_}) {
    connect(box, &QSpinBox::valueChanged, this, changed);
  }
  for (QComboBox* box : {position_, negative_, timeTypes_, exponent_}) {
    connect(box, &QComboBox::currentIndexChanged, this, changed);
  }
  connect(symbol_, &QLineEdit::textChanged, this, changed);
  connect(dateTypes_, &QListWidget::currentRowChanged, this, changed);
  connect(userFormat_, &QComboBox::currentTextChanged, this, changed);
  ShowKindRows();
  UpdateSample();
  return page;
}

void FormatSheet::LoadStyleControls(const NumberStyle& s) {
  loading_ = true;
  kinds_->setCurrentRow(s.kind < format_kind::kCount ? s.kind : 0);
  fixed_->setChecked(s.fixedDecimals);
  decimals_->setValue(s.decimalDigits);
  leading_->setChecked(s.leadingZeroesSet);
  leadingCount_->setValue(s.leadingZeroes);
  group_->setChecked(s.groupDigits);
  symbol_->setText(FromCodePage(s.symbol));
  position_->setCurrentIndex(s.symbolPosition & 3);
  negative_->setCurrentIndex(s.negative & 3);
  dateTypes_->setCurrentRow(s.index < kDateIndexes ? s.index : 0);
  timeTypes_->setCurrentIndex(s.kind == format_kind::kTime
                                  ? std::min<int>(s.index, kTimeIndexes - 1)
                                  : std::min<int>(s.timeIndex, kTimeIndexes - 1));
  dateAfter_->setChecked(s.dateAfterTime);
  systemOrder_->setChecked(s.systemDateOrder);
  denominatorDigits_->setValue(std::max<int>(1, s.denominatorDigits));
  denominator_->setValue(static_cast<int>(std::clamp<int64_t>(s.denominator, 0, 1000000)));
  exponent_->setCurrentIndex(s.exponent <= 2 ? s.exponent : 0);
  power_->setValue(s.exponentPower);
  userFormat_->setEditText(FromCodePage(s.kind == format_kind::kUserDefined
                                            ? std::string(s.userFormat)
                                            : BuildFormatString(s, &currentLocale)));
  loading_ = false;
}

void FormatSheet::ShowKindRows() {
  using namespace format_kind;
  const int kind = kinds_->currentRow();
  auto show = [this](QWidget* field, bool on) { kindRows_->setRowVisible(field, on); };
  // The date list doubles as the time list for the Time kind: one list, one place to look.
  show(decimals_, kind == kGeneral || kind == kCurrency || kind == kAccounting ||
                      kind == kPercentage || kind == kScientific);
  show(leadingCount_, kind == kGeneral);
  show(group_, kind == kGeneral);
  show(symbol_, kind == kCurrency || kind == kAccounting);
  show(position_, kind == kCurrency);
  show(negative_, kind == kGeneral || kind == kCurrency);
  show(dateTypes_, kind == kDate || kind == kDateTime);
  show(timeTypes_, kind == kTime || kind == kDateTime);
  show(dateAfter_, kind == kDateTime);
  show(systemOrder_, kind == kDate || kind == kDateTime);
  show(denominatorDigits_, kind == kFraction);
  show(denominator_, kind == kFraction);
  show(exponent_, kind == kScientific);
  show(power_, kind == kScientific);
  show(userFormat_, kind == kUserDefined);
}

NumberStyle FormatSheet::StyleOfControls() const {
  NumberStyle s;
  s.kind = static_cast<uint8_t>(std::max(0, kinds_->currentRow()));
  s.fixedDecimals = fixed_->isChecked();
  s.decimalDigits = static_cast<uint8_t>(decimals_->value());
  s.leadingZeroesSet = leading_->isChecked();
  s.leadingZeroes = static_cast<uint8_t>(leadingCount_->value());
  s.groupDigits = group_->isChecked();
  s.negative = static_cast<uint8_t>(negative_->currentIndex());
  s.symbolPosition = static_cast<uint8_t>(position_->currentIndex());
  std::string symbol = ToCodePage(symbol_->text());
  std::strncpy(s.symbol, symbol.c_str(), sizeof s.symbol - 1);
  const bool time = s.kind == format_kind::kTime;
  s.index = static_cast<uint8_t>(time ? timeTypes_->currentIndex()
                                      : std::max(0, dateTypes_->currentRow()));
  s.timeIndex = static_cast<uint8_t>(timeTypes_->currentIndex());
  s.dateAfterTime = dateAfter_->isChecked();
  s.systemDateOrder = systemOrder_->isChecked();
  s.denominatorDigits = static_cast<uint8_t>(denominatorDigits_->value());
  s.denominator = denominator_->value();
  s.exponent = static_cast<uint8_t>(exponent_->currentIndex());
  s.exponentPower = static_cast<uint8_t>(power_->value());
  if (s.kind == format_kind::kUserDefined) {
    std::string typed = ToCodePage(userFormat_->currentText());
    std::strncpy(s.userFormat, typed.c_str(), kFormatTextMax);
  }
  return s;
}

void FormatSheet::UpdateSample() {
  sample_->setText(FromCodePage(FormatSample(StyleOfControls(), current_)));
}

QWidget* FormatSheet::MakeAlignmentPage() {
  auto* page = new QWidget(this);
  auto* form = new QFormLayout(page);
  const uint8_t* b = edited_.style.bytes;
  horizontal_ = new QComboBox(page);
  for (const char* text : {"General", "Left", "Center", "Right"}) horizontal_->addItem(text);
  horizontal_->setCurrentIndex(IndexOfCode(kHorizontalCodes, b[style::kHorizontalAt], 0));
  form->addRow("&Horizontal:", horizontal_);
  vertical_ = new QComboBox(page);
  for (const char* text : {"Top", "Center", "Bottom"}) vertical_->addItem(text);
  vertical_->setCurrentIndex(IndexOfCode(kVerticalCodes, b[style::kVerticalAt], 1));
  form->addRow("&Vertical:", vertical_);
  indent_ = new QSpinBox(page);
  indent_->setRange(0, 15);
  indent_->setValue(LoadU16(b + style::kIndentAt));
  form->addRow("I&ndent:", indent_);
  rotation_ = new QSpinBox(page);
  rotation_->setRange(-90, 90);
  rotation_->setSuffix(QString::fromUtf8("\u00b0"));
  rotation_->setValue(static_cast<int16_t>(LoadU16(b + style::kRotationAt)));
  form->addRow("&Rotation:", rotation_);
  wrap_ = new QCheckBox("&Wrap text", page);
  wrap_->setChecked(b[style::kWrapAt] != 0);
  fit_ = new QCheckBox("Shrin&k to fit", page);
  fit_->setChecked(b[style::kFitAt] != 0);
  form->addRow(wrap_);
  form->addRow(fit_);
  return page;
}

QWidget* FormatSheet::MakeDropDownPage() {
  auto* page = new QWidget(this);
  auto* form = new QFormLayout(page);
  const uint8_t* b = edited_.style.bytes;
  auto* listRow = new QHBoxLayout;
  list_ = new QComboBox(page);
  list_->setMinimumWidth(180);
  editLists_ = new QPushButton("&Edit Lists...", page);
  listRow->addWidget(list_, 1);
  listRow->addWidget(editLists_);
  auto* listLabel = new QLabel("&List:", page);
  listLabel->setBuddy(list_);
  form->addRow(listLabel, listRow);
  sort_ = new QCheckBox("S&ort", page);
  sort_->setChecked(b[style::kDropDownSortAt] != 0);
  append_ = new QCheckBox("Auto a&ppend", page);
  append_->setChecked(b[style::kDropDownAppendAt] != 0);
  complete_ = new QCheckBox("Auto &complete", page);
  complete_->setChecked(b[style::kDropDownCompleteAt] != 0);
  for (QCheckBox* box : {sort_, append_, complete_}) form->addRow(box);
  FillListChoices(LoadU16(b + style::kDropDownAt));
  connect(editLists_, &QPushButton::clicked, this, [this] {
    DropDownEditor editor(book_.dropDownLists, this);
    if (editor.exec() != QDialog::Accepted) return;
    uint16_t chosen = static_cast<uint16_t>(list_->currentData().toInt());
    book_.dropDownLists = editor.lists();
    for (uint32_t slot : editor.deletedSlots()) {
      uint16_t number = static_cast<uint16_t>(slot + 1);
      book_.styles.ForgetDropDownList(number);
      if (chosen == number) chosen = 0;
    }
    book_.modified = true;
    FillListChoices(chosen);
  });
  return page;
}

void FormatSheet::FillListChoices(uint16_t selected) {
  // The style holds the list's number, 1 to 100; 0 is no list.
  list_->clear();
  list_->addItem("(None)", 0);
  for (uint32_t slot = 0; slot < kDropDownListSlots; ++slot) {
    const DropDownList& l = book_.dropDownLists[slot];
    if (l.used) list_->addItem(FromCodePage(l.name), static_cast<int>(slot + 1));
  }
  list_->setCurrentIndex(std::max(0, list_->findData(selected)));
}

void FormatSheet::accept() {
  NumberStyle numberStyle = StyleOfControls();
  if (numberStyle.kind == format_kind::kUserDefined) {
    // A string that is no format is refused where it was typed; a good one joins the user's list,
    // which the profile keeps.
    auto check = std::make_unique<CompiledFormat>();
    bool ok =
        numberStyle.userFormat[0] != '\0' && ParseFormatString(numberStyle.userFormat, *check);
    if (!ok) {
      ShowMessage(FormatString(133));
      pages_->setCurrentIndex(kStylePage);
      userFormat_->setFocus();
      userFormat_->lineEdit()->selectAll();
      return;
    }
    UserNumberFormats().Add(numberStyle.userFormat);
  }
  // The controls fill parameters the field's kind does not use; an untouched page must not
  // count as a change of format for the other selected fields.
  if (styleTouched_) WriteNumberStyle(numberStyle, edited_.style);

  uint8_t* f = edited_.font.bytes;
  if (fontChosen_) {
    std::string family = ToCodePage(font_->currentFont().family()).substr(0, 127);
    std::memset(f + font::kNameAt, 0, 128);
    std::memcpy(f + font::kNameAt, family.data(), family.size());
  }
  f[font::kSizeAt] = static_cast<uint8_t>(size_->value());
  f[font::kWeightAt] = bold_->isChecked() ? kBoldWeight : 0;
  f[font::kItalicAt] = italic_->isChecked();
  f[font::kUnderlineAt] = underline_->isChecked();
  f[font::kStrikeoutAt] = strikeout_->isChecked();
  uint8_t* b = edited_.style.bytes;
  uint32_t colour = 0;
  const bool coloured =
      colour_->currentIndex() > 0 && ParseColourName(ToCodePage(colour_->currentText()), colour);
  b[style::kFontColourSetAt] = coloured;
  StoreU32(b + style::kFontColourAt, coloured ? colour : 0);

  b[style::kHorizontalAt] = kHorizontalCodes[horizontal_->currentIndex()];
  // An untouched vertical list keeps the record's own code, which may be none of the three.
  if (vertical_->currentIndex() != IndexOfCode(kVerticalCodes, b[style::kVerticalAt], 1)) {
    b[style::kVerticalAt] = kVerticalCodes[vertical_->currentIndex()];
  }
  StoreU16(b + style::kIndentAt, static_cast<uint16_t>(indent_->value()));
  StoreU16(b + style::kRotationAt, static_cast<uint16_t>(static_cast<int16_t>(rotation_->value())));
  b[style::kWrapAt] = wrap_->isChecked();
  b[style::kFitAt] = fit_->isChecked();

  StoreU16(b + style::kDropDownAt, static_cast<uint16_t>(list_->currentData().toInt()));
  b[style::kDropDownSortAt] = sort_->isChecked();
  b[style::kDropDownAppendAt] = append_->isChecked();
  b[style::kDropDownCompleteAt] = complete_->isChecked();
  QDialog::accept();
}

}  // namespace kelpdex::views
