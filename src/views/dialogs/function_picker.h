// The function picker of the help table: a category, its functions, and the help text of the one
// chosen. Enter or a double click on a function asks for it to be inserted.
#pragma once

#include <QWidget>

class QComboBox;
class QLabel;
class QListWidget;

namespace kelpdex::views {

class FunctionPicker : public QWidget {
  Q_OBJECT

 public:
  explicit FunctionPicker(QWidget* parent = nullptr);

  QComboBox* categoryList() const { return category_; }
  QListWidget* functionList() const { return functions_; }
  QLabel* helpText() const { return help_; }

 signals:
  // The chosen function's name, to be inserted where the formula is typed.
  void functionChosen(const QString& name);

 private:
  void FillFunctions(int category);

  QComboBox* category_ = nullptr;
  QListWidget* functions_ = nullptr;
  QLabel* help_ = nullptr;
};

}  // namespace kelpdex::views
