// One name asked for: Add New Table and Rename Table (checked against the document's tables),
// Add New Search Key and Rename Search Key (checked by the key's own command). OK stays open on
// a refusal with the name selected, so that it can be typed again at once.
#pragma once

#include <QDialog>
#include <functional>
#include <string>

#include "store/workbook.h"

class QLineEdit;

namespace kelpdex::views {

class NameDialog : public QDialog {
  Q_OBJECT

 public:
  // `check` gets the name with its trailing blanks cut; it shows its own message and returns
  // false to keep the dialog open.
  NameDialog(const QString& title, const std::string& name, int maxLength,
             std::function<bool(const std::string&)> check, QWidget* parent = nullptr);

  std::string name() const { return name_; }
  QLineEdit* nameBox() const { return box_; }

  void accept() override;

 private:
  QLineEdit* box_ = nullptr;
  std::function<bool(const std::string&)> check_;
  std::string name_;
};

// The table dialogs' check: a duplicate shows string 157, "system" says why it is taken, and
// any other refusal beeps.
bool CheckTableNameAnswer(const Workbook& book, const std::string& name, const Worksheet* current);

}  // namespace kelpdex::views
