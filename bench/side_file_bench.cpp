// The side file's jobs: append and read back 10,000 Long Text values of 2 KB, then compact the
// file with every other value dead, beside `cp` of the same file in the same run. One JSON line
// per job; `ratio` is the job's time over the anchor's (best of --runs for each).
//   side_file_bench [--values N] [--bytes B] [--runs R] [--dir D]
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

#include "persist/side_compaction.h"
#include "persist/side_file.h"
#include "platform/os.h"
#include "store/catalogue.h"
#include "store/cell_record.h"

using namespace kelpdex;

namespace {

double Now() {
  return std::chrono::duration<double>(std::chrono::steady_clock::now().time_since_epoch()).count();
}

long Option(int argc, char** argv, const char* name, long fallback) {
  for (int i = 1; i + 1 < argc; ++i) {
    if (std::strcmp(argv[i], name) == 0) return std::atol(argv[i + 1]);
  }
  return fallback;
}

void Check(bool ok, const char* what) {
  if (!ok) {
    std::fprintf(stderr, "side_file_bench: %s failed\n", what);
    std::exit(1);
  }
}

void Report(const char* op, long values, double seconds, uint64_t bytes, double anchor) {
  std::printf("{\"op\": \"%s\", \"records\": %ld, \"seconds\": %.4f, \"bytes\": %llu", op, values,
              seconds, static_cast<unsigned long long>(bytes));
  if (anchor > 0)
    std::printf(", \"anchor_cp_seconds\": %.4f, \"ratio\": %.2f", anchor, seconds / anchor);
  std::printf("}\n");
  std::fflush(stdout);
}

}  // namespace

int main(int argc, char** argv) {
  const long values = Option(argc, argv, "--values", 10000);
  const long bytes = Option(argc, argv, "--bytes", 2048);
  const long runs = Option(argc, argv, "--runs", 3);
  std::string folder = platform::TempFolder();
  for (int i = 1; i + 1 < argc; ++i) {
    if (std::strcmp(argv[i], "--dir") == 0) folder = argv[i + 1];
  }
  const std::string side = platform::JoinPath(folder, "kelpdex_side_bench.tx2");
  std::string value(static_cast<size_t>(bytes), 'x');
  for (size_t i = 0; i < value.size(); ++i) value[i] = static_cast<char>(' ' + (i * 7) % 90);

  double bestAppend = 1e9, bestRead = 1e9, bestCompact = 1e9, bestCp = 1e9;
  uint64_t fullSize = 0, compactSize = 0;
  for (long run = 0; run < runs; ++run) {
    platform::DeleteFile(side);
    std::vector<uint32_t> offsets(static_cast<size_t>(values));
    ErrorCode error = err::kNone;
    double start = Now();
    for (long i = 0; i < values; ++i) {
      value[0] = static_cast<char>('A' + i % 26);
      Check(SideFile::AppendLongText(side, value, offsets[static_cast<size_t>(i)], error),
            "append");
    }
    bestAppend = std::min(bestAppend, Now() - start);
    std::string back;
    start = Now();
    for (long i = 0; i < values; ++i) {
      Check(SideFile::ReadLongText(side, offsets[static_cast<size_t>(i)], back, error), "read");
      Check(back.size() == value.size(), "read size");
    }
    bestRead = std::min(bestRead, Now() - start);
    platform::GetFileSize(side, fullSize);

    // Every other value was replaced: the cells hold the even records, the odd ones are dead.
    Workbook book;
    Check(CreateTable(book, "T"), "table");
    Worksheet* data = book.FindTable("T");
    uint8_t record[cell::kNumberSize];
    for (long i = 0; i < values; i += 2) {
      cell::EncodeNumber(record, static_cast<uint32_t>(i / 2), 0, offsets[static_cast<size_t>(i)]);
      Check(data->cells.PutCell(record), "cell");
    }
    std::vector<SideField> fields = {SideField{"T", data, 0, FieldType::kLongText}};
    const std::string copy = side + ".cp";
    std::string command = "cp '" + side + "' '" + copy + "'";
    start = Now();
    Check(std::system(command.c_str()) == 0, "cp");
    bestCp = std::min(bestCp, Now() - start);
    platform::DeleteFile(copy);

    std::vector<OffsetMove> moves;
    std::string backup;
    const std::string temporary = CompactionTemporaryPath(side);
    start = Now();
    Check(CopyLiveRecords(fields, side, temporary, moves, error, nullptr), "compact copy");
    Check(SwapInCompactedFile(side, temporary, backup, error), "compact swap");
    ApplyOffsetMoves(moves, false);
    DropBackup(backup);
    bestCompact = std::min(bestCompact, Now() - start);
    platform::GetFileSize(side, compactSize);
  }
  platform::DeleteFile(side);
  Report("side_append", values, bestAppend, fullSize, 0);
  Report("side_read", values, bestRead, fullSize, 0);
  Report("cp_side_file", values, bestCp, fullSize, 0);
  Report("side_compact_half_dead", values, bestCompact, compactSize, bestCp);
  return 0;
}
