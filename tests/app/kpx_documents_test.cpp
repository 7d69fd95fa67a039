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
  Result Kpx(const std::vector<std::string>& words) {
    std::vector<const char*> raw;
    for (const std::string& w : words) raw.push_back(w.c_str());
    return RunKpx(raw);
  }
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
  EXPECT_NE(info.out.find("table People: 2 records, 4 fields\n"), std::string::npos) << info.out;
  EXPECT_NE(info.out.find("  Double\tNumber\tF:=Qty*2\n"), std::string::npos);
  EXPECT_NE(info.out.find("  Site\tText / Link\n"), std::string::npos);
  EXPECT_NE(info.out.find("last saved: "), std::string::npos);

  Result json = Kpx({"dump", path, "--json", "--limit", "1"});
  EXPECT_EQ(json.out,
            "[\n{\"Name\": \"Zo\xC3\xAB\\ttab\", \"Qty\": \"2.5\", \"Double\": \"5\", "
            "\"Site\": \"\"}\n]\n");
  Result header = Kpx({"dump", path, "--header", "--limit", "0"});
  EXPECT_EQ(header.out, "Name\tQty\tDouble\tSite\n");
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
  EXPECT_NE(info.out.find("table Sales: 0 records, 1 fields\n"), std::string::npos) << info.out;
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

TEST(TerminalProgress, TellsAPercentageOrTheAmountDone) {
  EXPECT_EQ(TerminalProgress::Line("recalc", 50, 200), "kpx: recalc  25%");
  EXPECT_EQ(TerminalProgress::Line("dump", 300, 200), "kpx: dump 100%");
  EXPECT_EQ(TerminalProgress::Line("convert", 3 * 1024 * 1024 / 2, 0), "kpx: convert 1.5 MB");
}

}  // namespace
}  // namespace kelpdex::kpx
