#include <string>

#include <gtest/gtest.h>

#include "store/bytes.h"
#include "store/catalogue.h"
#include "store/column_style.h"
#include "store/style_table.h"
#include "store/workbook.h"

namespace kelpdex {
namespace {

void PutTitle(Worksheet& sheet, uint16_t column, const std::string& title) {
  uint8_t rec[300];
  cell::EncodeText(rec, 0, column, title);
  ASSERT_TRUE(sheet.cells.PutCell(rec));
}

class WorkbookTest : public ::testing::Test {
 protected:
  void SetUp() override {
    book_ = std::make_unique<Workbook>();
    ASSERT_TRUE(CreateTable(*book_, "Orders"));
    ASSERT_TRUE(CreateTable(*book_, "Customers"));
  }
  std::unique_ptr<Workbook> book_;
};

TEST_F(WorkbookTest, SkeletonHasSystemFolderCataloguesThenTables) {
  const WorkbookNode* n = book_->firstNode;
  ASSERT_NE(n, nullptr);
  EXPECT_TRUE(n->IsFolder());
  EXPECT_EQ(n->Name(), "system");
  std::string shape;
  for (; n != nullptr; n = n->next)
    shape += std::to_string(n->level) + std::string(n->Name()) + " ";
  EXPECT_EQ(shape, "1system 2Orders 2Customers 1Orders 1Customers ");
  EXPECT_EQ(book_->folderCount, 1);
  EXPECT_EQ(book_->worksheetCount, 4);
  EXPECT_EQ(book_->TableByIndex(1), book_->FindTable("customers"));
  EXPECT_EQ(book_->TableByIndex(2), nullptr);
  EXPECT_EQ(book_->currentSheet, book_->FindTable("Orders"));
}

TEST_F(WorkbookTest, PathsAreCaseInsensitiveAndFoldersWin) {
  Worksheet* catalogue = book_->FindCatalogue("Orders");
  ASSERT_NE(catalogue, nullptr);
  EXPECT_EQ(book_->FindNode("\\SYSTEM\\orders"), catalogue);
  std::string path;
  ASSERT_TRUE(book_->PathOfNode(catalogue, path, true));
  EXPECT_EQ(path, "\\system\\Orders");
  ASSERT_TRUE(book_->PathOfNode(catalogue, path, false));
  EXPECT_EQ(path, "\\system");
  // A table called "system" shares its path with the folder, which stands first.
  ASSERT_TRUE(CreateTable(*book_, "system"));
  EXPECT_EQ(book_->FindTable("system"), nullptr);
  EXPECT_NE(book_->FindCatalogue("system"), nullptr);
  EXPECT_EQ(book_->FindNode("\\nowhere"), nullptr);
}

TEST_F(WorkbookTest, AttachIntoFolderAndDetachWithDescendants) {
  auto* archive = new Folder("archive");
  book_->AttachNode(archive, nullptr);
  auto* first = new Worksheet("old");
  auto* second = new Worksheet("older");
  first->next = second;
  second->previous = first;
  book_->AttachNode(first, archive);
  EXPECT_EQ(first->level, 2);
  EXPECT_EQ(second->level, 2);
  EXPECT_EQ(book_->FindNode("\\archive\\older"), second);
  EXPECT_EQ(book_->worksheetCount, 6);
  // A table is a level-1 worksheet; sheets inside other folders are not tables.
  EXPECT_EQ(book_->TableCount(), 2u);

  book_->currentSheet = second;
  ASSERT_TRUE(book_->DetachNode(archive));
  EXPECT_EQ(book_->currentSheet, nullptr);
  EXPECT_EQ(book_->worksheetCount, 4);
  EXPECT_EQ(book_->FindNode("\\archive"), nullptr);
  EXPECT_EQ(archive->next, first);  // the run travels together
  Workbook::DeleteNodes(archive);

  // Taking away every worksheet is refused.
  Workbook lone;
  auto* only = new Worksheet("only");
  lone.AttachNode(only, nullptr);
  EXPECT_FALSE(lone.DetachNode(only));
  EXPECT_EQ(lone.worksheetCount, 1);
}

TEST_F(WorkbookTest, OverlongPathsAreSkipped) {
  std::string longName(127, 'n');
  auto* folder = new Folder(longName);
  book_->AttachNode(folder, nullptr);
  auto* sheet = new Worksheet(longName);
  book_->AttachNode(sheet, folder);
  // "\" + 127 + "\" + 127 is 256 bytes: past the limit.
  EXPECT_EQ(book_->FindNode("\\" + longName + "\\" + longName), nullptr);
  EXPECT_EQ(book_->FindNode("\\" + longName), folder);
}

TEST_F(WorkbookTest, CatalogueScansKeysAndFormsByTheirFirstLetter) {
  TableSpec table;
  ASSERT_TRUE(MakeTableSpec(*book_, "orders", table));
  EXPECT_EQ(KeyCount(table), 1);
  EXPECT_EQ(FormCount(table), 0);
  EXPECT_EQ(CurrentKey(table), 0);
  EXPECT_EQ(CurrentForm(table), 0);

  Worksheet& c = *table.catalogue;
  PutTitle(c, 5, "key{Cheap}");
  PutTitle(c, 6, "Table");
  PutTitle(c, 7, "Std. Form{1,1,50}");
  PutTitle(c, 8, "Form{2,3,Entry}");
  PutTitle(c, 9, "form{1,1,Other}");
  // The marks were set on columns 4 and 5 when there was one key; move them to the new layout.
  EXPECT_EQ(KeyCount(table), 2);
  EXPECT_EQ(FormCount(table), 2);
  EXPECT_EQ(SelectKey(table, 1), 1);
  EXPECT_EQ(CurrentKey(table), 1);
  EXPECT_EQ(SelectKey(table, 7), 1);  // past the keys: the mark stands
  EXPECT_EQ(SelectForm(table, 3), 3);
  EXPECT_EQ(CurrentForm(table), 3);
  EXPECT_EQ(SelectForm(table, 4), 0);  // past the views: nothing happens
  EXPECT_EQ(CurrentForm(table), 3);

  // A gap in row 0 ends the scan.
  c.cells.DeleteRange(5, 5, 0, 0);
  EXPECT_EQ(KeyCount(table), 1);

  TableSpec missing;
  EXPECT_FALSE(MakeTableSpec(*book_, "Nope", missing));
  EXPECT_EQ(book_->errorCode, err::kInvalidNodePath);
}

TEST(CatalogueTitles, ParseTheWrittenForms) {
  std::string name;
  ASSERT_TRUE(ParseKeyTitle(KeyTitle("Default"), name));
  EXPECT_EQ(name, "Default");
  EXPECT_FALSE(ParseKeyTitle("Key{}", name));
  int a = 0, b = 0, c = 0;
  ASSERT_TRUE(ParseStdFormTitle("Std. Form{1,1,50}", a, b, c));
  EXPECT_EQ(a * 10000 + b * 100 + c, 10150);
  ASSERT_TRUE(ParseFormTitle(FormTitle(2, 3, "Entry form"), a, b, name));
  EXPECT_EQ(a, 2);
  EXPECT_EQ(b, 3);
  EXPECT_EQ(name, "Entry form");
}

TEST(CatalogueTitles, SortIndexPlaceAndSense) {
  EXPECT_EQ(SortKeyPlace(10003), 3);
  EXPECT_TRUE(SortKeyReversed(10003));
  EXPECT_EQ(SortKeyPlace(20001), 1);
  EXPECT_FALSE(SortKeyReversed(20001));
  EXPECT_EQ(SortKeyPlace(20000), 0);
  EXPECT_EQ(SortKeyPlace(0), 0);
}

TEST(CreateTable, OutOfMemoryLeavesNoTableButKeepsTheFolder) {
  Workbook book;
  SetBlockAllocationBudget(0);
  bool created = CreateTable(book, "Orders");
  SetBlockAllocationBudget(-1);
  EXPECT_FALSE(created);
  EXPECT_EQ(book.errorCode, err::kOutOfMemory);
  ASSERT_NE(book.firstNode, nullptr);
  EXPECT_TRUE(book.firstNode->IsFolder());
  EXPECT_EQ(book.firstNode->next, nullptr);
  EXPECT_EQ(book.worksheetCount, 0);
}

TEST(StyleTable, IdenticalStylesAreSharedUntilTheTableIsFull) {
  StyleTable table;
  EXPECT_EQ(table.styleCount(), 1);
  EXPECT_EQ(table.Style(0).bytes[style::kHorizontalAt], 4);
  EXPECT_EQ(table.Style(0).bytes[style::kVerticalAt], 2);
  StyleRecord values{};
  values.bytes[style::kFillAt] = style::kSolidFill;
  StoreU32(values.bytes + style::kFillColourAt, style::kSelectionColour);
  uint16_t id1 = 0, id2 = 0;
  ErrorCode error = err::kNone;
  ASSERT_TRUE(table.DeriveStyle(0, style::kFill, values, nullptr, id1, error));
  ASSERT_TRUE(table.DeriveStyle(0, style::kFill, values, nullptr, id2, error));
  EXPECT_EQ(id1, id2);
  EXPECT_TRUE(table.IsSelectionStyle(id1));
  EXPECT_FALSE(table.IsSelectionStyle(0));
  // The fill came over; the alignment of the base stayed.
  EXPECT_EQ(table.Style(id1).bytes[style::kHorizontalAt], 4);

  FontRecord bold{};
  bold.bytes[font::kWeightAt] = 7;
  uint16_t boldId = 0;
  ASSERT_TRUE(table.DeriveStyle(id1, style::kFontWeight, values, &bold, boldId, error));
  EXPECT_EQ(table.fontCount(), 2);
  EXPECT_EQ(table.Font(table.Style(boldId).bytes[style::kFontIndexAt]).bytes[font::kWeightAt], 7);

  for (uint32_t i = table.styleCount(); i < kMaxStyles; ++i) {
    StyleRecord distinct{};
    StoreU32(distinct.bytes + style::kFillColourAt, i);
    uint16_t id = 0;
    ASSERT_TRUE(table.FindOrAddStyle(distinct, id, error));
  }
  StyleRecord oneMore{};
  StoreU32(oneMore.bytes + style::kFillColourAt, 0xABCDEF);
  uint16_t id = 0;
  EXPECT_FALSE(table.FindOrAddStyle(oneMore, id, error));
  EXPECT_EQ(error, err::kTooManyStyles);
}

TEST(Workbook, DropDownListsTakeTheFirstFreeNumber) {
  Workbook book;
  uint32_t a = 0, b = 0, c = 0;
  ASSERT_TRUE(book.AddDropDownList(a));
  ASSERT_TRUE(book.AddDropDownList(b));
  EXPECT_EQ(book.dropDownLists[b].name, "List 2.");
  book.RemoveDropDownList(a);
  ASSERT_TRUE(book.AddDropDownList(c));
  EXPECT_EQ(c, a);
  EXPECT_EQ(book.dropDownLists[c].name, "List 1.");
  for (uint32_t i = 2; i < kDropDownListSlots; ++i) ASSERT_TRUE(book.AddDropDownList(c));
  EXPECT_FALSE(book.AddDropDownList(c));
  EXPECT_EQ(book.errorCode, err::kTooManyDropDownLists);
}

TEST(Worksheet, RowsAndColumnsThatWouldFallOffAreRefused) {
  Worksheet sheet("t");
  uint8_t rec[32];
  cell::EncodeText(rec, kLastRow, 0, "bottom");
  ASSERT_TRUE(sheet.cells.PutCell(rec));
  ErrorCode error = err::kNone;
  EXPECT_FALSE(sheet.InsertRows(5, 5, error));
  EXPECT_EQ(error, err::kNoEmptyRows);
  cell::EncodeText(rec, 3, kLastColumn, "right");
  ASSERT_TRUE(sheet.cells.PutCell(rec));
  EXPECT_FALSE(sheet.InsertColumn(0, error));
  EXPECT_EQ(error, err::kNoEmptyColumns);
  sheet.DeleteRow(kLastRow);
  EXPECT_TRUE(sheet.InsertRows(2, 2, error));
  EXPECT_NE(sheet.cells.GetCell(4, kLastColumn), nullptr);
}

TEST(ColumnStyle, RunsCrossingTheColumnKeepTheirOtherAttributes) {
  Workbook book;
  Worksheet sheet("t");
  StyleRecord boldValues{};
  FontRecord bold{};
  bold.bytes[font::kWeightAt] = 7;
  uint16_t boldStyle = 0;
  ErrorCode error = err::kNone;
  ASSERT_TRUE(book.styles.DeriveStyle(0, style::kFontWeight, boldValues, &bold, boldStyle, error));
  ASSERT_TRUE(sheet.formats.ApplyStyleRun({2, 5, 3, boldStyle}));

  StyleRecord fill{};
  fill.bytes[style::kFillAt] = style::kSolidFill;
  StoreU32(fill.bytes + style::kFillColourAt, 0x0000FF);
  ASSERT_TRUE(SetColumnStyleAttribute(book, sheet, 4, style::kFill, fill, nullptr));

  const StyleRecord& crossed = book.styles.Style(sheet.formats.StyleAt(3, 4));
  EXPECT_EQ(crossed.bytes[style::kFillAt], style::kSolidFill);
  EXPECT_EQ(book.styles.Font(crossed.bytes[style::kFontIndexAt]).bytes[font::kWeightAt], 7);
  EXPECT_EQ(sheet.formats.StyleAt(3, 3), boldStyle);
  EXPECT_EQ(sheet.formats.StyleAt(3, 5), boldStyle);
  // Other rows of the column take the column's own new style, which has no bold.
  const StyleRecord& plain = book.styles.Style(sheet.formats.StyleAt(9, 4));
  EXPECT_EQ(plain.bytes[style::kFillAt], style::kSolidFill);
  EXPECT_EQ(plain.bytes[style::kFontIndexAt], 0);
}

}  // namespace
}  // namespace kelpdex

namespace kelpdex {
namespace {

// A deleted list leaves the styles that offered it; a new list in its slot must not reach them.
TEST(StyleTableLists, ForgettingAListClearsOnlyTheStylesThatOfferedIt) {
  StyleTable styles;
  uint16_t ids[3] = {};
  ErrorCode error = err::kNone;
  for (uint16_t number = 1; number <= 3; ++number) {
    StyleRecord record = styles.Style(0);
    StoreU16(record.bytes + style::kDropDownAt, number);
    record.bytes[style::kDropDownSortAt] = 1;
    ASSERT_TRUE(styles.FindOrAddStyle(record, ids[number - 1], error));
  }
  styles.ForgetDropDownList(2);
  styles.ForgetDropDownList(0);
  EXPECT_EQ(LoadU16(styles.Style(ids[0]).bytes + style::kDropDownAt), 1);
  EXPECT_EQ(LoadU16(styles.Style(ids[1]).bytes + style::kDropDownAt), 0);
  EXPECT_EQ(LoadU16(styles.Style(ids[2]).bytes + style::kDropDownAt), 3);
  EXPECT_EQ(styles.Style(ids[1]).bytes[style::kDropDownSortAt], 1);
}

}  // namespace
}  // namespace kelpdex
