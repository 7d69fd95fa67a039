#include "search/filter_dialog_model.h"

#include "search/filter_text.h"

namespace kelpdex {

FilterDialogModel::FilterDialogModel(std::string fieldName, FieldType type,
                                     std::string_view filterText)
    : fieldName_(std::move(fieldName)),
      type_(type),
      textOnly_(type == FieldType::kLongText || type == FieldType::kFiles) {
  int digit = 0;
  std::string_view operand;
  if (!SplitFilterText(filterText, digit, operand)) return;
  if (textOnly_ || digit == filter_op::kExpression) {
    // The expression, or the text to look for, goes in the box as it was stored.
    side_ = Side::kExpression;
    expression_.assign(operand);
    if (textOnly_) searchText_.assign(operand);
    return;
  }
  if (digit > filter_op::kLast) return;
  side_ = Side::kSearch;
  operatorIndex_ = digit - 1;
  searchText_.assign(operand);
  Preview();
}

std::string FilterDialogModel::Heading() const {
  const char* pattern = !textOnly_                   ? "&Search '%s' for:"
                        : type_ == FieldType::kFiles ? "&Search '%s' (filenames) for substring:"
                                                     : "&Search '%s' for text:";
  std::string heading(pattern);
  heading.replace(heading.find("%s"), 2, fieldName_);
  return heading;
}

void FilterDialogModel::Preview() {
  char formula[kFilterFormulaRoom];
  size_t length = 0;
  if (operatorIndex_ >= 0) {
    length = BuildFilterFormula(fieldName_, type_, MakeFilterText(operatorIndex_ + 1, searchText_),
                                formula);
  }
  expression_.assign(formula, length);
  previewing_ = true;
  if (showExpression_) showExpression_(expression_);
  previewing_ = false;
}

void FilterDialogModel::SetSearchText(std::string_view text) {
  searchText_.assign(text);
  if (textOnly_) {
    expression_.assign(text);
    return;
  }
  Preview();
}

void FilterDialogModel::SetOperator(int index) {
  operatorIndex_ = index >= 0 && index < filter_op::kLast ? index : kNoOperator;
  Preview();
}

void FilterDialogModel::SetExpressionText(std::string_view text) {
  if (previewing_) return;
  expression_.assign(text);
  if (textOnly_) {
    searchText_.assign(text);
    return;
  }
  side_ = Side::kExpression;
}

std::string FilterDialogModel::FilterText() const {
  if (textOnly_) return MakeFilterText(filter_op::kExpression, searchText_);
  if (side_ == Side::kExpression) return MakeFilterText(filter_op::kExpression, expression_);
  if (searchText_.empty() || operatorIndex_ < 0) return std::string();
  return MakeFilterText(operatorIndex_ + 1, searchText_);
}

}  // namespace kelpdex
