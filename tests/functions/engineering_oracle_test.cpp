// The engineering functions against scipy.special (Bessel and error functions), cmath (complex
// numbers) and Python's integers (base conversions): a script draws the cases with their
// reference values and each formula is evaluated here.
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
#include "functions/engineering_functions.h"
#include "functions/function_table.h"
#include "support/formula_sheet.h"
#include "support/temp_dir.h"

namespace kelpdex {
namespace {

// The Debian interpreter, which sees the Debian scipy; another python3 on PATH may not.
constexpr const char* kPython = "/usr/bin/python3";

struct Case {
  std::string formula, kind, expected;
  double relative = 0, absolute = 0;
};

bool Close(double want, double got, const Case& c) {
  return std::fabs(got - want) <= std::fmax(c.relative * std::fabs(want), c.absolute);
}

// Whether the engine's result is the case's expected value; `shown` receives what it gave.
bool Holds(FormulaEngine& engine, const Case& c, std::string& shown) {
  shown = engine.ResultDisplay();
  const FormulaValue& v = engine.Result();
  if (c.kind == "e" || c.kind == "t") return shown == c.expected;
  if (v.errorCode != 0) return false;
  if (c.kind == "n") {
    return v.kind == kind::kNumber && Close(std::strtod(c.expected.c_str(), nullptr), v.number, c);
  }
  double re = 0, im = 0;
  size_t semicolon = c.expected.find(';');
  return v.kind == kind::kString && ParseComplexArg(shown, re, im) &&
         Close(std::strtod(c.expected.c_str(), nullptr), re, c) &&
         Close(std::strtod(c.expected.c_str() + semicolon + 1, nullptr), im, c);
}

TEST(EngineeringOracle, AgreesWithScipyCmathAndPythonIntegers) {
  std::string probe = std::string(kPython) + " -c 'import scipy' >/dev/null 2>&1";
  if (std::system(probe.c_str()) != 0) GTEST_SKIP() << "python3-scipy is not installed";
  testing::TempDir dir;
  std::string file = dir.Path("cases.txt");
  std::string command = std::string(kPython) + " " + KELPDEX_ENGINEERING_ORACLE + " > " + file;
  ASSERT_EQ(std::system(command.c_str()), 0) << command;

  testing::FormulaSheet sheet({}, &BuiltinFunctions());
  std::ifstream in(file);
  std::string line;
  std::map<std::string, std::pair<int, int>> tallies;  // cases and failures per function
  int reported = 0, total = 0;
  while (std::getline(in, line)) {
    std::stringstream fields(line);
    Case c;
    std::string relative, absolute;
    std::getline(fields, c.formula, '\t');
    std::getline(fields, c.kind, '\t');
    std::getline(fields, c.expected, '\t');
    std::getline(fields, relative, '\t');
    std::getline(fields, absolute, '\t');
    c.relative = std::strtod(relative.c_str(), nullptr);
    c.absolute = std::strtod(absolute.c_str(), nullptr);
    auto& tally = tallies[c.formula.substr(1, c.formula.find('(') - 1)];
    ++tally.first;
    ++total;
    sheet.engine->EvaluateFormula(c.formula, 0, 0);
    std::string shown;
    if (Holds(*sheet.engine, c, shown)) continue;
    ++tally.second;
    if (++reported <= 25) {
      ADD_FAILURE() << c.formula << "\n  expected " << c.expected << ", got " << shown;
    }
  }
  for (const auto& [name, tally] : tallies) {
    std::printf("%-12s %6d cases, %d failed\n", name.c_str(), tally.first, tally.second);
  }
  EXPECT_GT(total, 10000) << "the script gave too few cases";
  EXPECT_EQ(reported, 0);
}

}  // namespace
}  // namespace kelpdex
