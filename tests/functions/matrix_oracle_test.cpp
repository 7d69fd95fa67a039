// The matrix and optimisation functions against numpy and scipy: a script draws well- and
// ill-conditioned matrices, linear programs with optima, infeasible and unbounded ones, quadratic
// programs and fits, with their reference results; each formula is evaluated here.
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
#include "store/cell_error.h"
#include "store/cell_record.h"
#include "support/formula_sheet.h"
#include "support/temp_dir.h"

namespace kelpdex {
namespace {

// The Debian interpreter, which sees the Debian numpy and scipy; another python3 may not.
constexpr const char* kPython = "/usr/bin/python3";

// An array "{a, b; c, d}" or a number, as rows of numbers.
std::vector<std::vector<double>> ParseMatrix(const std::string& text) {
  std::vector<std::vector<double>> rows;
  std::string body = text.front() == '{' ? text.substr(1, text.size() - 2) : text;
  std::stringstream lines(body);
  std::string line, part;
  while (std::getline(lines, line, ';')) {
    rows.emplace_back();
    std::stringstream parts(line);
    while (std::getline(parts, part, ','))
      rows.back().push_back(std::strtod(part.c_str(), nullptr));
  }
  return rows;
}

// The result as rows of numbers; an error or a text gives its literal in `error`.
std::vector<std::vector<double>> ResultRows(FormulaEngine& engine, std::string& error) {
  const FormulaValue& v = engine.Result();
  error.clear();
  if (v.errorCode != 0) {
    error = ErrorLiteral(v.errorCode);
    return {};
  }
  if (v.kind == kind::kNumber) return {{v.number}};
  if (v.kind != kind::kArray) {
    error = "not a number";
    return {};
  }
  std::vector<std::vector<double>> rows(v.row2 + 1);
  for (uint32_t r = 0; r <= v.row2; ++r) {
    for (uint16_t c = 0; c <= v.column2; ++c) {
      const CellRecord* cell = engine.TopArray().GetCell(r, c);
      if (cell == nullptr || cell::ErrorNibble(cell) != 0 || cell::IsText(cell)) {
        error = "a cell that is no number";
        return {};
      }
      rows[r].push_back(cell::Number(cell));
    }
  }
  return rows;
}

struct Tally {
  int cases = 0;
  int failures = 0;
  double worst = 0;  // the largest error met, in units of the case's own tolerance
};

TEST(MatrixOracle, AgreesWithNumpyAndScipy) {
  std::string probe = std::string(kPython) + " -c 'import scipy.optimize' >/dev/null 2>&1";
  if (std::system(probe.c_str()) != 0) GTEST_SKIP() << "python3-scipy is not installed";
  testing::TempDir dir;
  std::string cases = dir.Path("cases.txt");
  std::string command = std::string(kPython) + " " + KELPDEX_MATRIX_ORACLE + " > " + cases;
  ASSERT_EQ(std::system(command.c_str()), 0) << command;

  testing::FormulaSheet sheet({}, &BuiltinFunctions());
  std::ifstream in(cases);
  std::string line;
  std::map<std::string, Tally> tallies;
  int reported = 0;
  while (std::getline(in, line)) {
    std::vector<std::string> fields;
    std::stringstream parts(line);
    for (std::string field; std::getline(parts, field, '\t');) fields.push_back(field);
    ASSERT_EQ(fields.size(), 4u) << line;
    const std::string& formula = fields[0];
    double tolerance = std::strtod(fields[2].c_str(), nullptr);
    double scale = std::strtod(fields[3].c_str(), nullptr);
    Tally& tally = tallies[formula.substr(1, formula.find('(') - 1)];
    ++tally.cases;
    sheet.engine->EvaluateFormula(formula, 0, 0);
    std::string error;
    std::vector<std::vector<double>> got = ResultRows(*sheet.engine, error);
    bool ok;
    if (fields[1].front() == '#') {
      ok = error == fields[1];
    } else {
      std::vector<std::vector<double>> want = ParseMatrix(fields[1]);
      ok = error.empty() && got.size() == want.size();
      for (size_t r = 0; ok && r < want.size(); ++r) {
        ok = got[r].size() == want[r].size();
        for (size_t c = 0; ok && c < want[r].size(); ++c) {
          double off = std::fabs(got[r][c] - want[r][c]) / (tolerance * scale);
          tally.worst = std::fmax(tally.worst, off);
          ok = off <= 1;
        }
      }
    }
    if (!ok) {
      ++tally.failures;
      if (++reported <= 20) {
        ADD_FAILURE() << formula << "\n  expected " << fields[1] << " within " << tolerance << " x "
                      << scale << ", got "
                      << (error.empty() ? sheet.engine->ResultDisplay() : error);
      }
    }
  }
  int total = 0;
  for (const auto& [name, tally] : tallies) {
    std::printf("%-11s %4d cases, %d failed, worst error %.2g of its tolerance\n", name.c_str(),
                tally.cases, tally.failures, tally.worst);
    total += tally.cases;
  }
  EXPECT_GT(total, 400) << "the script gave too few cases";
  EXPECT_EQ(reported, 0);
}

}  // namespace
}  // namespace kelpdex
