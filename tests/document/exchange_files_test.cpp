#include "document/exchange_files.h"

#include <gtest/gtest.h>
#include <sqlite3.h>

#include <string>

#include "document/document_session.h"
#include "exchange/sqlite.h"
#include "store/catalogue.h"
#include "store/field_row.h"
#include "support/file_bytes.h"
#include "support/recording_prompter.h"
#include "support/temp_dir.h"
#include "table/table_state.h"

namespace kelpdex {
namespace {

// One record of one text field "NAME", under the given version byte.
std::string OneRecordDbf(uint8_t version) {
  std::string bytes(32, '\0');
  bytes[0] = static_cast<char>(version);
  bytes[1] = 126;
  bytes[2] = 11;
  bytes[3] = 24;
  bytes[4] = 1;       // one record
  bytes[8] = 65;      // header: 32 + one descriptor + its end mark
  bytes[10] = 1 + 5;  // delete flag and the field
  std::string field(32, '\0');
  field.replace(0, 4, "NAME");
  field[11] = 'C';
  field[16] = 5;
  return bytes + field + "\r" + " Ann  " + "\x1a";
}

class ExchangeFilesTest : public ::testing::Test {
 protected:
  ExchangeFilesTest() : scope(prompter), session(book, settings) {}

  testing::TempDir dir;
  testing::RecordingPrompter prompter;
  testing::ScopedPrompter scope;
  Workbook book;
  SessionSettings settings;
  DocumentSession session;
};

// The file's own header decides the dialect a later save writes, whatever filter opened it.
TEST_F(ExchangeFilesTest, AnXbaseFileKeepsTheDialectItsHeaderNames) {
  std::string dbase4 = dir.Write("four.dbf", OneRecordDbf(0x8B));
  ASSERT_TRUE(session.OpenDocument(dbase4, DocumentKind::kDbase3));
  EXPECT_EQ(book.openKind, DocumentKind::kDbase4);
  // A version byte several dialects share leaves the choice the user made.
  std::string plain = dir.Write("plain.dbf", OneRecordDbf(0x03));
  ASSERT_TRUE(session.OpenDocument(plain, DocumentKind::kFoxPro));
  EXPECT_EQ(book.openKind, DocumentKind::kFoxPro);
}

// The import dialog's choice stays with the document: a Reload reads with it without asking, and
// a save writes the file back the same way.
TEST_F(ExchangeFilesTest, ATextFileKeepsItsOptionsForReloadAndSave) {
  struct SemicolonDialogs : ExchangeDialogs {
    bool TextImport(const std::string&, TextFileOptions& options) override {
      ++asked;
      options.separator = ';';
      return true;
    }
    int asked = 0;
  } dialogs;
  session.exchangeFiles().SetDialogs(&dialogs);
  std::string path = dir.Write("data.csv", "a;b;c,d\r\n");
  ASSERT_TRUE(session.OpenDocument(path, DocumentKind::kText));
  TableSpec table;
  ASSERT_TRUE(CurrentTable(book, table));
  EXPECT_EQ(FieldCount(table), 3);
  ASSERT_TRUE(session.ReloadDocument());
  EXPECT_EQ(dialogs.asked, 1);
  ASSERT_TRUE(CurrentTable(book, table));
  EXPECT_EQ(FieldCount(table), 3);
  EXPECT_EQ(book.textOptions.separator, ';');
  // The save writes the file anew with the semicolon; with a comma "c,d" would be quoted. (On
  // Windows the open document keeps other writers out, so it cannot be emptied first.)
#ifndef _WIN32
  dir.Write("data.csv", "");
#endif
  ASSERT_TRUE(session.SaveDocument());
  EXPECT_EQ(testing::ReadFileBytes(path), "a;b;c,d\r\n");
  // Another document starts from the defaults; the dialog from the last choice.
  ASSERT_TRUE(session.CloseDocument());
  EXPECT_EQ(book.textOptions.separator, ',');
  EXPECT_EQ(session.exchangeFiles().importTextOptions.separator, ';');
}

// A spreadsheet's own file has no catalogues: the question turns it into tables, a Reload reads it
// so again without asking, and a No keeps the documented failure.
TEST_F(ExchangeFilesTest, ASpreadsheetWithoutCataloguesOpensAsTablesWhenTheUserAgrees) {
  struct AskingDialogs : ExchangeDialogs {
    bool ExcelXmlAsTables(const std::string&) override {
      ++asked;
      return agree;
    }
    int asked = 0;
    bool agree = false;
  } dialogs;
  session.exchangeFiles().SetDialogs(&dialogs);
  std::string path = dir.Write(
      "sheet.xml",
      "<?xml version=\"1.0\"?>\n<Workbook xmlns=\"urn:schemas-microsoft-com:office:spreadsheet\" "
      "xmlns:ss=\"urn:schemas-microsoft-com:office:spreadsheet\">\n<Worksheet ss:Name=\"Crew\">"
      "<Table><Row><Cell><Data ss:Type=\"String\">Name</Data></Cell></Row><Row><Cell><Data "
      "ss:Type=\"String\">Ann</Data></Cell></Row></Table></Worksheet>\n</Workbook>\n");
  EXPECT_FALSE(session.OpenDocument(path, DocumentKind::kExcelXml));
  EXPECT_EQ(dialogs.asked, 1);
  EXPECT_FALSE(session.HasDocument());
  ASSERT_FALSE(prompter.boxes.empty());
  EXPECT_NE(prompter.boxes.back().text.find(ErrorText(err::kInvalidExcelDatabase)),
            std::string::npos);

  dialogs.agree = true;
  ASSERT_TRUE(session.OpenDocument(path, DocumentKind::kExcelXml));
  EXPECT_EQ(dialogs.asked, 2);
  ASSERT_NE(book.FindTable("Crew"), nullptr);
  TableSpec table;
  ASSERT_TRUE(CurrentTable(book, table));
  EXPECT_EQ(FieldCount(table), 1);
  ASSERT_TRUE(session.ReloadDocument());
  EXPECT_EQ(dialogs.asked, 2);
  EXPECT_NE(book.FindTable("Crew"), nullptr);
}

// An SQLite file opens by its header whatever its name, saves back as SQLite, and a read that
// fails shows one message that names the table and column and leaves no document.
TEST_F(ExchangeFilesTest, AnSqliteFileIsToldByItsHeaderAndSavedAsSqlite) {
  Workbook source;
  ASSERT_TRUE(CreateTable(source, "Stock"));
  std::string first = dir.Path("first.sqlite");
  SqliteProblem problem;
  ASSERT_TRUE(ExportSqlite(source, first, "", problem)) << problem.Text();
  std::string renamed = dir.Path("stock.kpx");
  testing::WriteFileBytes(renamed, testing::ReadFileBytes(first));
  ASSERT_TRUE(session.OpenDocument(renamed, DocumentKind::kNative));
  EXPECT_EQ(book.openKind, DocumentKind::kSqlite);
  ASSERT_TRUE(book.FindTable("Stock") != nullptr);
  ASSERT_TRUE(session.SaveDocument());
  EXPECT_TRUE(IsSqliteFile(renamed));
  ASSERT_TRUE(session.CloseDocument());

  std::string bad = dir.Path("bad.db");
  Workbook refused;
  ASSERT_TRUE(CreateTable(refused, "T"));
  TableSpec table;
  ASSERT_TRUE(MakeTableSpec(refused, "T", table));
  FieldSpec field;
  field.name = "9 lives";  // a loaded name the field rules refuse on the way in
  ASSERT_TRUE(WriteField(table, 0, field));
  ASSERT_TRUE(ExportSqlite(refused, bad, "", problem)) << problem.Text();
  // Without its catalogue the table comes as any other program's would.
  sqlite3* db = nullptr;
  ASSERT_EQ(sqlite3_open(bad.c_str(), &db), SQLITE_OK);
  ASSERT_EQ(sqlite3_exec(db, "DROP TABLE kelpdex_catalogue", nullptr, nullptr, nullptr), SQLITE_OK);
  sqlite3_close(db);
  prompter.boxes.clear();
  EXPECT_FALSE(session.OpenDocument(bad, GuessFormat(bad)));
  ASSERT_EQ(prompter.boxes.size(), 1u);
  EXPECT_NE(prompter.boxes[0].text.find("Table \"T\", column \"9 lives\""), std::string::npos)
      << prompter.boxes[0].text;
  EXPECT_FALSE(session.HasDocument());
}

}  // namespace
}  // namespace kelpdex
