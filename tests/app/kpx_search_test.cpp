// kpx filter, key and the record set in force that dump and info show.
#include <gtest/gtest.h>

#include <string>
#include <tuple>
#include <vector>

#include "run_kpx.h"
#include "support/file_bytes.h"
#include "support/temp_dir.h"

namespace kelpdex::kpx {
namespace {

class KpxSearch : public ::testing::Test {
 protected:
  Result Kpx(const std::vector<std::string>& words) { return RunKpxStrings(words); }
  void SetUp() override {
    path = dir.Path("stock.kpx");
    ASSERT_EQ(Kpx({"new", path, "--table", "Stock", "--field", "Item:Text", "--field", "Qty:Number",
                   "--field", "Note:LongText"})
                  .status,
              0);
    const char* items[] = {"apple", "pear", "plum", "fig", "kiwi"};
    for (int i = 0; i < 5; ++i) {
      std::string record = std::to_string(i + 1);
      ASSERT_EQ(
          Kpx({"set", path, "--table", "Stock", "--record", record, "--field", "Item", items[i]})
              .status,
          0);
      ASSERT_EQ(Kpx({"set", path, "--table", "Stock", "--record", record, "--field", "Qty",
                     std::to_string(10 * (i + 1))})
                    .status,
                0);
    }
  }
  std::string Dump(std::vector<std::string> extra = {}) {
    std::vector<std::string> words = {"dump", path};
    words.insert(words.end(), extra.begin(), extra.end());
    Result r = Kpx(words);
    EXPECT_EQ(r.status, 0) << r.err;
    return r.out;
  }
  testing::TempDir dir;
  std::string path;
};

TEST_F(KpxSearch, FiltersAndKeysAreSavedAndNarrowDumpAndInfo) {
  ASSERT_EQ(Kpx({"filter", path, "--table", "Stock", "--field", "Qty", "--op", "Between", "--value",
                 "20 40"})
                .status,
            0);
  EXPECT_EQ(Dump(), "pear\t20\t\nplum\t30\t\nfig\t40\t\n");
  EXPECT_EQ(Dump({"--count"}), "3\n");
  EXPECT_NE(Kpx({"info", path}).out.find("table Stock: 5 records, 3 found, 3 fields"),
            std::string::npos);
  ASSERT_EQ(Kpx({"key", path, "--table", "Stock", "add", "Middle"}).status, 0);
  ASSERT_EQ(Kpx({"filter", path, "--table", "Stock", "--clear-all"}).status, 0);
  EXPECT_EQ(Dump({"--count"}), "5\n");
  ASSERT_EQ(Kpx({"key", path, "--table", "Stock", "select", "middle"}).status, 0);
  EXPECT_EQ(Dump({"--count"}), "3\n");
  ASSERT_EQ(Kpx({"key", path, "--table", "Stock", "rename", "Middle", "Mid"}).status, 0);
  ASSERT_EQ(Kpx({"key", path, "--table", "Stock", "select", "None"}).status, 0);
  EXPECT_EQ(Dump({"--count"}), "5\n");
  ASSERT_EQ(Kpx({"key", path, "--table", "Stock", "select", "Mid"}).status, 0);
  ASSERT_EQ(Kpx({"key", path, "--table", "Stock", "delete", "Mid"}).status, 0);
  // The filters in force stay when the key that brought them goes.
  EXPECT_EQ(Dump({"--count"}), "3\n");
  // The same through a binary copy.
  std::string copy = dir.Path("copy.kpx");
  ASSERT_EQ(Kpx({"convert", path, copy, "--format", "binary.gz"}).status, 0);
  EXPECT_EQ(Kpx({"dump", copy, "--count"}).out, "3\n");
}

TEST_F(KpxSearch, LongTextIsSearchedInTheSavedSideFile) {
  ASSERT_EQ(Kpx({"put-text", path, "--table", "Stock", "--record", "2", "--field", "Note", "--text",
                 "An URGENT matter"})
                .status,
            0);
  ASSERT_EQ(Kpx({"put-text", path, "--table", "Stock", "--record", "4", "--field", "Note", "--text",
                 "calm"})
                .status,
            0);
  ASSERT_EQ(Kpx({"filter", path, "--table", "Stock", "--field", "Note", "--expr", "urgent"}).status,
            0);
  EXPECT_EQ(Dump({"--count"}), "1\n");
  EXPECT_EQ(Dump({"--expr", "Note:alm"}).substr(0, 4), "fig\t");
}

TEST_F(KpxSearch, TransientFiltersReplaceThoseInForceAndChangeNothing) {
  ASSERT_EQ(Kpx({"filter", path, "--table", "Stock", "--field", "Qty", "--op", "Greater", "--value",
                 "35"})
                .status,
            0);
  std::string before = testing::ReadFileBytes(path);
  EXPECT_EQ(Dump({"--filter", "Item:Equal:pear"}), "pear\t20\t\n");
  EXPECT_EQ(Dump({"--expr", "Qty:=Qty*2<=40", "--filter", "Item:NotEqual:apple"}), "pear\t20\t\n");
  EXPECT_EQ(Dump({"--expr", "Qty:=Qty<", "--count"}), "0\n");  // a broken formula finds nothing
  EXPECT_EQ(testing::ReadFileBytes(path), before);
  EXPECT_EQ(Dump({"--count"}), "2\n");
}

TEST_F(KpxSearch, BadFiltersAndKeysAreRefusedWithTheDocumentUnchanged) {
  ASSERT_EQ(Kpx({"key", path, "--table", "Stock", "add", "K"}).status, 0);
  std::string before = testing::ReadFileBytes(path);
  struct Case {
    std::vector<std::string> words;
    int status;
    const char* message;
  } cases[] = {
      {{"filter", path, "--table", "Stock", "--field", "Qty", "--op", "Near", "--value", "1"},
       2,
       "unknown operator"},
      {{"filter", path, "--table", "Stock", "--field", "Qty", "--op", "Equal"}, 2, "go together"},
      {{"filter", path, "--table", "Stock", "--field", "Size", "--expr", "=1"}, 1, "no field"},
      {{"filter", path, "--table", "Stock", "--field", "Qty", "--expr", std::string(1023, 'x')},
       1,
       "1,024"},
      {{"filter", path, "--table", "Stock", "--field", "Note", "--op", "Equal", "--value", "a"},
       1,
       "takes --expr"},
      {{"filter", path, "--table", "Stock", "--field", "Item", "--expr", "=\xE2\x88\x9A"},
       1,
       "code page"},
      {{"key", path, "--table", "Stock", "add", "k"}, 1, "already exists"},
      {{"key", path, "--table", "Stock", "add", "default"}, 1, "already exists"},
      {{"key", path, "--table", "Stock", "add", std::string(1020, 'n')}, 1, "1,019"},
      {{"key", path, "--table", "Stock", "delete", "Default"}, 1, "no key named"},
      {{"key", path, "--table", "Stock", "rename", "Gone", "New"}, 1, "no key named"},
      {{"key", path, "--table", "Stock", "select", "Gone"}, 1, "no key named"},
      {{"key", path, "--table", "Stock", "drop", "K"}, 2, "usage"},
      {{"dump", path, "--filter", "Qty:Between"}, 2, "FIELD:OP:VALUE"},
      {{"dump", path, "--count", "--json"}, 2, "--count"},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.words[0] + " " + c.words.back());
    Result r = Kpx(c.words);
    EXPECT_EQ(r.status, c.status);
    EXPECT_NE(r.err.find(c.message), std::string::npos) << r.err;
  }
  EXPECT_EQ(testing::ReadFileBytes(path), before);
}

TEST_F(KpxSearch, SortKeysAreSavedAndTransientKeysReplaceThem) {
  ASSERT_EQ(Kpx({"sort", path, "--table", "Stock", "--by", "Qty:desc"}).status, 0);
  EXPECT_EQ(Dump({"--limit", "2"}), "kiwi\t50\t\nfig\t40\t\n");
  EXPECT_NE(Kpx({"info", path, "--json"}).out.find("\"sortIndex\": 10001"), std::string::npos);
  // Filters first, then the order.
  ASSERT_EQ(
      Kpx({"filter", path, "--table", "Stock", "--field", "Qty", "--op", "Less", "--value", "35"})
          .status,
      0);
  EXPECT_EQ(Dump(), "plum\t30\t\npear\t20\t\napple\t10\t\n");
  EXPECT_EQ(Dump({"--sort", "Item"}), "apple\t10\t\npear\t20\t\nplum\t30\t\n");
  std::string copy = dir.Path("sorted.kpx");
  ASSERT_EQ(Kpx({"convert", path, copy, "--format", "binary"}).status, 0);
  EXPECT_EQ(Kpx({"dump", copy}).out, "plum\t30\t\npear\t20\t\napple\t10\t\n");
  ASSERT_EQ(Kpx({"sort", path, "--table", "Stock", "--none"}).status, 0);
  EXPECT_EQ(Dump(), "apple\t10\t\npear\t20\t\nplum\t30\t\n");

  std::string before = testing::ReadFileBytes(path);
  std::vector<std::string> many = {"sort", path, "--table", "Stock"};
  for (int i = 0; i < 100; ++i) many.insert(many.end(), {"--by", "Qty"});
  Result tooMany = Kpx(many);
  EXPECT_EQ(tooMany.status, 1);
  EXPECT_NE(tooMany.err.find("Too many sort keys"), std::string::npos) << tooMany.err;
  EXPECT_EQ(Kpx({"sort", path, "--table", "Stock", "--by", "Size"}).status, 1);
  EXPECT_EQ(Kpx({"sort", path, "--table", "Stock"}).status, 2);
  EXPECT_EQ(Kpx({"dump", path, "--sort", "Size"}).status, 1);
  EXPECT_EQ(testing::ReadFileBytes(path), before);
}

TEST_F(KpxSearch, DuplicatesComplementFindAndReplace) {
  // Items: apple pear plum fig kiwi; a second pear of another quantity and a second plum of 30.
  for (auto [record, item, qty] : {std::tuple{"6", "pear", "60"}, std::tuple{"7", "plum", "30"}}) {
    ASSERT_EQ(
        Kpx({"set", path, "--table", "Stock", "--record", record, "--field", "Item", item}).status,
        0);
    ASSERT_EQ(
        Kpx({"set", path, "--table", "Stock", "--record", record, "--field", "Qty", qty}).status,
        0);
  }
  std::string before = testing::ReadFileBytes(path);
  EXPECT_EQ(Kpx({"duplicates", path, "--table", "Stock", "--fields", "Item", "--count"}).out,
            "4\n");
  EXPECT_EQ(Kpx({"duplicates", path, "--table", "Stock", "--fields", "Item,Qty"}).out,
            "plum\t30\t\nplum\t30\t\n");
  EXPECT_EQ(Kpx({"duplicates", path, "--table", "Stock", "--fields", "Item,Size"}).status, 1);
  EXPECT_EQ(testing::ReadFileBytes(path), before);  // the narrowed set is never saved
  ASSERT_EQ(
      Kpx({"filter", path, "--table", "Stock", "--field", "Qty", "--op", "Less", "--value", "25"})
          .status,
      0);
  EXPECT_EQ(Kpx({"complement", path, "--table", "Stock", "--count"}).out, "5\n");
  EXPECT_EQ(Kpx({"find", path, "--table", "Stock", "p*"}).out,
            "1\tItem\n2\tItem\n");  // the records in force: apple and pear
  EXPECT_EQ(Kpx({"find", path, "--table", "Stock", "P", "--match-case"}).out, "");
  EXPECT_EQ(Kpx({"find", path, "--table", "Stock", ""}).status, 1);
  ASSERT_EQ(Kpx({"filter", path, "--table", "Stock", "--clear-all"}).status, 0);
  Result replaced = Kpx({"replace", path, "--table", "Stock", "--find", "p", "--with", "P"});
  ASSERT_EQ(replaced.status, 0) << replaced.err;
  EXPECT_EQ(replaced.out, "5\n");  // apple, pear, plum and the second pear and plum
  EXPECT_NE(Dump().find("aPPle\t10"), std::string::npos);
}

}  // namespace
}  // namespace kelpdex::kpx
