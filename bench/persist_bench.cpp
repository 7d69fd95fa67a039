// Native binary documents on the standard table: save (with the flush to disk) and load, plain and
// gzipped, and the memory a load needs beside what it builds. With --csv FILE it also writes the
// table as CSV for the anchors of bench/persist_anchors.py.
#include <unistd.h>
#include <cstdio>
#include <cstring>
#include <string>

#include "bench/bench_util.h"
#include "bench/standard_table.h"
#include "persist/binary_format.h"
#include "persist/native_xml.h"
#include "store/catalogue.h"
#include "store/field_row.h"
#include "table/schema.h"
#include "table/table_state.h"

using namespace kelpdex;
using namespace kelpdex::bench;

namespace {

void Check(bool ok, const char* what) {
  if (!ok) {
    std::fprintf(stderr, "%s failed\n", what);
    std::exit(1);
  }
}

const char* Argument(int argc, char** argv, const char* name) {
  for (int i = 1; i + 1 < argc; ++i) {
    if (std::strcmp(argv[i], name) == 0) return argv[i + 1];
  }
  return nullptr;
}

void Build(Workbook& book, long records, FILE* csv) {
  Check(CreateTable(book, "People"), "table");
  book.currentSheet = book.FindTable("People");
  for (int f = 0; f < kStandardFieldCount; ++f) {
    FieldSpec fieldRow;
    fieldRow.name = kStandardFieldNames[f];
    fieldRow.type = kStandardFieldIsNumber[f] ? FieldType::kNumber : FieldType::kText;
    Check(InsertField(book, static_cast<uint16_t>(f), fieldRow), "field");
  }
  CellStore& cells = book.FindTable("People")->cells;
  StandardTableGenerator gen;
  StandardRecord r;
  CellCursor cursor;
  if (csv != nullptr) {
    for (int f = 0; f < kStandardFieldCount; ++f) {
      std::fprintf(csv, "%s%s", f ? "," : "", kStandardFieldNames[f]);
    }
    std::fputc('\n', csv);
  }
  for (long i = 0; i < records; ++i) {
    gen.Next(static_cast<uint32_t>(i), r);
    Check(PutStandardRecord(cells, cursor, static_cast<uint32_t>(i), r), "fill");
    if (csv != nullptr) {
      std::fprintf(csv, "%.0f,%s,%s,%s,%s,%.2f,%.0f,%s\n", r.id, r.lastName.c_str(),
                   r.firstName.c_str(), r.city.c_str(), r.birth.c_str(), r.salary, r.quantity,
                   r.note.c_str());
    }
  }
  Check(RefreshCurrentTable(book), "refresh");
}

// The save as the program does it: written, flushed to the system, closed. `sync` also waits for
// the disk, which the anchors do not.
double Save(const Workbook& book, const std::string& path, bool gz, bool sync, long long& bytes) {
  Stopwatch watch;
  FileStream out;
  Check(out.Open(path, StreamMode::kWrite, gz), "open");
  Check(WriteBinaryDocument(out, book), "write");
  if (sync) Check(out.Sync(), "sync");
  Check(out.Close(), "close");
  double seconds = watch.Seconds();
  FILE* f = std::fopen(path.c_str(), "rb");
  std::fseek(f, 0, SEEK_END);
  bytes = std::ftell(f);
  std::fclose(f);
  return seconds;
}

}  // namespace

int main(int argc, char** argv) {
  long records = RecordsArgument(argc, argv);
  std::string folder = Argument(argc, argv, "--dir") ? Argument(argc, argv, "--dir") : "/tmp";
  const char* loadXml = Argument(argc, argv, "--load-xml");
  if (loadXml != nullptr) {
    long before = CurrentRssKb();
    Workbook book;
    Stopwatch watch;
    FileStream in;
    Check(in.Open(loadXml, StreamMode::kRead, true), "open");
    Check(ReadXmlDocument(in, book), "read");
    double seconds = watch.Seconds();
    long held = CurrentRssKb() - before;
    Report(in.compressed() ? "load_xml_gzip" : "load_xml", records, seconds, 0,
           ",\"held_kb\": " + std::to_string(held));
    return 0;
  }
  const char* loadOnly = Argument(argc, argv, "--load");
  if (loadOnly != nullptr) {
    // A process of its own, so that its peak memory is the load's.
    long before = CurrentRssKb();
    Workbook book;
    Stopwatch watch;
    FileStream in;
    Check(in.Open(loadOnly, StreamMode::kRead, true), "open");
    Check(ReadBinaryDocument(in, book, nullptr, loadOnly), "read");
    double seconds = watch.Seconds();
    long held = CurrentRssKb() - before;
    long peak = PeakRssKb() - before;
    Report(in.compressed() ? "load_binary_gzip" : "load_binary", records, seconds, 0,
           ",\"held_kb\": " + std::to_string(held) + ",\"peak_over_held\": " +
               std::to_string(static_cast<double>(peak) / static_cast<double>(held)));
    return 0;
  }
  const char* csvPath = Argument(argc, argv, "--csv");
  FILE* csv = csvPath != nullptr ? std::fopen(csvPath, "w") : nullptr;
  Workbook book;
  Build(book, records, csv);
  if (csv != nullptr) std::fclose(csv);
  long long bytes = 0;
  std::string plain = folder + "/persist_bench.kpx";
  std::string packed = folder + "/persist_bench_gz.kpx";
  double seconds = Save(book, plain, false, false, bytes);
  Report("save_binary", records, seconds, bytes);
  seconds = Save(book, plain, false, true, bytes);
  Report("save_binary_fsync", records, seconds, bytes);
  seconds = Save(book, packed, true, false, bytes);
  Report("save_binary_gzip", records, seconds, bytes);
  for (bool gz : {false, true}) {
    std::string path = folder + (gz ? "/persist_bench_gz.xml" : "/persist_bench.xml");
    Stopwatch watch;
    FileStream out;
    Check(out.Open(path, StreamMode::kWrite, gz), "open");
    Check(WriteXmlDocument(out, book), "write xml");
    Check(out.Close(), "close");
    seconds = watch.Seconds();
    FILE* f = std::fopen(path.c_str(), "rb");
    std::fseek(f, 0, SEEK_END);
    bytes = std::ftell(f);
    std::fclose(f);
    Report(gz ? "save_xml_gzip" : "save_xml", records, seconds, bytes);
  }
  return 0;
}
