// The statistical functions against scipy and numpy: a script draws a few thousand argument sets
// per function, tails included, with the reference values; each formula is evaluated here.
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <map>
#include <sstream>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "formula/formula_engine.h"
#include "functions/function_table.h"
#include "store/cell_record.h"
#include "support/formula_sheet.h"
#include "support/temp_dir.h"

namespace kelpdex {
namespace {

// The Debian interpreter, which sees the Debian scipy; another python3 on PATH may not.
constexpr const char* kPython = "/usr/bin/python3";

std::vector<double> ParseExpected(const std::string& text) {
  std::vector<double> values;
  std::string body = text.front() == '{' ? text.substr(1, text.size() - 2) : text;
  std::stringstream parts(body);
  std::string part;
  while (std::getline(parts, part, ';')) values.push_back(std::strtod(part.c_str(), nullptr));
  return values;
}

// The result's numbers: one, or a one-column array's; empty for an error or a text.
std::vector<double> ResultNumbers(FormulaEngine& engine) {
  const FormulaValue& v = engine.Result();
  if (v.errorCode != 0) return {};
  if (v.kind == kind::kNumber) return {v.number};
  std::vector<double> values;
  if (v.kind != kind::kArray) return values;
  for (uint32_t r = 0; r <= v.row2; ++r) {
    const CellRecord* c = engine.TopArray().GetCell(r, 0);
    if (c == nullptr || cell::ErrorNibble(c) != 0 || cell::IsText(c)) return {};
    values.push_back(cell::Number(c));
  }
  return values;
}

struct Tally {
  int cases = 0;
  int failures = 0;
  double worst = 0;  // the largest relative error met
};

TEST(StatisticalOracle, AgreesWithScipyAndNumpy) {
  std::string probe = std::string(kPython) + " -c 'import scipy' >/dev/null 2>&1";
  if (std::system(probe.c_str()) != 0) GTEST_SKIP() << "python3-scipy is not installed";
  testing::TempDir dir;
  std::string cases = dir.Path("cases.txt");
  std::string command = std::string(kPython) + " " + KELPDEX_STATISTICAL_ORACLE + " > " + cases;
  ASSERT_EQ(std::system(command.c_str()), 0) << command;

  testing::FormulaSheet sheet({}, &BuiltinFunctions());
  std::ifstream in(cases);
  std::string line;
  std::map<std::string, Tally> tallies;
  int reported = 0;
  while (std::getline(in, line)) {
    size_t tab1 = line.find('\t'), tab2 = line.rfind('\t');
    ASSERT_NE(tab1, tab2) << line;
    std::string formula = line.substr(0, tab1);
    std::vector<double> want = ParseExpected(line.substr(tab1 + 1, tab2 - tab1 - 1));
    double tolerance = std::strtod(line.c_str() + tab2 + 1, nullptr);
    Tally& tally = tallies[formula.substr(1, formula.find('(') - 1)];
    ++tally.cases;
    sheet.engine->EvaluateFormula(formula, 0, 0);
    std::vector<double> got = ResultNumbers(*sheet.engine);
    bool ok = got.size() == want.size();
    for (size_t i = 0; ok && i < want.size(); ++i) {
      double error = std::fabs(got[i] - want[i]) / std::fabs(want[i]);
      tally.worst = std::fmax(tally.worst, error);
      ok = error <= tolerance;
    }
    if (!ok) {
      ++tally.failures;
      if (++reported <= 25) {
        ADD_FAILURE() << formula << "\n  expected " << line.substr(tab1 + 1, tab2 - tab1 - 1)
                      << ", got " << sheet.engine->ResultDisplay();
      }
    }
  }
  int total = 0;
  for (const auto& [name, tally] : tallies) {
    std::printf("%-12s %6d cases, %d failed, worst relative error %.2g\n", name.c_str(),
                tally.cases, tally.failures, tally.worst);
    total += tally.cases;
  }
  EXPECT_GT(total, 10000) << "the script gave too few cases";
  EXPECT_EQ(reported, 0);
}

}  // namespace
}  // namespace kelpdex
