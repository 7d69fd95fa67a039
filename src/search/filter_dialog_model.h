// What the filter dialog of a field shows and stores, without its widgets: the "Search for"
// side (operator and text) with the formula it expands to as a live preview in the Expression
// box, or the Expression side; for Long Text and Images/Files a single text to look for.
#pragma once

#include <functional>
#include <string>
#include <string_view>

#include "core/field_type.h"

namespace kelpdex {

class FilterDialogModel {
 public:
  enum class Side : uint8_t { kSearch, kExpression };
  // "Equal" is selected when a dialog opens without an operator filter.
  static constexpr int kDefaultOperator = 1;
  static constexpr int kNoOperator = -1;

  // Opens on the field's present filter text.
  FilterDialogModel(std::string fieldName, FieldType type, std::string_view filterText);

  // The dialog with the single text box, for Long Text and Images/Files.
  bool textOnly() const { return textOnly_; }
  // "&Search '%s' for:", or the text-only headings.
  std::string Heading() const;

  Side side() const { return side_; }
  int operatorIndex() const { return operatorIndex_; }  // into kFilterOperatorNames
  const std::string& searchText() const { return searchText_; }
  const std::string& expression() const { return expression_; }

  // Called with the new Expression text whenever the preview changes it, so the view can show
  // it; the view's own notice of that change comes back through SetExpressionText and is then
  // ignored.
  void OnExpressionPreview(std::function<void(const std::string&)> show) {
    showExpression_ = std::move(show);
  }

  // The user's edits. Text and operator re-expand the preview; typing an expression selects the
  // Expression side.
  void SetSearchText(std::string_view text);
  void SetOperator(int index);
  void SetSide(Side side) { side_ = side; }
  void SetExpressionText(std::string_view text);

  // What the closing step stores: "%d:%s" from the search side (nothing without text or
  // operator), "0:%s" from the Expression side and from the text-only dialog.
  std::string FilterText() const;

 private:
  void Preview();

  std::string fieldName_;
  FieldType type_;
  bool textOnly_;
  Side side_ = Side::kSearch;
  int operatorIndex_ = kDefaultOperator;
  std::string searchText_;
  std::string expression_;
  bool previewing_ = false;  // the guard: the preview's own change of the Expression box
  std::function<void(const std::string&)> showExpression_;
};

}  // namespace kelpdex
