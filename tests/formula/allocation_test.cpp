// Evaluation must not allocate: stacks and the string pool are fixed, and array blocks are
// recycled. Every operator new of this test program is counted.
#include <atomic>
#include <cstdlib>
#include <new>
#include <string>
#include <vector>

#include <gtest/gtest.h>

// GCC cannot see that these replace the global operators as a pair.
#pragma GCC diagnostic ignored "-Wmismatched-new-delete"

#include "formula/formula_engine.h"
#include "store/workbook.h"

namespace {
std::atomic<long> allocations{0};
}  // namespace

// AddressSanitizer brings its own allocation operators; counting is done in the plain build.
#if defined(__SANITIZE_ADDRESS__)
#define KELPDEX_COUNTING_NEW 0
#else
#define KELPDEX_COUNTING_NEW 1
void* operator new(std::size_t size) {
  ++allocations;
  if (void* p = std::malloc(size != 0 ? size : 1)) return p;
  throw std::bad_alloc();
}
void operator delete(void* p) noexcept {
  std::free(p);
}
void operator delete(void* p, std::size_t) noexcept {
  std::free(p);
}
#endif

namespace kelpdex {
namespace {

TEST(Allocation, EvaluationAllocatesNothingOnceWarm) {
  if (!KELPDEX_COUNTING_NEW)
    GTEST_SKIP() << "allocations are counted in the build without sanitizers";
  Workbook book;
  auto* sheet = new Worksheet("T");
  book.AttachNode(sheet, nullptr);
  std::vector<FormulaField> fields(2);
  fields[0].name = "Price";
  fields[0].type = kFieldNumber;
  fields[1].name = "Name";
  fields[1].type = kFieldText;
  uint8_t rec[64];
  for (uint32_t row = 0; row < 100; ++row) {
    cell::EncodeNumber(rec, row, 0, row * 1.5);
    sheet->cells.PutCell(rec);
    cell::EncodeText(rec, row, 1, "name " + std::to_string(row));
    sheet->cells.PutCell(rec);
  }
  FormulaEngine engine(&book, sheet, nullptr);
  engine.SetFields(fields.data(), 2);
  const std::string formulas[] = {"=(Price >= 30)*(Price <= 60)", "=Name&\" \"&Price",
                                  "={1,2;3,4}*Price", "=Price:Name", "=\"a\"<Name"};
  std::vector<std::string> first;
  for (const std::string& f : formulas) {
    engine.EvaluateFormula(f, 0, 7);
    first.push_back(engine.ResultDisplay());
  }
  // Warm: from here on no block may be taken from the heap either.
  SetBlockAllocationBudget(0);
  long before = allocations.load();
  for (int round = 0; round < 50; ++round) {
    for (uint32_t row = 0; row < 100; ++row) {
      for (const std::string& f : formulas) engine.EvaluateFormula(f, 0, row);
    }
  }
  long during = allocations.load() - before;
  std::vector<std::string> again;
  for (const std::string& f : formulas) {
    engine.EvaluateFormula(f, 0, 7);
    again.push_back(engine.ResultDisplay());
  }
  SetBlockAllocationBudget(-1);
  EXPECT_EQ(during, 0);
  EXPECT_EQ(again, first);  // no "#MEMORY!" where a block was refused
}

}  // namespace
}  // namespace kelpdex
