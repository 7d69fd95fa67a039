#include <gtest/gtest.h>
#include <sqlite3.h>

#include <algorithm>
#include <functional>
#include <string>
#include <vector>

#include "exchange/sqlite.h"
#include "exchange/sqlite_parts.h"
#include "exchange_test_util.h"
#include "format/cell_text.h"
#include "format/number_style.h"
#include "persist/binary_format.h"
#include "persist/side_values.h"
#include "platform/os.h"
#include "store/bytes.h"
#include "store/cell_error.h"
#include "store/column_style.h"
#include "support/file_bytes.h"
#include "support/temp_dir.h"
#include "support/workbook_compare.h"
#include "table/schema.h"

namespace kelpdex {
namespace {

using testing::ReadFileBytes;
using testing::TempDir;

// Runs SQL on a file of our own making, as another program would.
void Sql(const std::string& path, const std::string& sql) {
  sqlite3* db = nullptr;
  ASSERT_EQ(sqlite3_open(path.c_str(), &db), SQLITE_OK);
  char* message = nullptr;
  const int result = sqlite3_exec(db, sql.c_str(), nullptr, nullptr, &message);
  EXPECT_EQ(result, SQLITE_OK) << (message != nullptr ? message : "") << "\n" << sql;
  sqlite3_free(message);
  sqlite3_close(db);
}

// The first column of every row a query gives, as text.
std::vector<std::string> Query(const std::string& path, const std::string& sql) {
  std::vector<std::string> out;
  sqlite3* db = nullptr;
  sqlite3_stmt* stmt = nullptr;
  if (sqlite3_open_v2(path.c_str(), &db, SQLITE_OPEN_READONLY, nullptr) == SQLITE_OK &&
      sqlite3_prepare_v2(db, sql.c_str(), -1, &stmt, nullptr) == SQLITE_OK) {
    while (sqlite3_step(stmt) == SQLITE_ROW) {
      const auto* text = reinterpret_cast<const char*>(sqlite3_column_text(stmt, 0));
      out.push_back(text != nullptr ? text : "NULL");
    }
  }
  sqlite3_finalize(stmt);
  sqlite3_close(db);
  return out;
}

void Put(Worksheet& sheet, uint32_t row, uint16_t column, std::string_view text, uint8_t tag = 0) {
  uint8_t record[kBlockPayload];
  cell::EncodeText(record, row, column, text, tag);
  ASSERT_TRUE(sheet.cells.PutCell(record));
}

void Put(Worksheet& sheet, uint32_t row, uint16_t column, double number, uint8_t tag = 0) {
  uint8_t record[cell::kNumberSize];
  cell::EncodeNumber(record, row, column, number, tag);
  ASSERT_TRUE(sheet.cells.PutCell(record));
}

FieldSpec Field(const char* name, FieldType type, bool link = false, const char* formula = "",
                uint16_t sortIndex = 0, const char* key = "") {
  FieldSpec f;
  f.name = name;
  f.type = type;
  f.link = link;
  f.formulaOrValue = formula;
  f.sortIndex = sortIndex;
  f.firstKeyExpression = key;
  return f;
}

// A number format of `kind`; the date kinds show the month by name.
NumberStyle Kind(uint8_t kind, uint8_t decimals = 0, const char* symbol = "") {
  NumberStyle n;
  n.kind = kind;
  n.index = 9;
  n.fixedDecimals = decimals != 0;
  n.decimalDigits = decimals;
  std::snprintf(n.symbol, sizeof n.symbol, "%s", symbol);
  return n;
}

// A number format given to a whole field, as the format dialog gives it.
void FormatField(Workbook& book, Worksheet& data, uint16_t column, const NumberStyle& format) {
  StyleRecord values = book.styles.Style(0);
  WriteNumberStyle(format, values);
  ASSERT_TRUE(SetColumnStyleAttribute(book, data, column, style::kNumberFormat, values, nullptr));
}

// The sheets' formats: number formats (currency, percentage, date and time, one on a calculated
// field), a drop-down list, column widths and a hidden column, a row height, and one record in
// a red bold font as the xBase import marks a deleted one. A style no sheet uses comes first, so
// that the ids of the styles in use are not those of a new workbook.
void FormatEveryType(Workbook& book) {
  StyleRecord unused = book.styles.Style(0);
  unused.bytes[style::kFillAt] = style::kSolidFill;
  uint16_t id = 0;
  ErrorCode error = err::kNone;
  ASSERT_TRUE(book.styles.FindOrAddStyle(unused, id, error));
  Worksheet& people = *book.FindTable("People");
  FormatField(book, people, 2, Kind(format_kind::kCurrency, 2, "\x80"));
  FormatField(book, people, 3, Kind(format_kind::kPercentage, 1));
  FormatField(book, people, 4, Kind(format_kind::kGeneral, 3));
  uint32_t slot = 0;
  ASSERT_TRUE(book.AddDropDownList(slot));
  book.dropDownLists[slot].items = {"Zo\xEB", "Bob"};
  StyleRecord list = book.styles.Style(0);
  StoreU16(list.bytes + style::kDropDownAt, static_cast<uint16_t>(slot + 1));
  ASSERT_TRUE(SetColumnStyleAttribute(book, people, 0, style::kDropDown, list, nullptr));
  people.formats.Column(0).SetWidth(220, true);
  people.formats.Column(6).SetWidth(0, true);
  ASSERT_TRUE(people.formats.rowWords().Set(1, 40, true));
  FontRecord bold{};
  std::snprintf(reinterpret_cast<char*>(bold.bytes), 128, "Serif");
  bold.bytes[font::kWeightAt] = 70;
  uint8_t fontId = 0;
  ASSERT_TRUE(book.styles.FindOrAddFont(bold, fontId, error));
  StyleRecord red = book.styles.Style(people.formats.StyleAt(2, 2));
  red.bytes[style::kFontSetAt] = 1;
  red.bytes[style::kFontIndexAt] = fontId;
  red.bytes[style::kFontColourSetAt] = 1;
  StoreU32(red.bytes + style::kFontColourAt, 0xFF);
  ASSERT_TRUE(book.styles.FindOrAddStyle(red, id, error));
  ASSERT_TRUE(people.formats.ApplyStyleRun(StyleRun{0, 7, 2, id}));
  FormatField(book,
              *book.FindTable("Gr\xF6\xDF"
                              "e \"x\""),
              1, Kind(format_kind::kDateTime));
}

// Two tables that use every field type, with the cells an SQL column cannot hold as they are:
// a number in a Text field, a text that looks like a number in a Number field, an error, Auto
// marks, an empty record between two others, RTF and plain Long Text, a value too long for a
// cell, and objects; and their sheets formatted.
void BuildEveryType(Workbook& book) {
  ASSERT_TRUE(CreateTable(book, "People"));
  ASSERT_TRUE(AddTable(book,
                       "Gr\xF6\xDF"
                       "e \"x\""));
  TableSpec people;
  ASSERT_TRUE(MakeTableSpec(book, "People", people));
  book.currentSheet = people.data;
  ASSERT_TRUE(RefreshCurrentTable(book));
  ASSERT_TRUE(InsertFields(
      book, 0,
      {Field("Name", FieldType::kText, false, "V:nobody", 10002),
       Field("Home page", FieldType::kText, true),
       Field("Count", FieldType::kNumber, false, "", 1, "5:1"), Field("Price", FieldType::kNumber),
       Field("Total", FieldType::kNumber, false, "F:=C1*D1"), Field("Notes", FieldType::kLongText),
       Field("Plain", FieldType::kLongText), Field("Files", FieldType::kFiles)}));
  Worksheet& d = *people.data;
  Put(d, 0, 0, "Zo\xEB");
  Put(d, 0, 1, "http://example.org/a?b=\"c\"");
  Put(d, 0, 2, 3.0);
  Put(d, 0, 3, 2.5);
  Put(d, 0, 4, 7.5, cell::kAuto);
  Put(d, 2, 0, 42.0);   // a number in a Text field
  Put(d, 2, 2, "007");  // a text in a Number field
  Put(d, 2, 3, -1e300);
  Put(d, 2, 4, 0.0, cell::kAuto | ferr::kDivZero);
  SetLongTextValue(book, d, 0, 5, "{\\rtf1\\ansi Bold {\\b words}\\par}");
  SetLongTextValue(book, d, 2, 5, std::string(3000, 'L'));
  SetLongTextValue(book, d, 0, 6, "plain text\r\nsecond line");
  BinaryObjectList files;
  files.Append("photo.png", "2006-01-31T13:10:55", std::string("\x89PNG\r\n\x1a\n\0\1", 10));
  files.Append("empty.txt", "TEXT", "");
  SetObjectsValue(book, d, 2, 7, files);
  SelectForm(people, 1);

  TableSpec other;
  ASSERT_TRUE(MakeTableSpec(book,
                            "Gr\xF6\xDF"
                            "e \"x\"",
                            other));
  book.currentSheet = other.data;
  ASSERT_TRUE(RefreshCurrentTable(book));
  ASSERT_TRUE(
      InsertFields(book, 0, {Field("Wert", FieldType::kNumber), Field("Datum", FieldType::kText)}));
  Put(*other.data, 4, 0, 1.0 / 3.0);
  Put(*other.data, 4, 1, "2026-11-24T10:30:00");
  FormatEveryType(book);
}

// The cells of the fields before `columns` as the grid and kpx dump show them, under their
// formats or none. Long Text and Images/Files fields, which show their side values, stand behind.
std::vector<std::string> ShownCells(const Workbook& book, const Worksheet& sheet, uint16_t columns,
                                    bool formatted = true) {
  std::vector<std::string> out;
  CellCursor cursor;
  while (const CellRecord* r = const_cast<CellStore&>(sheet.cells).NextCell(cursor)) {
    if (cell::Column(r) >= columns) continue;
    const uint16_t id = formatted ? sheet.formats.StyleAt(cell::Row(r), cell::Column(r)) : 0;
    out.push_back(CellDisplayText(r, ReadNumberStyle(book.styles.Style(id))));
  }
  return out;
}

// A style as it looks, its font by what it holds rather than by number.
size_t StyleKey(const Workbook& book, uint16_t id) {
  StyleRecord style = book.styles.Style(id);
  const FontRecord& font = book.styles.Font(style.bytes[style::kFontIndexAt]);
  style.bytes[style::kFontIndexAt] = 0;
  return std::hash<std::string>()(
      std::string(reinterpret_cast<const char*>(style.bytes), kStyleRecordSize) +
      std::string(reinterpret_cast<const char*>(font.bytes), kFontRecordSize));
}

// Expects two sheets of two workbooks to carry the same formats, settings and containers.
void ExpectSameLayout(const Workbook& a, const Worksheet& x, const Workbook& b,
                      const Worksheet& y) {
  for (uint16_t c = 0; c < kColumnLimit; ++c) {
    const ColumnFormat& f = x.formats.Column(c);
    const ColumnFormat& g = y.formats.Column(c);
    ASSERT_EQ(f.words[0], g.words[0]) << c;
    ASSERT_EQ(f.words[2], g.words[2]) << c;
    ASSERT_EQ(StyleKey(a, f.StyleId()), StyleKey(b, g.StyleId())) << c;
  }
  auto runs = [](const Workbook& book, const Worksheet& sheet) {
    std::vector<std::string> out;
    RunCursor cursor;
    StyleRun run;
    while (sheet.formats.NextRun(cursor, run)) {
      out.push_back(std::to_string(run.row) + ":" + std::to_string(run.firstColumn) + "-" +
                    std::to_string(run.lastColumn) + "=" +
                    std::to_string(StyleKey(book, run.styleId)));
    }
    return out;
  };
  EXPECT_EQ(runs(a, x), runs(b, y));
  const uint32_t rows = std::max(x.formats.rowWords().rowCount(), y.formats.rowWords().rowCount());
  for (uint32_t r = 0; r < rows; ++r) {
    ASSERT_EQ(x.formats.rowWords().Value(r), y.formats.rowWords().Value(r)) << r;
  }
  EXPECT_EQ(x.pageSettings, y.pageSettings);
  EXPECT_EQ(x.sheetSettings, y.sheetSettings);
  EXPECT_EQ(x.containers.size(), y.containers.size());
}

std::string LongTextOf(Worksheet& data, uint32_t row, uint16_t column) {
  std::string text;
  bool present = false;
  ErrorCode error = err::kNone;
  EXPECT_TRUE(ReadLongTextValue(data, "", row, column, text, present, error));
  return present ? text : "(none)";
}

std::string ObjectsOf(Worksheet& data, uint32_t row, uint16_t column) {
  BinaryObjectList list;
  bool present = false;
  ErrorCode error = err::kNone;
  EXPECT_TRUE(ReadObjectsValue(data, "", row, column, list, present, error));
  std::string out;
  for (const BinaryObjectItem* item = list.first(); item != nullptr; item = item->next) {
    out += std::string(item->name) + "|" + item->type + "|" + std::string(item->Bytes()) + ";";
  }
  return out;
}

TEST(SqliteRoundTrip, EveryFieldTypeComesBackWithItsCatalogue) {
  TempDir dir;
  Workbook book;
  BuildEveryType(book);
  const std::string path = dir.Path("every.sqlite");
  SqliteProblem problem;
  ASSERT_TRUE(ExportSqlite(book, path, "", problem)) << problem.Text();
  Workbook back;
  ASSERT_TRUE(ImportSqlite(back, path, "", problem)) << problem.Text();

  ASSERT_EQ(back.TableCount(), 2u);
  for (uint32_t i = 0; i < 2; ++i) {
    Worksheet* a = book.TableByIndex(i);
    Worksheet* b = back.TableByIndex(i);
    ASSERT_EQ(a->Name(), b->Name());
    // The catalogue sheet cell for cell, and the data cells but for those that hold side file
    // offsets, which the pending values stand for here.
    EXPECT_EQ(testing::CellsOf(book.FindCatalogue(a->Name())->cells),
              testing::CellsOf(back.FindCatalogue(b->Name())->cells));
    if (i == 1) {
      EXPECT_EQ(testing::CellsOf(a->cells), testing::CellsOf(b->cells));
    }
    // Both sheets look as they did: the values under the same formats, the same widths, heights
    // and runs, with styles compared by what they hold since their ids may differ.
    const uint16_t shown = i == 0 ? 5 : 2;
    EXPECT_EQ(ShownCells(book, *a, shown), ShownCells(back, *b, shown));
    // Else the formats would show nothing that the comparison could miss.
    EXPECT_NE(ShownCells(book, *a, shown), ShownCells(book, *a, shown, false));
    ExpectSameLayout(book, *a, back, *b);
    ExpectSameLayout(book, *book.FindCatalogue(a->Name()), back, *back.FindCatalogue(b->Name()));
  }
  for (uint32_t slot = 0; slot < kDropDownListSlots; ++slot) {
    EXPECT_EQ(book.dropDownLists[slot].used, back.dropDownLists[slot].used) << slot;
    EXPECT_EQ(book.dropDownLists[slot].items, back.dropDownLists[slot].items) << slot;
  }
  EXPECT_EQ(back.currentSheet, back.TableByIndex(1));
  TableSpec people;
  ASSERT_TRUE(MakeTableSpec(back, "People", people));
  EXPECT_EQ(CurrentForm(people), 1);
  Worksheet& a = *book.TableByIndex(0);
  Worksheet& b = *people.data;
  for (uint16_t c = 0; c < 5; ++c) {
    for (uint32_t r = 0; r < 3; ++r) {
      const CellRecord* x = a.cells.GetCell(r, c);
      const CellRecord* y = b.cells.GetCell(r, c);
      ASSERT_EQ(x == nullptr, y == nullptr) << r << "," << c;
      if (x == nullptr) continue;
      EXPECT_EQ(std::string_view(reinterpret_cast<const char*>(cell::Bytes(x)), cell::Size(x)),
                std::string_view(reinterpret_cast<const char*>(cell::Bytes(y)), cell::Size(y)))
          << r << "," << c;
    }
  }
  for (uint32_t r = 0; r < 3; ++r) {
    for (uint16_t c : {5, 6}) EXPECT_EQ(LongTextOf(a, r, c), LongTextOf(b, r, c)) << r << "," << c;
    EXPECT_EQ(ObjectsOf(a, r, 7), ObjectsOf(b, r, 7)) << r;
  }
  EXPECT_EQ(b.UsedRows(), 3u);
}

TEST(SqliteLayout, StylesKeepTheirLookInAWorkbookThatNumbersThemOtherwise) {
  Workbook book;
  BuildEveryType(book);
  TableSpec people;
  ASSERT_TRUE(MakeTableSpec(book, "People", people));
  std::string styles;
  WriteBinaryStyles(book, styles);
  sqlite::TableCatalogue stored;
  stored.name = "People";
  for (int k = 0; k < 2; ++k) {
    stored.layouts[k].emplace();
    WriteBinarySheetLayout(k == 0 ? *people.data : *people.catalogue, *stored.layouts[k]);
  }
  // A workbook whose tables gave it a font and styles of its own first.
  Workbook other;
  ASSERT_TRUE(CreateTable(other, "People"));
  FontRecord mono{};
  std::snprintf(reinterpret_cast<char*>(mono.bytes), 128, "Mono");
  uint8_t fontId = 0;
  ErrorCode error = err::kNone;
  ASSERT_TRUE(other.styles.FindOrAddFont(mono, fontId, error));
  for (uint8_t fill = 2; fill < 6; ++fill) {
    StyleRecord own = other.styles.Style(0);
    own.bytes[style::kFillAt] = fill;
    own.bytes[style::kFontSetAt] = 1;
    own.bytes[style::kFontIndexAt] = fontId;
    uint16_t id = 0;
    ASSERT_TRUE(other.styles.FindOrAddStyle(own, id, error));
  }
  sqlite::LayoutReader reader;
  SqliteProblem problem;
  ASSERT_TRUE(reader.Begin(styles, other, problem)) << problem.Text();
  TableSpec target;
  ASSERT_TRUE(MakeTableSpec(other, "People", target));
  ASSERT_TRUE(reader.Apply(stored, target, problem)) << problem.Text();
  EXPECT_NE(target.data->formats.ColumnStyle(2), people.data->formats.ColumnStyle(2));
  ExpectSameLayout(book, *people.data, other, *target.data);
  ExpectSameLayout(book, *people.catalogue, other, *target.catalogue);
  EXPECT_EQ(other.dropDownLists[0].items, book.dropDownLists[0].items);
}

TEST(SqliteExport, ColumnsAreTypedForOtherReaders) {
  TempDir dir;
  Workbook book;
  BuildEveryType(book);
  const std::string path = dir.Path("typed.db");
  SqliteProblem problem;
  ASSERT_TRUE(ExportSqlite(book, path, "People", problem)) << problem.Text();
  // One table asked for: the other is not written.
  EXPECT_EQ(Query(path, "SELECT name FROM sqlite_schema WHERE type = 'table' ORDER BY name"),
            (std::vector<std::string>{"People", "People__files", "kelpdex_catalogue"}));
  EXPECT_EQ(Query(path, "SELECT type FROM pragma_table_info('People')"),
            (std::vector<std::string>{"TEXT", "TEXT", "INTEGER", "REAL", "REAL", "TEXT", "TEXT",
                                      "TEXT", "TEXT"}));
  // Only the field that held RTF got a column for it; the plain one did not.
  EXPECT_EQ(Query(path, "SELECT name FROM pragma_table_info('People') WHERE name LIKE '%rtf'"),
            std::vector<std::string>{"Notes_rtf"});
  EXPECT_EQ(Query(path, "SELECT Notes FROM People WHERE rowid = 1"),
            std::vector<std::string>{"Bold words\n"});
  EXPECT_EQ(Query(path, "SELECT typeof(Name) || ':' || Name FROM People"),
            (std::vector<std::string>{"text:Zoë", "NULL", "text:42.0"}));
  EXPECT_EQ(Query(path, "SELECT Total FROM People"),
            (std::vector<std::string>{"7.5", "NULL", "#DIV/0!"}));
  EXPECT_EQ(Query(path,
                  "SELECT record || ' ' || name || ' ' || size || ' ' || "
                  "ifnull(modified, '-') FROM People__files"),
            (std::vector<std::string>{"3 photo.png 10 2006-01-31T13:10:55", "3 empty.txt 0 -"}));
  EXPECT_EQ(Query(path, "SELECT Files FROM People WHERE rowid = 3"),
            std::vector<std::string>{"photo.png; empty.txt"});
}

// Edits a copy of a file our export wrote, as another program might damage it.
std::string EditedCopy(TempDir& dir, const std::string& from, const std::string& name,
                       const std::string& sql) {
  const std::string path = dir.Write(name, ReadFileBytes(from));
  Sql(path, sql);
  return path;
}

TEST(SqliteImport, ADamagedLayoutIsRefusedAndAMissingOneLeavesTheDefaults) {
  TempDir dir;
  Workbook book;
  BuildEveryType(book);
  const std::string path = dir.Path("styled.sqlite");
  SqliteProblem problem;
  ASSERT_TRUE(ExportSqlite(book, path, "", problem)) << problem.Text();
  const std::string where = " WHERE kind = 'layout' AND tbl = 'People'";
  struct Case {
    const char* name;
    std::string sql;
    const char* table;
  };
  const Case cases[] = {
      {"cut", "UPDATE kelpdex_catalogue SET value = substr(value, 1, 40)" + where + " AND row = 0",
       "People"},
      {"longer", "UPDATE kelpdex_catalogue SET value = value || x'00'" + where + " AND row = 1",
       "People"},
      {"empty", "UPDATE kelpdex_catalogue SET value = x''" + where + " AND row = 0", "People"},
      {"styles cut",
       "UPDATE kelpdex_catalogue SET value = substr(value, 1, 300) "
       "WHERE kind = 'styles'",
       ""},
      {"no styles", "DELETE FROM kelpdex_catalogue WHERE kind = 'styles'", "People"},
  };
  for (const Case& c : cases) {
    const std::string edited = EditedCopy(dir, path, std::string(c.name) + ".sqlite", c.sql);
    Workbook before;
    ASSERT_TRUE(CreateTable(before, "Before"));
    EXPECT_FALSE(ImportSqlite(before, edited, "", problem)) << c.name;
    EXPECT_EQ(problem.code, err::kInvalidBinaryFormat) << c.name << ": " << problem.Text();
    EXPECT_EQ(problem.table, c.table) << c.name;
    EXPECT_EQ(problem.column, kSqliteCatalogueTable) << c.name;
    ASSERT_EQ(before.TableCount(), 1u) << c.name;
    EXPECT_EQ(before.TableByIndex(0)->Name(), "Before");
  }
  // Without any formats, as a file from before they were carried: the values come, unformatted.
  const std::string bare = EditedCopy(
      dir, path, "bare.sqlite", "DELETE FROM kelpdex_catalogue WHERE kind IN ('styles', 'layout')");
  Workbook back;
  ASSERT_TRUE(ImportSqlite(back, bare, "", problem)) << problem.Text();
  Worksheet& people = *back.FindTable("People");
  EXPECT_EQ(ShownCells(back, people, 5), ShownCells(book, *book.FindTable("People"), 5, false));
  EXPECT_FALSE(people.formats.Column(0).FixedWidth());
}

// The library's own limit, which a build of SQLite may set otherwise than Debian's 2000.
int SqliteColumnLimit() {
  sqlite3* db = nullptr;
  sqlite3_open(":memory:", &db);
  const int limit = sqlite3_limit(db, SQLITE_LIMIT_COLUMN, -1);
  sqlite3_close(db);
  return limit;
}

// A table of `count` Text fields, the first of them Long Text holding `first`.
void BuildWide(Workbook& book, uint16_t count, const std::string& first) {
  ASSERT_TRUE(CreateTable(book, "Wide"));
  book.currentSheet = book.TableByIndex(0);
  ASSERT_TRUE(RefreshCurrentTable(book));
  std::vector<FieldSpec> fields;
  fields.push_back(Field("Memo", FieldType::kLongText));
  while (fields.size() < count) fields.push_back(Field("", FieldType::kText));
  for (size_t f = 1; f < fields.size(); ++f) fields[f].name = "f" + std::to_string(f);
  ASSERT_TRUE(InsertFields(book, 0, fields));
  SetLongTextValue(book, *book.currentSheet, 0, 0, first);
}

TEST(SqliteExport, ATableWiderThanSqliteAllowsIsRefusedByName) {
  const int limit = SqliteColumnLimit();
  if (limit + 1 > static_cast<int>(kColumnLimit)) GTEST_SKIP() << "SQLite allows " << limit;
  TempDir dir;
  const std::string path = dir.Path("wide.sqlite");
  const std::string says = std::to_string(limit + 1) + " columns";
  struct Case {
    int fields;
    const char* memo;
    bool fits;
  };
  // One field too many; as many as allowed, but an RTF value asks for one column more; as many
  // as allowed with plain text, which fits.
  const Case cases[] = {
      {limit + 1, "plain", false}, {limit, "{\\rtf1\\ansi rich}", false}, {limit, "plain", true}};
  for (const Case& c : cases) {
    Workbook book;
    BuildWide(book, static_cast<uint16_t>(c.fields), c.memo);
    SqliteProblem problem;
    EXPECT_EQ(ExportSqlite(book, path, "", problem), c.fits) << c.fields << " " << c.memo;
    if (c.fits) {
      EXPECT_EQ(Query(path, "SELECT count(*) FROM pragma_table_info('Wide')"),
                std::vector<std::string>{std::to_string(limit)});
      continue;
    }
    EXPECT_EQ(problem.table, "Wide");
    EXPECT_NE(problem.Text().find(says), std::string::npos) << problem.Text();
    EXPECT_FALSE(platform::FileExists(path));
    EXPECT_FALSE(platform::FileExists(dir.Path(".wide.sqlite.saving")));
  }
}

TEST(SqliteExport, AFailureLeavesThePreviousFile) {
  TempDir dir;
  Workbook book;
  ASSERT_TRUE(CreateTable(book, "sqlite_names_are_reserved"));
  book.currentSheet = book.TableByIndex(0);
  ASSERT_TRUE(InsertFields(book, 0, {Field("A", FieldType::kText)}));
  const std::string path = dir.Write("kept.sqlite", "what was there");
  SqliteProblem problem;
  EXPECT_FALSE(ExportSqlite(book, path, "", problem));
  EXPECT_EQ(problem.table, "sqlite_names_are_reserved");
  EXPECT_NE(problem.Text().find("reserved"), std::string::npos) << problem.Text();
  EXPECT_EQ(ReadFileBytes(path), "what was there");
  EXPECT_FALSE(platform::FileExists(dir.Path(".kept.sqlite.saving")));
  EXPECT_FALSE(ExportSqlite(book, path, "NoSuchTable", problem));
  EXPECT_EQ(problem.code, err::kInvalidNodePath);
}

TEST(SqliteImport, ForeignTablesTakeTheirFieldsFromTheValues) {
  TempDir dir;
  const std::string path = dir.Path("peer.db");
  Sql(path,
      "CREATE TABLE t(n INTEGER, mixed, txt TEXT, pic BLOB, empty_num REAL, \"Prénom\" TEXT);"
      "INSERT INTO t VALUES(1, 2.5, 'a', x'89504E470D0A1A0A00', NULL, 'Zoë');"
      "INSERT INTO t VALUES(NULL, NULL, NULL, NULL, NULL, NULL);"
      "INSERT INTO t VALUES(3, 'three', 'b', NULL, NULL, '日本');"
      "CREATE TABLE w(k TEXT PRIMARY KEY, v INTEGER) WITHOUT ROWID;"
      "INSERT INTO w VALUES('b', 2), ('a', 1);"
      "CREATE VIEW big_n AS SELECT n FROM t WHERE n > 1;"
      "CREATE VIRTUAL TABLE notes USING fts5(body);"
      "INSERT INTO notes VALUES('full text');");
  Workbook book;
  SqliteProblem problem;
  ASSERT_TRUE(ImportSqlite(book, path, "", problem)) << problem.Text();
  // The view is left out; the virtual table comes, the tables behind it do not.
  ASSERT_EQ(book.TableCount(), 3u);
  EXPECT_EQ(book.TableByIndex(1)->Name(), "w");
  EXPECT_EQ(book.TableByIndex(2)->Name(), "notes");
  book.currentSheet = book.TableByIndex(0);
  ASSERT_TRUE(RefreshCurrentTable(book));
  using testing::CellAt;
  using testing::FieldAt;
  const FieldType want[] = {FieldType::kNumber, FieldType::kText,   FieldType::kText,
                            FieldType::kFiles,  FieldType::kNumber, FieldType::kText};
  for (uint16_t f = 0; f < 6; ++f) EXPECT_EQ(FieldAt(book, f).type, want[f]) << f;
  EXPECT_EQ(FieldAt(book, 5).name, "Pr\xE9nom");
  EXPECT_EQ(CellAt(book, 0, 1), "#2.5");  // a number stays a number in a Text field
  EXPECT_EQ(CellAt(book, 2, 1), "three");
  EXPECT_EQ(CellAt(book, 0, 5), "Zo\xEB");
  EXPECT_EQ(CellAt(book, 2, 5), "??");
  EXPECT_EQ(CellAt(book, 1, 0), "");
  EXPECT_EQ(ObjectsOf(*book.currentSheet, 0, 3),
            std::string("pic_1.png|BLOB|\x89PNG\r\n\x1a\n\0;", 25));
  EXPECT_EQ(book.currentSheet->UsedRows(), 3u);
  // A WITHOUT ROWID table comes in the order of its key.
  book.currentSheet = book.TableByIndex(1);
  ASSERT_TRUE(RefreshCurrentTable(book));
  EXPECT_EQ(CellAt(book, 0, 0), "a");
  EXPECT_EQ(CellAt(book, 1, 1), "#2");

  // A view named is read as a table.
  Workbook view;
  ASSERT_TRUE(ImportSqlite(view, path, "BIG_N", problem)) << problem.Text();
  ASSERT_EQ(view.TableCount(), 1u);
  EXPECT_EQ(CellAt(view, 0, 0), "#3");
}

TEST(SqliteImport, WhatKelpdexCannotHoldIsRefusedWithNothingMade) {
  TempDir dir;
  struct Case {
    const char* sql;
    const char* table;
    const char* column;
    const char* says;
  };
  const Case cases[] = {
      {"CREATE TABLE ok(a); CREATE TABLE t(a, \"2nd\");", "t", "2nd", "starting with a letter"},
      // SQLite folds ASCII letters alone; the code page folds the accented ones too.
      {"CREATE TABLE t(\"\xC3\xA4rger\", \"\xC3\x84rger\");", "t", "\xC4rger", "unique field name"},
      {"CREATE TABLE \"System\"(a);", "System", "", "system"},
      {"CREATE TABLE \"a\\b\"(a);", "a\\b", "", "backslash"},
      {"CREATE TABLE big(a); WITH RECURSIVE c(x) AS (SELECT 1 UNION ALL SELECT x + 1 FROM c "
       "WHERE x < 2097153) INSERT INTO big SELECT NULL FROM c;",
       "big", "", "Too many records."},
      {"CREATE VIEW broken AS SELECT a FROM gone_table; CREATE TABLE gone_table(a); "
       "DROP TABLE gone_table;",
       "", "", "one table"},
  };
  int n = 0;
  for (const Case& c : cases) {
    const std::string path = dir.Path("refused" + std::to_string(n++) + ".db");
    Sql(path, c.sql);
    Workbook book;
    ASSERT_TRUE(CreateTable(book, "Before"));
    SqliteProblem problem;
    EXPECT_FALSE(ImportSqlite(book, path, "", problem)) << c.sql;
    EXPECT_EQ(problem.table, c.table) << c.sql;
    EXPECT_EQ(problem.column, c.column) << c.sql;
    EXPECT_NE(problem.Text().find(c.says), std::string::npos) << problem.Text();
    // The document that was open stays as it was.
    ASSERT_EQ(book.TableCount(), 1u);
    EXPECT_EQ(book.TableByIndex(0)->Name(), "Before");
  }
  // A view that names a table no longer there fails with SQLite's words when it is asked for.
  Workbook book;
  SqliteProblem problem;
  EXPECT_FALSE(ImportSqlite(book, dir.Path("refused5.db"), "broken", problem));
  EXPECT_EQ(problem.table, "broken");
  EXPECT_NE(problem.detail.find("gone_table"), std::string::npos) << problem.detail;
}

TEST(SqliteImport, DamagedLockedAndForeignFilesGiveAMessage) {
  TempDir dir;
  const std::string good = dir.Path("good.db");
  Sql(good, "CREATE TABLE t(a TEXT); INSERT INTO t VALUES('" + std::string(5000, 'x') +
                "'); INSERT INTO t SELECT a FROM t; INSERT INTO t SELECT a FROM t;");
  const std::string bytes = ReadFileBytes(good);
  ASSERT_GT(bytes.size(), 8192u);
  std::string scrambled = bytes;
  for (size_t i = 100; i < scrambled.size(); i += 7) scrambled[i] = static_cast<char>(i * 31);
  std::string noise;
  for (uint32_t x = 7; noise.size() < 8192;) {
    x = x * 1103515245u + 12345u;
    noise += static_cast<char>(x >> 16);
  }
  struct Case {
    std::string name, bytes;
  };
  const Case cases[] = {
      {"cut.db", bytes.substr(0, 4096 + 100)},
      {"scrambled.db", scrambled},
      {"encrypted.db", std::string(4096, '\x5A')},
      // Enciphered pages behind a header that looks right.
      {"enciphered.db", std::string("SQLite format 3\0", 16) + noise},
      {"header_only.db", std::string("SQLite format 3\0", 16)},
  };
  for (const Case& c : cases) {
    const std::string path = dir.Write(c.name, c.bytes);
    Workbook book;
    SqliteProblem problem;
    EXPECT_FALSE(ImportSqlite(book, path, "", problem)) << c.name;
    EXPECT_TRUE(problem.code == err::kInvalidBinaryFormat || problem.code == err::kNeedsOneTable)
        << c.name << ": " << problem.Text();
    EXPECT_EQ(book.TableCount(), 0u);
  }
  EXPECT_TRUE(IsSqliteFile(good));
  EXPECT_FALSE(IsSqliteFile(dir.Path("encrypted.db")));

  // Another program holds the file while it writes: the read waits, then says the file is in use.
  sqlite3* holder = nullptr;
  ASSERT_EQ(sqlite3_open(good.c_str(), &holder), SQLITE_OK);
  ASSERT_EQ(sqlite3_exec(holder, "BEGIN EXCLUSIVE; INSERT INTO t VALUES('y');", nullptr, nullptr,
                         nullptr),
            SQLITE_OK);
  Workbook book;
  SqliteProblem problem;
  EXPECT_FALSE(ImportSqlite(book, good, "", problem));
  EXPECT_EQ(problem.code, err::kFileInUse) << problem.Text();
  sqlite3_exec(holder, "ROLLBACK", nullptr, nullptr, nullptr);
  sqlite3_close(holder);
  EXPECT_TRUE(ImportSqlite(book, good, "", problem)) << problem.Text();
}

}  // namespace
}  // namespace kelpdex
