#include "views/dialogs/new_database_wizard.h"

#include <QComboBox>
#include <QFileDialog>
#include <QFormLayout>
#include <QGridLayout>
#include <QHBoxLayout>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QPushButton>
#include <QWizardPage>
#include <algorithm>

#include "core/reporting.h"
#include "store/catalogue.h"
#include "table/schema.h"
#include "table/table_state.h"
#include "views/dialogs/dialog_text.h"
#include "views/dialogs/name_dialog.h"

namespace kelpdex::views {

namespace {

constexpr const char* kTypeNames[] = {"Text", "Number", "Long Text", "Images/Files"};
constexpr const char* kPageNames[] = {"Table", "Fields", "File"};

}  // namespace

NewDatabaseWizard::NewDatabaseWizard(NewDatabaseAnswers& answers, QWidget* parent)
    : QWizard(parent), answers_(answers) {
  setWizardStyle(QWizard::ClassicStyle);
  setOption(QWizard::NoBackButtonOnStartPage);

  auto* tablePage = new QWizardPage(this);
  auto* tableForm = new QFormLayout(tablePage);
  table_ = new QLineEdit(
      answers.tableName.empty() ? QString("Table1") : FromCodePage(answers.tableName), tablePage);
  table_->setMaxLength(static_cast<int>(kNodeNameSize - 1));
  tableForm->addRow(new QLabel("The database starts with one table. Its name:", tablePage));
  tableForm->addRow("&Table name:", table_);
  addPage(tablePage);

  auto* fieldPage = new QWizardPage(this);
  auto* grid = new QGridLayout(fieldPage);
  fieldName_ = new QLineEdit(fieldPage);
  fieldName_->setMaxLength(1024);
  fieldType_ = new QComboBox(fieldPage);
  for (const char* type : kTypeNames) fieldType_->addItem(type);
  addField_ = new QPushButton("&Add", fieldPage);
  removeField_ = new QPushButton("&Remove", fieldPage);
  fields_ = new QListWidget(fieldPage);
  auto* nameLabel = new QLabel("Field &name:", fieldPage);
  nameLabel->setBuddy(fieldName_);
  auto* typeLabel = new QLabel("T&ype:", fieldPage);
  typeLabel->setBuddy(fieldType_);
  grid->addWidget(nameLabel, 0, 0);
  grid->addWidget(fieldName_, 0, 1);
  grid->addWidget(typeLabel, 0, 2);
  grid->addWidget(fieldType_, 0, 3);
  grid->addWidget(addField_, 0, 4);
  grid->addWidget(fields_, 1, 0, 1, 4);
  grid->addWidget(removeField_, 1, 4, Qt::AlignTop);
  addPage(fieldPage);
  connect(addField_, &QPushButton::clicked, this, &NewDatabaseWizard::AddField);
  fieldName_->installEventFilter(this);
  connect(removeField_, &QPushButton::clicked, this, [this] {
    int row = fields_->currentRow();
    if (row < 0) return;
    delete fields_->takeItem(row);
    pending_.erase(pending_.begin() + row);
  });

  auto* filePage = new QWizardPage(this);
  auto* fileLayout = new QGridLayout(filePage);
  file_ = new QLineEdit(FromCodePage(answers.path), filePage);
  auto* browse = new QPushButton("B&rowse...", filePage);
  auto* fileLabel = new QLabel("&File (leave empty to choose when saving):", filePage);
  fileLabel->setBuddy(file_);
  fileLayout->addWidget(fileLabel, 0, 0, 1, 2);
  fileLayout->addWidget(file_, 1, 0);
  fileLayout->addWidget(browse, 1, 1);
  fileLayout->setRowStretch(2, 1);
  addPage(filePage);
  connect(browse, &QPushButton::clicked, this, [this] {
    QString path =
        QFileDialog::getSaveFileName(this, "New Database", file_->text(), "Kelpdex (*.kpx)");
    if (!path.isEmpty()) file_->setText(path);
  });
  connect(this, &QWizard::currentIdChanged, this, [this] { UpdateTitle(); });
  UpdateTitle();
}

void NewDatabaseWizard::UpdateTitle() {
  int page = std::clamp(currentId(), 0, 2);
  setWindowTitle(QString("New Database - %1").arg(kPageNames[page]));
  // Enter on the fields page adds the field typed rather than going on.
  if (page == 1) fieldName_->setFocus();
}

void NewDatabaseWizard::AddField() {
  WizardField field;
  field.name = ToCodePage(fieldName_->text());
  field.type = FieldTypeOfCombo(fieldType_->currentIndex());
  // The field dialog's rules, against the fields already listed, on a table made for the check.
  Workbook scratch;
  TableSpec table;
  if (!CreateTable(scratch, "T") || !(scratch.currentSheet = scratch.FindTable("T")) ||
      !CurrentTable(scratch, table)) {
    return;
  }
  std::vector<FieldEdit> edits;
  for (const WizardField& f : pending_) {
    FieldEdit edit;
    edit.name = f.name;
    edit.type = f.type;
    edits.push_back(edit);
  }
  FieldEdit edit;
  edit.name = field.name;
  edit.type = field.type;
  edits.push_back(edit);
  std::vector<FieldSpec> rows;
  size_t refused = 0;
  FieldCheck check = CheckNewFields(table, edits, rows, refused);
  if (!check.ok()) {
    ShowMessage(check.Text());
    fieldName_->setFocus();
    fieldName_->selectAll();
    return;
  }
  field.name = edits.back().name;  // without its trailing blanks
  pending_.push_back(field);
  fields_->addItem(QString("%1 (%2)")
                       .arg(FromCodePage(field.name))
                       .arg(kTypeNames[std::max(0, ComboOfFieldType(field.type))]));
  fieldName_->clear();
  fieldName_->setFocus();
}

bool NewDatabaseWizard::eventFilter(QObject* watched, QEvent* event) {
  // Enter in the field name adds the field; it must not reach the wizard's Next as well.
  if (watched == fieldName_ && event->type() == QEvent::KeyPress) {
    int key = static_cast<QKeyEvent*>(event)->key();
    if (key == Qt::Key_Return || key == Qt::Key_Enter) {
      AddField();
      return true;
    }
  }
  return QWizard::eventFilter(watched, event);
}

bool NewDatabaseWizard::validateCurrentPage() {
  if (currentId() == 0) {
    std::string name = ToCodePage(table_->text());
    name.erase(name.find_last_not_of(' ') + 1);
    Workbook empty;
    if (!CheckTableNameAnswer(empty, name, nullptr)) {
      table_->setFocus();
      table_->selectAll();
      return false;
    }
  }
  if (currentId() == 1) {
    // A name still in the box counts as added; a table may start without fields.
    if (!fieldName_->text().trimmed().isEmpty()) {
      size_t before = pending_.size();
      AddField();
      if (pending_.size() == before) return false;
    }
  }
  return QWizard::validateCurrentPage();
}

void NewDatabaseWizard::accept() {
  std::string name = ToCodePage(table_->text());
  name.erase(name.find_last_not_of(' ') + 1);
  answers_.tableName = name;
  answers_.fields = pending_;
  answers_.path = ToCodePage(file_->text().trimmed());
  QWizard::accept();
}

}  // namespace kelpdex::views
