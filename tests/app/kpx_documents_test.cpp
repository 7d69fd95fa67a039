#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

#include "kpx/terminal_progress.h"
#include "platform/os.h"
#include "run_kpx.h"
#include "support/file_bytes.h"
#include "support/temp_dir.h"

namespace kelpdex::kpx {
namespace {

class KpxDocuments : public ::testing::Test {
 protected:
  Result Kpx(const std::vector<std::string>& words) { return RunKpxStrings(words); }
  // A small database with a default value, a calculated field and two typed records.
  std::string People() {
    std::string path = dir.Path("people.kpx");
    EXPECT_EQ(Kpx({"new", path, "--table", "People", "--field", "Name:Text", "--field",
                   "Qty:Number=1", "--field", "Double:Number==Qty*2", "--field", "Site:Link"})
                  .status,
              0);
    EXPECT_EQ(Kpx({"set", path, "--table", "People", "--record", "1", "--field", "Name",
                   "Zo\xC3\xAB\ttab"})
                  .status,
              0);
    EXPECT_EQ(
        Kpx({"set", path, "--table", "people", "--record", "1", "--field", "QTY", "2.5"}).status,
        0);
    EXPECT_EQ(
        Kpx({"set", path, "--table", "People", "--record", "2", "--field", "Qty", "-4"}).status, 0);
    return path;
  }
  testing::TempDir dir;
};

TEST_F(KpxDocuments, ADatabaseDumpsTheSameThroughEveryForm) {
  std::string path = People();
  Result first = Kpx({"dump", path});
  ASSERT_EQ(first.status, 0) << first.err;
  // Typed text keeps its letters and its tab, escaped to stay on one line.
  EXPECT_EQ(first.out, "Zo\xC3\xAB\\ttab\t2.5\t5\t\n\t-4\t-8\t\n");
  std::string from = path;
  for (const char* format : {"binary", "binary.gz", "xml.gz", "xml"}) {
    std::string to = dir.Path(std::string("copy-") + format + ".kpx");
    Result converted = Kpx({"convert", from, to, "--format", format});
    ASSERT_EQ(converted.status, 0) << format << converted.err;
    EXPECT_EQ(Kpx({"dump", to}).out, first.out) << format;
    Result info = Kpx({"info", to, "--json"});
    EXPECT_NE(info.out.find(std::string("\"format\": \"") + format + "\""), std::string::npos)
        << info.out;
    from = to;
  }
  // Without --format a copy keeps the form it came in.
  std::string again = dir.Path("again.kpx");
  ASSERT_EQ(Kpx({"convert", dir.Path("copy-binary.gz.kpx"), again}).status, 0);
  EXPECT_EQ(testing::ReadFileBytes(again).substr(0, 2), "\x1f\x8b");
}

TEST_F(KpxDocuments, InfoAndDumpShowTheSchemaAndRecords) {
  std::string path = People();
  Result info = Kpx({"info", path});
  ASSERT_EQ(info.status, 0);
  EXPECT_NE(info.out.find("table People: 2 records, 2 found, 4 fields\n"), std::string::npos) << info.out;
  EXPECT_NE(info.out.find("  Double\tNumber\tF:=Qty*2\n"), std::string::npos);
  EXPECT_NE(info.out.find("  Site\tText / Link\n"), std::string::npos);
  EXPECT_NE(info.out.find("last saved: "), std::string::npos);

  Result json = Kpx({"dump", path, "--json", "--limit", "1"});
  EXPECT_EQ(json.out,
            "[\n{\"Name\": \"Zo\xC3\xAB\\ttab\", \"Qty\": \"2.5\", \"Double\": \"5\", "
            "\"Site\": \"\"}\n]\n");
  Result header = Kpx({"dump", path, "--header", "--limit", "0"});
  EXPECT_EQ(header.out, "Name\tQty\tDouble\tSite\n");
  // A tab in a name is escaped as dump escapes it, so each field stays on its line.
  ASSERT_EQ(Kpx({"add-field", path, "--table", "People", "--field", "Tab\there:Text"}).status, 0);
  EXPECT_NE(Kpx({"info", path}).out.find("\n  Tab\\there\tText\n"), std::string::npos);
}

TEST_F(KpxDocuments, SchemaCommandsCheckAsTheDialogsDo) {
  std::string path = People();
  EXPECT_EQ(
      Kpx({"add-field", path, "--table", "People", "--field", "Note:Text=none", "--position", "1"})
          .status,
      0);
  EXPECT_EQ(Kpx({"dump", path, "--header", "--limit", "0"}).out, "Note\tName\tQty\tDouble\tSite\n");
  Result duplicate = Kpx({"add-field", path, "--table", "People", "--field", "name:Number"});
  EXPECT_EQ(duplicate.status, 1);
  EXPECT_EQ(duplicate.err,
            "kpx: A field with that name already exists. Please enter a unique field name.\n");
  EXPECT_EQ(Kpx({"delete-field", path, "--table", "People", "--field", "note"}).status, 0);
  EXPECT_EQ(Kpx({"add-table", path, "Orders", "--field", "Item:Text"}).status, 0);
  Result taken = Kpx({"rename-table", path, "--table", "Orders", "PEOPLE"});
  EXPECT_EQ(taken.status, 1);
  EXPECT_EQ(taken.err, "kpx: A table with that name already exists. Please enter a unique name.\n");
  EXPECT_EQ(Kpx({"rename-table", path, "--table", "Orders", "Sales"}).status, 0);
  Result info = Kpx({"info", path});
  EXPECT_NE(info.out.find("table Sales: 0 records, 0 found, 1 fields\n"), std::string::npos) << info.out;
  EXPECT_EQ(Kpx({"dump", path, "--header"}).out,
            "Name\tQty\tDouble\tSite\nZo\xC3\xAB\\ttab\t2.5\t5\t\n\t-4\t-8\t\n");
}

TEST_F(KpxDocuments, RecalcComputesFormulasStoredBeforeTheirField) {
  std::string path = People();
  // A field added afterwards has no values until the table is recalculated.
  ASSERT_EQ(Kpx({"add-field", path, "--table", "People", "--field", "Triple:Number==Qty*3"}).status,
            0);
  EXPECT_EQ(Kpx({"dump", path}).out, "Zo\xC3\xAB\\ttab\t2.5\t5\t\t\n\t-4\t-8\t\t\n");
  ASSERT_EQ(Kpx({"recalc", path}).status, 0);
  EXPECT_EQ(Kpx({"dump", path}).out, "Zo\xC3\xAB\\ttab\t2.5\t5\t\t7.5\n\t-4\t-8\t\t-12\n");
}

TEST_F(KpxDocuments, EvalPrintsScalarsArraysAndErrors) {
  EXPECT_EQ(Kpx({"eval", "=1+2"}).out, "3\n");
  EXPECT_EQ(Kpx({"eval", "2^0.5"}).out, "1.4142135623731\n");
  EXPECT_EQ(Kpx({"eval", "={1,2;3,4}*2"}).out, "2\t4\n6\t8\n");
  EXPECT_EQ(Kpx({"eval", "=1/0"}).out, "#DIV/0!\n");
  EXPECT_EQ(Kpx({"eval", "=\"a\"&\"b\""}).out, "ab\n");
  EXPECT_EQ(Kpx({"eval", "=1+"}).out, "#SYNTAX!\n");
  std::string path = People();
  Result record = Kpx({"eval", "--doc", path, "--record", "2", "=Double*Qty"});
  EXPECT_EQ(record.status, 0) << record.err;
  EXPECT_EQ(record.out, "32\n");
  Result outside = Kpx({"eval", "--doc", path, "--record", "3", "=Qty"});
  EXPECT_EQ(outside.status, 1);
  EXPECT_EQ(outside.err, "kpx: record 3 is out of range (1 to 2)\n");
}

TEST_F(KpxDocuments, BadInputEndsWithOneLineAndNeverACrash) {
  std::string path = People();
  std::string missing = dir.Path("missing.kpx");
  std::string junk = dir.Write("junk.kpx", std::string(64, 'j'));
  std::string full = testing::ReadFileBytes(path);
  std::string truncated = dir.Write("truncated.kpx", full.substr(0, full.size() / 2));
  ASSERT_EQ(Kpx({"convert", path, dir.Path("bin.kpx"), "--format", "binary"}).status, 0);
  std::string bin = testing::ReadFileBytes(dir.Path("bin.kpx"));
  std::string cut = dir.Write("cut.kpx", bin.substr(0, bin.size() - 40));
  struct Case {
    std::vector<std::string> words;
    int status;
  };
  const std::vector<Case> cases = {
      {{"info", missing}, 1},
      {{"dump", junk}, 1},
      {{"dump", truncated}, 1},
      {{"dump", cut}, 1},
      {{"info", cut, "--json"}, 1},
      {{"dump", path, "--table", "Nope"}, 1},
      {{"dump", path, "--limit", "-1"}, 2},
      {{"dump", path, "--tsv", "--json"}, 2},
      {{"set", path, "--table", "People", "--record", "4", "--field", "Name", "x"}, 1},
      {{"set", path, "--table", "People", "--record", "0", "--field", "Name", "x"}, 2},
      {{"set", path, "--table", "People", "--record", "1", "--field", "Nope", "x"}, 1},
      {{"set", path, "--table", "People", "--record", "1", "--field", "Double", "x"}, 1},
      {{"set", missing, "--table", "People", "--record", "1", "--field", "Name", "x"}, 1},
      {{"set", path, "--record", "1", "--field", "Name", "x"}, 2},
      {{"new", path, "--table", "T"}, 1},
      {{"new", dir.Path("n.kpx"), "--table", "T", "--field", "1st:Text"}, 1},
      {{"new", dir.Path("n.kpx"), "--table", "T", "--field", "a:Date"}, 2},
      {{"new", dir.Path("n.kpx"), "--table", "T", "--format", "zip"}, 2},
      {{"new", dir.Path("n.kpx")}, 2},
      {{"add-field", path, "--table", "People", "--field", "X:Text", "--position", "9"}, 1},
      {{"delete-field", path, "--table", "People", "--field", "Nope"}, 1},
      {{"rename-table", path, "--table", "People", ""}, 1},
      {{"add-table", junk, "T"}, 1},
      {{"recalc", truncated}, 1},
      {{"convert", missing, dir.Path("out.kpx")}, 1},
      {{"convert", path, dir.Path("no/such/folder/out.kpx")}, 1},
      {{"eval", "--record", "1", "=1"}, 2},
      {{"eval", "--locale", "klingon", "=1"}, 2},
      {{"eval", "--doc", junk, "=1"}, 1},
      {{"eval", ""}, 2},
      {{"dump", path, "--json", "--header"}, 2},
  };
  for (const Case& c : cases) {
    Result r = Kpx(c.words);
    std::string shown;
    for (const std::string& w : c.words) shown += w + " ";
    EXPECT_EQ(r.status, c.status) << shown << r.err;
    EXPECT_EQ(r.err.rfind("kpx: ", 0), 0u) << shown << r.err;
    // One line of reason; a usage error adds the command's synopsis.
    size_t lines = static_cast<size_t>(std::count(r.err.begin(), r.err.end(), '\n'));
    EXPECT_EQ(lines, c.status == 2 ? 2u : 1u) << shown << r.err;
    EXPECT_TRUE(r.out.empty()) << shown << r.out;
  }
  // None of it changed the database or left a new file behind.
  EXPECT_EQ(testing::ReadFileBytes(path), full);
  EXPECT_FALSE(platform::FileExists(dir.Path("n.kpx")));
}

TEST_F(KpxDocuments, SetWarnsOfWhatItStoresAndStrictRefusesIt) {
  std::string path = People();
  Result zero = Kpx({"set", path, "--table", "People", "--record", "2", "--field", "Qty", "lots"});
  EXPECT_EQ(zero.status, 0);
  EXPECT_EQ(zero.err, "kpx: warning: record 2, field 'Qty': stored 0, since 'lots' is no number\n");
  // Two conversions of one value: a line each.
  std::string longText = "\xE2\x9C\x93" + std::string(1100, 'a');
  Result both =
      Kpx({"set", path, "--table", "People", "--record", "2", "--field", "Name", longText});
  EXPECT_EQ(both.status, 0);
  EXPECT_EQ(both.err,
            "kpx: warning: record 2, field 'Name': stored '?' for 1 character outside the "
            "document's code page\n"
            "kpx: warning: record 2, field 'Name': stored the first 1024 of 1101 characters\n");
  EXPECT_EQ(Kpx({"dump", path}).out,
            "Zo\xC3\xAB\\ttab\t2.5\t5\t\n?" + std::string(1023, 'a') + "\t0\t0\t\n");
  // Under --strict each is a failure and the file stays as it was.
  std::string before = testing::ReadFileBytes(path);
  for (const char* value : {"12 apples", "caf\xC3\xA9 \xE2\x98\x95"}) {
    const char* field = value[0] == '1' ? "Qty" : "Name";
    Result strict = Kpx(
        {"set", path, "--strict", "--table", "People", "--record", "1", "--field", field, value});
    EXPECT_EQ(strict.status, 1) << value;
    EXPECT_EQ(strict.err.rfind(std::string("kpx: record 1, field '") + field + "': ", 0), 0u)
        << strict.err;
    EXPECT_NE(strict.err.find("would be stored"), std::string::npos) << strict.err;
  }
  EXPECT_EQ(testing::ReadFileBytes(path), before);
  // A value stored as typed passes --strict.
  EXPECT_EQ(Kpx({"set", path, "--strict", "--table", "People", "--record", "1", "--field", "Name",
                 "caf\xC3\xA9"})
                .err,
            "");
}

TEST_F(KpxDocuments, NamesOutsideTheCodePageAreRefusedNotRenamed) {
  std::string path = People();
  std::string before = testing::ReadFileBytes(path);
  const std::vector<std::vector<std::string>> refused = {
      {"add-field", path, "--table", "People", "--field", "Gr\xC3\xB6\xC3\x9F\xE2\x86\x92:Text"},
      {"add-table", path, "\xE2\x9C\x93"},
      {"rename-table", path, "--table", "People", "\xE4\xBA\xBA"},
      {"new", dir.Path("n.kpx"), "--table", "T\xE2\x82\xAC\xE2\x84\x96"},
  };
  for (const std::vector<std::string>& words : refused) {
    Result r = Kpx(words);
    EXPECT_EQ(r.status, 1) << words[0];
    EXPECT_NE(r.err.find("outside the document's code page"), std::string::npos) << r.err;
  }
  EXPECT_EQ(testing::ReadFileBytes(path), before);
  EXPECT_FALSE(platform::FileExists(dir.Path("n.kpx")));
  // Letters the code page holds are welcome, and a name with '?' in place of one finds nothing.
  EXPECT_EQ(Kpx({"add-field", path, "--table", "People", "--field",
                 "Gr\xC3\xB6\xC3\x9F"
                 "e:Text"})
                .status,
            0);
  EXPECT_EQ(Kpx({"add-table", path, "T?"}).status, 0);
  EXPECT_EQ(Kpx({"dump", path, "--table", "T\xE2\x9C\x93"}).status, 1);
}

TEST_F(KpxDocuments, NewRecordsTakeDefaultsAndACalculatedFieldWaitsForRecalc) {
  std::string path = People();
  ASSERT_EQ(
      Kpx({"set", path, "--table", "People", "--record", "3", "--field", "Name", "new"}).status, 0);
  // Qty's default, and Double computed from it.
  EXPECT_EQ(Kpx({"dump", path, "--limit", "3"}).out,
            "Zo\xC3\xAB\\ttab\t2.5\t5\t\n\t-4\t-8\t\nnew\t1\t2\t\n");
  Result added = Kpx({"add-field", path, "--table", "People", "--field", "Half:Number==Qty/2"});
  EXPECT_EQ(added.status, 0);
  EXPECT_EQ(added.err,
            "kpx: the calculated field 'Half' is empty in the 3 records already there; "
            "'kpx recalc " +
                path + "' fills it\n");
  // A default value, or a table without records, needs no word.
  EXPECT_EQ(Kpx({"add-field", path, "--table", "People", "--field", "Unit:Text=kg"}).err, "");
  EXPECT_EQ(Kpx({"add-table", path, "Empty", "--field", "A:Number"}).status, 0);
  EXPECT_EQ(Kpx({"add-field", path, "--table", "Empty", "--field", "B:Number==A"}).err, "");
}

TEST_F(KpxDocuments, AFileThatHeldNoDocumentIsNeverSavedOver) {
  std::string stub = dir.Write("stub.kpx", "30000");
  Result info = Kpx({"info", stub});
  EXPECT_EQ(info.status, 0);
  EXPECT_NE(info.out.find("format: none\ntable stub: 0 records, 0 found, 0 fields\n"), std::string::npos)
      << info.out;
  const std::vector<std::vector<std::string>> changes = {
      {"add-field", stub, "--table", "stub", "--field", "A:Text"},
      {"add-table", stub, "More"},
      {"recalc", stub},
      {"rename-table", stub, "--table", "stub", "Renamed"},
  };
  for (const std::vector<std::string>& words : changes) {
    Result r = Kpx(words);
    EXPECT_EQ(r.status, 1) << words[0];
    EXPECT_EQ(r.err, "kpx: " + stub +
                         ": the file is not empty but holds no database; it is not "
                         "saved over\n");
  }
  EXPECT_EQ(testing::ReadFileBytes(stub), "30000");
  // An empty file has nothing to lose: it takes the new database.
  std::string empty = dir.Write("empty.kpx", "");
  EXPECT_NE(Kpx({"info", empty, "--json"}).out.find("\"format\": \"none\""), std::string::npos);
  EXPECT_EQ(Kpx({"add-field", empty, "--table", "empty", "--field", "A:Text"}).status, 0);
  EXPECT_NE(Kpx({"info", empty}).out.find("format: xml\n"), std::string::npos);
  // A folder is no file, to read or to write.
  std::string folder = dir.Path("folder.kpx");
  ASSERT_TRUE(platform::CreateFolder(folder));
  for (const std::vector<std::string>& words :
       {std::vector<std::string>{"info", folder},
        {"set", folder, "--table", "T", "--record", "1", "--field", "A", "x"},
        {"convert", empty, folder},
        {"new", folder, "--table", "T"}}) {
    Result r = Kpx(words);
    EXPECT_EQ(r.status, 1) << words[0];
    EXPECT_EQ(r.err, "kpx: Can't use a folder path. A file path is required.\n") << words[0];
  }
}

TEST(TerminalProgress, TellsAPercentageOrTheAmountDone) {
  EXPECT_EQ(TerminalProgress::Line("recalc", 50, 200), "kpx: recalc  25%");
  EXPECT_EQ(TerminalProgress::Line("dump", 300, 200), "kpx: dump 100%");
  EXPECT_EQ(TerminalProgress::Line("convert", 3 * 1024 * 1024 / 2, 0), "kpx: convert 1.5 MB");
}

}  // namespace
}  // namespace kelpdex::kpx
