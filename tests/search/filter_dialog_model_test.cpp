#include "search/filter_dialog_model.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace kelpdex {
namespace {

TEST(FilterDialogModelTest, AnOperatorFilterOpensOnItsSideWithItsFormula) {
  FilterDialogModel dialog("Qty", FieldType::kNumber, "6:1 5");
  EXPECT_EQ(dialog.Heading(), "&Search 'Qty' for:");
  EXPECT_EQ(dialog.side(), FilterDialogModel::Side::kSearch);
  EXPECT_EQ(dialog.operatorIndex(), 5);
  EXPECT_EQ(dialog.searchText(), "1 5");
  EXPECT_EQ(dialog.expression(), "=(Qty >= 1)*(Qty <= 5)");
  EXPECT_EQ(dialog.FilterText(), "6:1 5");

  FilterDialogModel expression("Qty", FieldType::kNumber, "0:=Qty>2");
  EXPECT_EQ(expression.side(), FilterDialogModel::Side::kExpression);
  EXPECT_EQ(expression.expression(), "=Qty>2");
  EXPECT_EQ(expression.operatorIndex(), FilterDialogModel::kDefaultOperator);
  EXPECT_EQ(expression.FilterText(), "0:=Qty>2");

  FilterDialogModel fresh("Name", FieldType::kText, "");
  EXPECT_EQ(fresh.operatorIndex(), 1);  // "Equal"
  EXPECT_EQ(fresh.FilterText(), "");    // no text, no filter
}

// The preview's change of the Expression box comes back as an edit of the box; the guard keeps
// it from flipping the dialog to the Expression side, which a real edit does.
TEST(FilterDialogModelTest, ThePreviewFollowsEditsWithoutLoopingBack) {
  FilterDialogModel dialog("Name", FieldType::kText, "");
  std::vector<std::string> shown;
  dialog.OnExpressionPreview([&](const std::string& text) {
    shown.push_back(text);
    dialog.SetExpressionText(text);  // as the edit box's change notice would
  });
  dialog.SetSearchText("Ber");
  dialog.SetOperator(0);
  EXPECT_EQ(shown, (std::vector<std::string>{"=Name = \"Ber\"", "=SEARCH(\"Ber\", Name,) = 1"}));
  EXPECT_EQ(dialog.side(), FilterDialogModel::Side::kSearch);
  EXPECT_EQ(dialog.FilterText(), "1:Ber");
  dialog.SetOperator(FilterDialogModel::kNoOperator);
  EXPECT_EQ(dialog.FilterText(), "");
  dialog.SetExpressionText("=LEN(Name) > 3");
  EXPECT_EQ(dialog.side(), FilterDialogModel::Side::kExpression);
  EXPECT_EQ(dialog.FilterText(), "0:=LEN(Name) > 3");
}

TEST(FilterDialogModelTest, LongTextAndFilesTakeOneTextToLookFor) {
  FilterDialogModel notes("Notes", FieldType::kLongText, "0:urgent");
  EXPECT_TRUE(notes.textOnly());
  EXPECT_EQ(notes.Heading(), "&Search 'Notes' for text:");
  EXPECT_EQ(notes.searchText(), "urgent");
  notes.SetSearchText("late");
  EXPECT_EQ(notes.FilterText(), "0:late");
  FilterDialogModel files("Scans", FieldType::kFiles, "");
  EXPECT_EQ(files.Heading(), "&Search 'Scans' (filenames) for substring:");
  EXPECT_EQ(files.FilterText(), "0:");
}

}  // namespace
}  // namespace kelpdex
