// Go To: the position of a record, counted from 1, under the same rules as the record box of
// the frame. OK stays open on a number that names no record.
#pragma once

#include <QDialog>
#include <cstdint>

class QLineEdit;

namespace kelpdex::views {

class GoToDialog : public QDialog {
  Q_OBJECT

 public:
  // `current` is the position shown at first, `count` the records found.
  GoToDialog(uint32_t current, uint32_t count, QWidget* parent = nullptr);

  // The position chosen, counted from 1, after an accepted OK.
  uint32_t record() const { return record_; }
  QLineEdit* recordBox() const { return box_; }

  void accept() override;

 private:
  uint32_t count_;
  uint32_t record_ = 0;
  QLineEdit* box_ = nullptr;
};

}  // namespace kelpdex::views
