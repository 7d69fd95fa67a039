// The desktop grid over a large table, offscreen: the first paint after the load, a jump to the
// last record, a full-page scroll, the commit of one typed cell with a calculated field, and the
// memory the frame and grid add. Each job runs on the standard table of --records N records and,
// as the anchor in the same run, on a table of 1,000 records.
#include <QApplication>
#include <QTest>
#include <algorithm>
#include <memory>

#include "bench/bench_util.h"
#include "bench/standard_table.h"
#include "search/run_filters.h"
#include "store/catalogue.h"
#include "table/schema.h"
#include "table/table_state.h"
#include "views/frame/main_frame.h"
#include "views/grid/grid_view.h"

using namespace kelpdex;

namespace {

constexpr int kRepeats = 7;

bool BuildTable(Workbook& book, long records) {
  if (!CreateTable(book, "Standard")) return false;
  book.currentSheet = book.FindTable("Standard");
  for (uint16_t f = 0; f < bench::kStandardFieldCount; ++f) {
    FieldSpec field;
    field.name = bench::kStandardFieldNames[f];
    field.type = bench::kStandardFieldIsNumber[f] ? FieldType::kNumber : FieldType::kText;
    if (!InsertField(book, f, field)) return false;
  }
  FieldSpec total;
  total.name = "Total";
  total.type = FieldType::kNumber;
  total.formulaOrValue = "F:=Salary*Quantity";
  if (!InsertField(book, bench::kStandardFieldCount, total)) return false;
  bench::StandardTableGenerator generator;
  bench::StandardRecord record;
  CellCursor cursor;
  for (long r = 0; r < records; ++r) {
    generator.Next(static_cast<uint32_t>(r), record);
    if (!bench::PutStandardRecord(book.currentSheet->cells, cursor, static_cast<uint32_t>(r),
                                  record)) {
      return false;
    }
  }
  return RefreshCurrentTable(book) && RunSearch(book);
}

struct Figures {
  double firstPaint = 0;
  double jumpToLast = 0;
  double pageScroll = 0;
  double commit = 0;
  long frameKb = 0;
};

double Repaint(views::GridView& grid) {
  bench::Stopwatch timer;
  grid.viewport()->repaint();
  return timer.Seconds();
}

Figures Measure(long records) {
  Workbook book;
  SessionSettings settings;
  Figures out;
  if (!BuildTable(book, records)) {
    std::fprintf(stderr, "gui_bench: the table of %ld records could not be built\n", records);
    std::exit(1);
  }
  long before = bench::CurrentRssKb();
  auto frame = std::make_unique<views::MainFrame>(book, settings);
  frame->resize(1280, 800);
  frame->show();
  QApplication::processEvents();
  views::GridView& grid = frame->grid();
  frame->DocumentShown();
  out.firstPaint = Repaint(grid);
  out.frameKb = bench::CurrentRssKb() - before;
  out.jumpToLast = 1e9;
  out.pageScroll = 1e9;
  out.commit = 1e9;
  for (int i = 0; i < kRepeats; ++i) {
    grid.MoveTo(0, 0);
    Repaint(grid);
    bench::Stopwatch jump;
    QTest::keyClick(&grid, Qt::Key_End, Qt::ControlModifier);
    grid.viewport()->repaint();
    out.jumpToLast = std::min(out.jumpToLast, jump.Seconds());
    grid.MoveTo(0, static_cast<int64_t>(records / 2));
    Repaint(grid);
    bench::Stopwatch page;
    QTest::keyClick(&grid, Qt::Key_PageDown);
    grid.viewport()->repaint();
    out.pageScroll = std::min(out.pageScroll, page.Seconds());
    // One typed Quantity in the middle of the table; the record's Total is computed with it.
    grid.MoveTo(6, static_cast<int64_t>(records / 3 + i));
    grid.StartEdit(QString::number(40 + i), false);
    bench::Stopwatch commit;
    grid.CommitEdit(views::move_mode::kNone);
    out.commit = std::min(out.commit, commit.Seconds());
  }
  frame.reset();
  return out;
}

void Print(const char* op, long records, double seconds, double anchor) {
  char extra[96];
  std::snprintf(extra, sizeof extra, ", \"anchor_seconds\": %.6f, \"ratio\": %.2f", anchor,
                anchor > 0 ? seconds / anchor : 0.0);
  bench::Report(op, records, seconds, 0, extra);
}

}  // namespace

int main(int argc, char** argv) {
  if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM")) qputenv("QT_QPA_PLATFORM", "offscreen");
  QApplication app(argc, argv);
  long records = bench::RecordsArgument(argc, argv);
  // The first frame pays Qt's one-time setup (fonts, styles, the platform plugin), which belongs
  // to neither figure; the anchor is the frame over 10,000 records after it.
  Measure(1000);
  Figures anchor = Measure(10000);
  Figures big = Measure(records);
  Print("gui_first_paint", records, big.firstPaint, anchor.firstPaint);
  Print("gui_jump_to_last", records, big.jumpToLast, anchor.jumpToLast);
  Print("gui_page_scroll", records, big.pageScroll, anchor.pageScroll);
  Print("gui_commit_typed_cell", records, big.commit, anchor.commit);
  char extra[96];
  std::snprintf(extra, sizeof extra, ", \"frame_kb\": %ld, \"anchor_frame_kb\": %ld", big.frameKb,
                anchor.frameKb);
  bench::Report("gui_frame_memory", records, 0, 0, extra);
  return 0;
}
