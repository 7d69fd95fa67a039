// The financial functions against LibreOffice Calc where the two define them alike: a script has
// soffice compute one generated sheet, and each formula is evaluated here. Skipped without soffice.
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <map>
#include <string>

#include <gtest/gtest.h>

#include "formula/formula_engine.h"
#include "functions/function_table.h"
#include "support/formula_sheet.h"
#include "support/temp_dir.h"

namespace kelpdex {
namespace {

constexpr const char* kPython = "/usr/bin/python3";

TEST(FinancialOffice, AgreesWithLibreOffice) {
  if (std::system("command -v soffice >/dev/null 2>&1") != 0) {
    GTEST_SKIP() << "soffice is not installed";
  }
  testing::TempDir dir;
  std::string file = dir.Path("cases.txt");
  std::string command =
      std::string(kPython) + " " + KELPDEX_FINANCIAL_OFFICE + " " + dir.Path("") + " > " + file;
  ASSERT_EQ(std::system(command.c_str()), 0) << command;

  testing::FormulaSheet sheet({}, &BuiltinFunctions());
  std::ifstream in(file);
  std::string line;
  std::map<std::string, std::pair<int, int>> tallies;  // cases and failures per function
  int reported = 0, total = 0;
  while (std::getline(in, line)) {
    size_t tab = line.find('\t');
    ASSERT_NE(tab, std::string::npos) << line;
    std::string formula = line.substr(0, tab), want = line.substr(tab + 1);
    auto& tally = tallies[formula.substr(1, formula.find('(') - 1)];
    ++tally.first;
    ++total;
    sheet.engine->EvaluateFormula(formula, 0, 0);
    const FormulaValue& v = sheet.engine->Result();
    bool ok = false;
    if (want.starts_with("#") || want.starts_with("Err")) {
      // LibreOffice's "Err:502" (an invalid argument) and "#NUM!" are Kelpdex's "#NUM!".
      ok = v.errorCode == ferr::kNum;
    } else if (v.errorCode == 0 && v.kind == kind::kNumber) {
      double x = std::strtod(want.c_str(), nullptr);
      // LibreOffice writes fifteen digits; values that cancel to near 0 keep only absolute ones.
      ok = std::fabs(v.number - x) <= 1e-9 * std::fmax(std::fabs(x), 1e-3);
    }
    if (ok) continue;
    ++tally.second;
    if (++reported <= 25) {
      ADD_FAILURE() << formula << "\n  LibreOffice " << want << ", Kelpdex "
                    << sheet.engine->ResultDisplay();
    }
  }
  for (const auto& [name, tally] : tallies) {
    std::printf("%-12s %6d cases, %d failed\n", name.c_str(), tally.first, tally.second);
  }
  EXPECT_GT(total, 300) << "the script gave too few cases";
  EXPECT_EQ(reported, 0);
}

}  // namespace
}  // namespace kelpdex
