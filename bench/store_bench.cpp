// Times the cell store on the standard table: sequential fill, full scan, random reads through
// the row index, and the memory the blocks hold before and after random churn.
#include <cstdio>
#include <random>
#include <string>
#include <vector>

#include "bench/bench_util.h"
#include "bench/standard_table.h"
#include "store/cell_store.h"

using namespace kelpdex;
using namespace kelpdex::bench;

namespace {

void PutField(CellStore& store, CellCursor& cursor, uint32_t row, uint16_t column,
              const std::string* text, double number, long long& recordBytes) {
  uint8_t buf[128];
  uint32_t size = text != nullptr ? cell::EncodeText(buf, row, column, *text)
                                  : cell::EncodeNumber(buf, row, column, number);
  recordBytes += size;
  if (!store.PutCell(buf, &cursor)) {
    std::fprintf(stderr, "out of memory\n");
    std::exit(1);
  }
}

long long RecordBytes(CellStore& store) {
  long long bytes = 0;
  CellCursor cursor;
  while (CellRecord* r = store.NextCell(cursor)) bytes += cell::Size(r);
  return bytes;
}

std::string Ratio(const char* name, double value) {
  char buf[96];
  std::snprintf(buf, sizeof buf, ", \"%s\": %.4f", name, value);
  return buf;
}

}  // namespace

int main(int argc, char** argv) {
  long records = RecordsArgument(argc, argv);
  // Generate first so the fill is timed on its own.
  std::vector<StandardRecord> table(static_cast<size_t>(records));
  StandardTableGenerator generator;
  for (long i = 0; i < records; ++i) generator.Next(static_cast<uint32_t>(i), table[i]);

  CellStore store;
  long long recordBytes = 0;
  Stopwatch fill;
  CellCursor cursor;
  for (long i = 0; i < records; ++i) {
    const StandardRecord& r = table[i];
    uint32_t row = static_cast<uint32_t>(i);
    PutField(store, cursor, row, 0, nullptr, r.id, recordBytes);
    PutField(store, cursor, row, 1, &r.lastName, 0, recordBytes);
    PutField(store, cursor, row, 2, &r.firstName, 0, recordBytes);
    PutField(store, cursor, row, 3, &r.city, 0, recordBytes);
    PutField(store, cursor, row, 4, &r.birth, 0, recordBytes);
    PutField(store, cursor, row, 5, nullptr, r.salary, recordBytes);
    PutField(store, cursor, row, 6, nullptr, r.quantity, recordBytes);
    PutField(store, cursor, row, 7, &r.note, 0, recordBytes);
  }
  double fillSeconds = fill.Seconds();
  long cells = records * kStandardFieldCount;
  Report("store_fill", records, fillSeconds, recordBytes,
         Ratio("cells_per_second", cells / fillSeconds));
  long long held =
      static_cast<long long>(store.blockCount() + store.freeBlockCount()) * sizeof(RowBlock);
  Report("store_memory", records, 0, held,
         Ratio("held_per_record_byte", double(held) / recordBytes));

  Stopwatch scan;
  long seen = 0;
  double sum = 0;
  CellCursor scanCursor;
  while (CellRecord* r = store.NextCell(scanCursor)) {
    ++seen;
    sum += cell::Column(r);
  }
  double scanSeconds = scan.Seconds();
  if (seen != cells) std::fprintf(stderr, "scan saw %ld of %ld cells (%g)\n", seen, cells, sum);
  Report("store_scan", records, scanSeconds, recordBytes,
         Ratio("cells_per_second", seen / scanSeconds));

  std::mt19937 rng(7);
  Stopwatch build;
  store.BuildRowIndex(0, kLastRow);
  Report("store_row_index", records, build.Seconds(), 0);
  const long probes = 2000000;
  std::vector<uint32_t> rows(probes);
  for (long i = 0; i < probes; ++i) rows[i] = rng() % static_cast<uint32_t>(records);
  Stopwatch random;
  long found = 0;
  for (long i = 0; i < probes; ++i) {
    found += store.GetCellFast(rows[i], static_cast<uint16_t>(i & 7)) != nullptr;
  }
  double randomSeconds = random.Seconds();
  if (found != probes) std::fprintf(stderr, "random reads found %ld of %ld\n", found, probes);
  Report("store_get_fast", probes, randomSeconds, 0,
         Ratio("microseconds_each", randomSeconds * 1e6 / probes));

  // Churn: replacements of other lengths and deletions at random places.
  StandardRecord other;
  Stopwatch churn;
  CellCursor none;
  for (long i = 0; i < 100000; ++i) {
    uint32_t row = rng() % static_cast<uint32_t>(records);
    uint16_t column = static_cast<uint16_t>(rng() % kStandardFieldCount);
    if (i % 2 == 0) {
      generator.Next(row, other);
      none.Clear();
      long long ignored = 0;
      if (kStandardFieldIsNumber[column]) {
        PutField(store, none, row, column, nullptr, other.salary, ignored);
      } else {
        PutField(store, none, row, column, &other.note, 0, ignored);
      }
    } else {
      store.DeleteRange(column, column, row, row);
    }
  }
  double churnSeconds = churn.Seconds();
  long long after = RecordBytes(store);
  held = static_cast<long long>(store.blockCount() + store.freeBlockCount()) * sizeof(RowBlock);
  Report("store_churn", 100000, churnSeconds, held,
         Ratio("held_per_record_byte", double(held) / after));
  return 0;
}
