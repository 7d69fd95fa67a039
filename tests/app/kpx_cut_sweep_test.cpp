// Every native form of a small document cut at every offset: each cut opens with all its records
// or fails with a message, and no changing command writes over a cut that did not open whole.
#include <gtest/gtest.h>

#include <algorithm>
#include <map>
#include <string>
#include <vector>

#include "run_kpx.h"
#include "support/file_bytes.h"
#include "support/temp_dir.h"

namespace kelpdex::kpx {
namespace {

class KpxCutSweep : public ::testing::Test {
 protected:
  Result Kpx(const std::vector<std::string>& words) { return RunKpxStrings(words); }

  void SetUp() override {
    source = dir.Path("source.kpx");
    ASSERT_EQ(Kpx({"new", source, "--table", "Cut", "--field", "Name:Text", "--field",
                   "Qty:Number=1", "--field", "Double:Number==Qty*2"})
                  .status,
              0);
    // Text that every form has to escape or count: markup, quotes, a tab, a line break.
    const char* names[] = {"<a href=\"x\">&amp;</a>", "tab\there\nnext line", "caf\xC3\xA9 ']]>'"};
    for (int i = 0; i < 3; ++i) {
      std::string record = std::to_string(i + 1);
      ASSERT_EQ(
          Kpx({"set", source, "--table", "Cut", "--record", record, "--field", "Name", names[i]})
              .status,
          0);
      ASSERT_EQ(Kpx({"set", source, "--table", "Cut", "--record", record, "--field", "Qty",
                     std::to_string(i * 7 - 3)})
                    .status,
                0);
    }
    whole = Kpx({"dump", source}).out;
    ASSERT_EQ(std::count(whole.begin(), whole.end(), '\n'), 3);
  }

  // Cuts the document written in `format` at every offset and returns what went wrong, a line
  // for each kind of fault with the ranges of cut lengths that showed it; empty when every cut
  // behaved. Below `shortest` bytes a cut may yield fewer than 11 bytes and so open as a new,
  // empty database of the file's name.
  std::string Sweep(const std::string& format, size_t shortest) {
    std::string full = dir.Path("full-" + format + ".kpx");
    if (Kpx({"convert", source, full, "--format", format}).status != 0) return "no copy";
    std::string bytes = testing::ReadFileBytes(full);
    std::string cut = dir.Path("cut.kpx");
    std::map<std::string, std::vector<size_t>> faults;
    for (size_t n = 1; n < bytes.size(); ++n) {
      std::string head = bytes.substr(0, n);
      testing::WriteFileBytes(cut, head);
      Result opened = Kpx({"dump", cut});
      if (opened.status == 0 && opened.out == whole) continue;
      if (opened.status == 0 && !(n < shortest && opened.out.empty())) {
        faults["opened without all its records"].push_back(n);
        continue;
      }
      if (opened.status != 0 && (opened.status != 1 || opened.err.rfind("kpx: ", 0) != 0)) {
        faults["failed without a message"].push_back(n);
      }
      // Neither a failed open nor a new database in a short file may replace the bytes.
      Result set = Kpx({"set", cut, "--table", "Cut", "--record", "1", "--field", "Name", "x"});
      Result recalc = Kpx({"recalc", cut});
      if (set.status == 0 || recalc.status == 0 || testing::ReadFileBytes(cut) != head) {
        faults["written over by a changing command"].push_back(n);
      }
    }
    std::string report;
    for (const auto& [fault, lengths] : faults) {
      report += format + " cut to " + Ranges(lengths) + " bytes: " + fault + "\n";
    }
    return report;
  }

  // "2-86, 90" for a rising list of lengths.
  static std::string Ranges(const std::vector<size_t>& lengths) {
    std::string text;
    for (size_t i = 0; i < lengths.size();) {
      size_t j = i;
      while (j + 1 < lengths.size() && lengths[j + 1] == lengths[j] + 1) ++j;
      text += (i ? ", " : "") + std::to_string(lengths[i]);
      if (j > i) text += "-" + std::to_string(lengths[j]);
      i = j + 1;
    }
    return text;
  }

  testing::TempDir dir;
  std::string source;
  std::string whole;
};

TEST_F(KpxCutSweep, PlainFormsOpenWholeOrFailAndAreNeverSavedOver) {
  EXPECT_EQ(Sweep("xml", 11), "");
  EXPECT_EQ(Sweep("binary", 11), "");
}

// A gzip stream is known by its first two bytes; from there on a cut one is a read error.
TEST_F(KpxCutSweep, GzippedFormsOpenWholeOrFailAndAreNeverSavedOver) {
  EXPECT_EQ(Sweep("xml.gz", 2), "");
  EXPECT_EQ(Sweep("binary.gz", 2), "");
}

}  // namespace
}  // namespace kelpdex::kpx
