#include "table/schema.h"

#include <gtest/gtest.h>

#include "core/strings.h"
#include "support/recording_prompter.h"
#include "table/table_fixture.h"

namespace kelpdex {
namespace {

using testing::Field;

class SchemaTest : public testing::TableTest {
 protected:
  void SetUp() override {
    MakeTable({Field("Name", FieldType::kText), Field("Price", FieldType::kNumber),
               Field("Notes", FieldType::kLongText)});
  }
  FieldCheck Check(FieldEdit edit) {
    FieldSpec fieldRow;
    return CheckField(Table(), edit, fieldRow);
  }
};

TEST_F(SchemaTest, FieldRowsRoundTripAndTypesReadByExactText) {
  FieldSpec fieldRow;
  ASSERT_TRUE(ReadField(Table(), 1, fieldRow));
  EXPECT_EQ(fieldRow.name, "Price");
  EXPECT_EQ(fieldRow.type, FieldType::kNumber);
  EXPECT_FALSE(ReadField(Table(), 3, fieldRow));
  FieldType type;
  bool link;
  ParseFieldTypeText("Text / Link", type, link);
  EXPECT_EQ(type, FieldType::kText);
  EXPECT_TRUE(link);
  ParseFieldTypeText("text", type, link);  // not an exact match
  EXPECT_EQ(type, FieldType::kUnknown);
  EXPECT_STREQ(FieldTypeText(FieldType::kUnknown, false), "Unknown");

  // An empty text deletes its cell rather than writing an empty one.
  fieldRow.formulaOrValue = "V:3";
  ASSERT_TRUE(WriteField(Table(), 1, fieldRow));
  EXPECT_NE(Table().catalogue->cells.GetCell(2, catalogue::kFormulaColumn), nullptr);
  fieldRow.formulaOrValue.clear();
  ASSERT_TRUE(WriteField(Table(), 1, fieldRow));
  EXPECT_EQ(Table().catalogue->cells.GetCell(2, catalogue::kFormulaColumn), nullptr);
}

TEST(FieldTypeCombo, ListsTheFourTypesAndNothingElse) {
  const FieldType listed[] = {FieldType::kText, FieldType::kNumber, FieldType::kLongText,
                              FieldType::kFiles};
  for (int i = 0; i < 4; ++i) {
    EXPECT_EQ(FieldTypeOfCombo(i), listed[i]);
    EXPECT_EQ(ComboOfFieldType(listed[i]), i);
  }
  EXPECT_EQ(FieldTypeOfCombo(-1), FieldType::kUnknown);
  EXPECT_EQ(FieldTypeOfCombo(4), FieldType::kUnknown);
  EXPECT_EQ(ComboOfFieldType(FieldType::kUnknown), -1);
}

TEST_F(SchemaTest, DialogChecksInTheirOrder) {
  FieldEdit edit = EditOfField(Table(), 1);
  edit.type = FieldType::kLongText;  // Number to Long Text
  FieldCheck check = Check(edit);
  EXPECT_EQ(check.stringId, str::kConversionUnavailable);
  FieldEdit notes = EditOfField(Table(), 2);
  notes.type = FieldType::kFiles;  // Long Text to Images/Files
  EXPECT_EQ(Check(notes).stringId, str::kConversionUnavailable);
  edit.type = FieldType::kLongText;
  FieldSpec fieldRow;
  CheckField(Table(), edit, fieldRow);
  EXPECT_EQ(edit.type, FieldType::kNumber);  // the old type is put back

  FieldEdit added;
  added.name = "   ";
  EXPECT_EQ(Check(added).stringId, str::kInvalidFieldName);
  added.name = "2nd";
  EXPECT_EQ(Check(added).stringId, str::kInvalidFieldName);
  added.name = "price  ";
  EXPECT_EQ(Check(added).stringId, str::kFieldExists);
  added.name = "Total";
  added.formulaOrValue = "=Price*2";
  ASSERT_TRUE(CheckField(Table(), added, fieldRow).ok());
  EXPECT_EQ(fieldRow.formulaOrValue, "F:=Price*2");
  added.isValue = true;
  added.formulaOrValue = "12";
  ASSERT_TRUE(CheckField(Table(), added, fieldRow).ok());
  EXPECT_EQ(fieldRow.formulaOrValue, "V:12");

  // Its own name is no duplicate; a Text <-> Number change is allowed.
  FieldEdit same = EditOfField(Table(), 0);
  same.type = FieldType::kNumber;
  EXPECT_TRUE(Check(same).ok());
}

TEST_F(SchemaTest, NewFieldsAreCheckedAgainstTheTableAndOneAnother) {
  auto edit = [](const std::string& name) {
    FieldEdit e;
    e.name = name;
    return e;
  };
  std::vector<FieldEdit> edits = {edit("Total"), edit("Tax "), edit("TOTAL"), edit("Other")};
  std::vector<FieldSpec> rows;
  size_t refused = 0;
  FieldCheck check = CheckNewFields(Table(), edits, rows, refused);
  EXPECT_EQ(check.stringId, str::kFieldExists);
  EXPECT_EQ(refused, 2u);
  EXPECT_EQ(rows[1].name, "Tax");  // trimmed as the dialog trims

  edits = {edit("Total"), edit("notes")};
  EXPECT_EQ(CheckNewFields(Table(), edits, rows, refused).stringId, str::kFieldExists);
  EXPECT_EQ(refused, 1u);
  edits = {edit("Total"), edit("9th")};
  EXPECT_EQ(CheckNewFields(Table(), edits, rows, refused).stringId, str::kInvalidFieldName);

  edits = {edit("Total"), edit("Tax")};
  edits[0].formulaOrValue = "=Price*2";
  ASSERT_TRUE(CheckNewFields(Table(), edits, rows, refused).ok());
  EXPECT_EQ(refused, 2u);
  // Inserted in one go at a position, the later fields move behind them.
  ASSERT_TRUE(InsertFields(book, 1, rows));
  EXPECT_EQ(Names(), (std::vector<std::string>{"Name", "Total", "Tax", "Price", "Notes"}));
  ASSERT_EQ(book.fieldDefaults.size(), 5u);
  EXPECT_EQ(book.fieldDefaults[1].formula, "=Price*2");
  // A field that cannot go in stops the batch, and the table is still refreshed.
  PutText(0, kLastColumn, "edge");
  EXPECT_FALSE(InsertFields(book, 0, {Field("A", FieldType::kText), Field("B", FieldType::kText)}));
  EXPECT_EQ(book.errorCode, err::kNoEmptyColumns);
  EXPECT_EQ(Names().size(), 5u);
  EXPECT_EQ(book.fieldDefaults.size(), 5u);
}

TEST_F(SchemaTest, NamesAndFormulasAreBoundedByTheDialogsBoxes) {
  FieldEdit edit;
  edit.name = "N" + std::string(1023, 'x') + "  ";  // trailing blanks do not count
  EXPECT_TRUE(Check(edit).ok());
  edit.name = "N" + std::string(1024, 'x');
  FieldCheck check = Check(edit);
  EXPECT_EQ(check.stringId, str::kMaxCharacters);
  EXPECT_EQ(check.focus, FieldFocus::kName);
  EXPECT_EQ(check.Text(), "Please enter no more than 1024 characters.");
  // The stored text holds its two-letter prefix within the same 1024 characters, far less than
  // what would no longer fit one catalogue cell.
  edit.name = "Total";
  edit.formulaOrValue = "=" + std::string(1021, '1');
  EXPECT_TRUE(Check(edit).ok());
  edit.formulaOrValue += "1";
  check = Check(edit);
  EXPECT_EQ(check.focus, FieldFocus::kFormula);
  EXPECT_EQ(check.Text(), "Please enter no more than 1022 characters.");
  edit.isValue = true;
  edit.formulaOrValue = std::string(9000, 'v');
  EXPECT_EQ(Check(edit).stringId, str::kMaxCharacters);
  EXPECT_EQ(Check(FieldEdit{}).Text(), "Please enter a valid field name starting with a letter.");
}

TEST_F(SchemaTest, FormulasAreStoredInTheGenericNotation) {
  LocaleSettings saved = currentLocale;
  currentLocale.decimalSeparator = ',';
  currentLocale.thousandSeparator = '.';
  currentLocale.listSeparator = ';';
  currentLocale.rowSeparator = '\\';
  FieldEdit edit;
  edit.name = "Rounded";
  edit.formulaOrValue = "=round(Price; 2) + 1,5";
  FieldSpec fieldRow;
  ASSERT_TRUE(CheckField(Table(), edit, fieldRow).ok());
  EXPECT_EQ(fieldRow.formulaOrValue, "F:=round(Price, 2) + 1.5");
  ASSERT_TRUE(InsertField(book, 3, fieldRow));
  EXPECT_EQ(EditOfField(Table(), 3).formulaOrValue, "=round(Price; 2) + 1,5");
  currentLocale = saved;
}

TEST_F(SchemaTest, InsertDeleteAndSwapMoveCellsFormatsAndObjects) {
  PutText(0, 0, "apple");
  PutNumber(0, 1, 2.5);
  PutText(1, 0, "pear");
  Data().objects.push_back(SheetObject{1, 2, FieldType::kLongText, "long"});
  ASSERT_TRUE(Data().formats.ApplyStyleRun(StyleRun{1, 1, 0, 3}));
  Data().formats.SetColumnStyle(1, 5);

  ASSERT_TRUE(InsertField(book, 1, Field("Kind", FieldType::kText)));
  EXPECT_EQ(Names(), (std::vector<std::string>{"Name", "Kind", "Price", "Notes"}));
  EXPECT_EQ(At(0, 2), "2.5");
  EXPECT_EQ(Data().objects[0].column, 3);
  EXPECT_EQ(Data().formats.StyleAt(0, 2), 3);
  EXPECT_EQ(book.fieldDefaults.size(), 4u);

  ASSERT_TRUE(SwapFields(book, 2, 3));
  EXPECT_EQ(Names(), (std::vector<std::string>{"Name", "Kind", "Notes", "Price"}));
  EXPECT_EQ(At(0, 3), "2.5");
  EXPECT_EQ(At(0, 2), "-");
  EXPECT_EQ(Data().objects[0].column, 2);
  EXPECT_EQ(Data().formats.StyleAt(0, 3), 3);
  EXPECT_EQ(Data().formats.ColumnStyle(3), 5);
  EXPECT_TRUE(SwapFields(book, 3, 4));  // past the end: nothing
  EXPECT_EQ(Names().back(), "Price");

  ASSERT_TRUE(DeleteField(book, 0));
  EXPECT_EQ(Names(), (std::vector<std::string>{"Kind", "Notes", "Price"}));
  EXPECT_EQ(At(0, 2), "2.5");
  EXPECT_EQ(At(1, 0), "-");
  EXPECT_FALSE(DeleteField(book, 7));
}

TEST_F(SchemaTest, ModifyConvertsBetweenTextAndNumberOnly) {
  PutText(0, 1, "1,234.5");
  PutText(1, 1, "n/a");
  PutNumber(2, 1, 7, cell::kAuto);
  FieldSpec text = Field("Price", FieldType::kText);
  ASSERT_TRUE(ModifyField(book, 1, text));  // Number to Text: numbers become labels
  EXPECT_EQ(At(2, 1), "7");                 // a computed cell is left as it is
  FieldSpec number = Field("Amount", FieldType::kNumber);
  ASSERT_TRUE(ModifyField(book, 1, number));
  EXPECT_EQ(At(0, 1), "1234.5");
  EXPECT_EQ(At(1, 1), "'n/a'");
  EXPECT_EQ(Names()[1], "Amount");
  EXPECT_FALSE(ModifyField(book, 2, Field("Notes", FieldType::kFiles)));
}

TEST_F(SchemaTest, TablesAddRenameDeleteAndTheLastOneStays) {
  EXPECT_EQ(CheckTableName(book, "t"), TableNameCheck::kDuplicate);
  EXPECT_EQ(CheckTableName(book, "T", book.FindTable("T")), TableNameCheck::kOk);
  EXPECT_EQ(CheckTableName(book, "  "), TableNameCheck::kInvalid);
  EXPECT_EQ(CheckTableName(book, "a\\b"), TableNameCheck::kInvalid);
  // The folder of the catalogues would hide a table of its name.
  EXPECT_EQ(CheckTableName(book, "System "), TableNameCheck::kReserved);
  EXPECT_EQ(CheckTableName(book, "systems"), TableNameCheck::kOk);
  ASSERT_TRUE(AddTable(book, "Second"));
  EXPECT_EQ(book.currentSheet, book.FindTable("Second"));
  ASSERT_TRUE(RenameTable(book, "Two"));
  EXPECT_NE(book.FindCatalogue("Two"), nullptr);
  EXPECT_EQ(book.FindTable("Second"), nullptr);
  EXPECT_TRUE(PreviousTable(book));
  EXPECT_EQ(book.currentSheet, book.FindTable("T"));
  EXPECT_FALSE(PreviousTable(book));
  EXPECT_TRUE(NextTable(book));
  EXPECT_FALSE(NextTable(book));

  testing::RecordingPrompter prompter;
  testing::ScopedPrompter scope(prompter);
  EXPECT_EQ(DeleteTable(book), DeleteTableResult::kCancelled);  // No is the cautious answer
  ASSERT_EQ(prompter.boxes.size(), 1u);
  EXPECT_EQ(prompter.boxes[0].flags & mb::kDefaultButton2, mb::kDefaultButton2);
  prompter.answers = {answer::kYes, answer::kYes};
  DetachedTable held;
  EXPECT_EQ(DeleteTable(book, &held), DeleteTableResult::kDeleted);
  ASSERT_NE(held.data, nullptr);
  EXPECT_EQ(held.data->Name(), "Two");
  EXPECT_EQ(book.currentSheet, book.FindTable("T"));
  EXPECT_EQ(DeleteTable(book), DeleteTableResult::kFailed);
  EXPECT_EQ(book.errorCode, err::kNeedsOneTable);
  EXPECT_NE(book.FindTable("T"), nullptr);
}

TEST_F(SchemaTest, InsertingPastTheLastColumnIsRefusedBeforeAnythingChanges) {
  PutText(0, kLastColumn, "edge");
  EXPECT_FALSE(InsertField(book, 0, Field("New", FieldType::kText)));
  EXPECT_EQ(book.errorCode, err::kNoEmptyColumns);
  EXPECT_EQ(Names().size(), 3u);
  EXPECT_EQ(At(0, kLastColumn), "'edge'");
}

}  // namespace
}  // namespace kelpdex
