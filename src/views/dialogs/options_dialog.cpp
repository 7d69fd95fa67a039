#include "views/dialogs/options_dialog.h"

#include <QCheckBox>
#include <QComboBox>
#include <QDialogButtonBox>
#include <QFileDialog>
#include <QFontComboBox>
#include <QFormLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QSpinBox>
#include <QVBoxLayout>
#include <algorithm>

#include "document/options_lists.h"
#include "views/dialogs/dialog_text.h"

namespace kelpdex::views {

namespace {

// The undo stack keeps 99 slots; the profile takes levels up to that.
constexpr int kMostUndoLevels = 99;
// Below a fifth the window can no longer be found on the screen.
constexpr int kLeastOpacity = 20;

void FillMinutes(QComboBox* box, int32_t current, bool inactivity) {
  for (int32_t minutes : MinuteChoices(current)) {
    box->addItem(FromCodePage(MinutesText(minutes, inactivity)), minutes);
  }
  box->setCurrentIndex(std::max(0, box->findData(std::max(current, 0))));
}

}  // namespace

OptionsDialog::OptionsDialog(SessionSettings& settings, QWidget* parent)
    : QDialog(parent), settings_(settings) {
  setWindowTitle("Options");
  auto* layout = new QVBoxLayout(this);
  auto* form = new QFormLayout;
  undoLevel_ = new QSpinBox(this);
  undoLevel_->setRange(0, kMostUndoLevels);
  undoLevel_->setValue(settings.undoLevel);
  form->addRow("&Undo/Redo level:", undoLevel_);
  wrap_ = new QCheckBox("&Wrap text in memo fields", this);
  wrap_->setChecked(settings.wrapTextInMemoFields);
  thumbnails_ = new QCheckBox("Display &thumbnails", this);
  thumbnails_->setChecked(settings.displayThumbnails);
  plainText_ = new QCheckBox("&Plain text in memo fields", this);
  plainText_->setChecked(settings.plainTextInMemoFields);
  labels_ = new QCheckBox("Show &image labels", this);
  labels_->setChecked(settings.displayImageLabels);
  for (QCheckBox* box : {wrap_, thumbnails_, plainText_, labels_}) form->addRow(box);
  autoSave_ = new QComboBox(this);
  FillMinutes(autoSave_, settings.autoSaveMinutes, false);
  form->addRow("&AutoSave:", autoSave_);
  autoClose_ = new QComboBox(this);
  FillMinutes(autoClose_, settings.autoCloseMinutes, true);
  form->addRow("Auto&Close:", autoClose_);
  format_ = new QComboBox(this);
  for (const char* text : kFileFormatTexts) format_->addItem(text);
  format_->setCurrentIndex(FileFormatIndex(settings.defaultFileFormat));
  form->addRow("&Default file format:", format_);
  enter_ = new QComboBox(this);
  for (const char* text : kEnterActionTexts) enter_->addItem(text);
  enter_->setCurrentIndex(std::clamp(settings.whenEnterPressed, 0, 4));
  form->addRow("After pressing &Enter:", enter_);
  auto* folderRow = new QHBoxLayout;
  folder_ = new QLineEdit(FromCodePage(settings.startFolder), this);
  folder_->setMinimumWidth(220);
  browse_ = new QPushButton("B&rowse...", this);
  folderRow->addWidget(folder_, 1);
  folderRow->addWidget(browse_);
  // A row made of a layout gets no buddy of its own; the label names the edit box.
  auto* folderLabel = new QLabel("Start folde&r:", this);
  folderLabel->setBuddy(folder_);
  form->addRow(folderLabel, folderRow);
  opacity_ = new QSpinBox(this);
  opacity_->setRange(kLeastOpacity, 100);
  opacity_->setSuffix("%");
  opacity_->setValue(std::clamp(settings.opacity, kLeastOpacity, 100));
  form->addRow("Windows &opacity:", opacity_);
  font_ = new QFontComboBox(this);
  if (!settings.fontName.empty()) font_->setCurrentFont(QFont(FromCodePage(settings.fontName)));
  form->addRow("&Font:", font_);
  connect(font_, &QFontComboBox::currentFontChanged, this, [this] { fontChosen_ = true; });
  layout->addLayout(form);
  auto* buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel, this);
  layout->addWidget(buttons);
  layout->setSizeConstraint(QLayout::SetFixedSize);
  connect(buttons, &QDialogButtonBox::accepted, this, &OptionsDialog::accept);
  connect(buttons, &QDialogButtonBox::rejected, this, &OptionsDialog::reject);
  connect(browse_, &QPushButton::clicked, this, [this] {
    QString folder = QFileDialog::getExistingDirectory(this, "Default Folder", folder_->text());
    if (!folder.isEmpty()) folder_->setText(folder);
  });
  undoLevel_->setFocus();
}

void OptionsDialog::accept() {
  settings_.undoLevel = undoLevel_->value();
  settings_.wrapTextInMemoFields = wrap_->isChecked();
  settings_.displayThumbnails = thumbnails_->isChecked();
  settings_.plainTextInMemoFields = plainText_->isChecked();
  settings_.displayImageLabels = labels_->isChecked();
  settings_.autoSaveMinutes = autoSave_->currentData().toInt();
  settings_.autoCloseMinutes = autoClose_->currentData().toInt();
  settings_.defaultFileFormat = FileFormatOfIndex(format_->currentIndex());
  settings_.whenEnterPressed = enter_->currentIndex();
  settings_.startFolder = ToCodePage(folder_->text());
  settings_.opacity = opacity_->value();
  // The grid's own font stays in force until a font is chosen here.
  if (fontChosen_) settings_.fontName = ToCodePage(font_->currentFont().family());
  QDialog::accept();
}

}  // namespace kelpdex::views
