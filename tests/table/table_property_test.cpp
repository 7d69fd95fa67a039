// Random record and field operations on a random table, checked after every step against a plain
// model: a vector of rows of field -> text, and the list of rows the record set shows.
#include <gtest/gtest.h>

#include <algorithm>
#include <map>
#include <random>
#include <string>
#include <vector>

#include "table/records.h"
#include "table/table_fixture.h"

namespace kelpdex {
namespace {

using testing::Field;

class TablePropertyTest : public testing::TableTest {
 protected:
  using Row = std::map<uint16_t, std::string>;

  void Put(uint32_t row, uint16_t column, const std::string& text) {
    PutText(row, column, text);
    if (model.size() <= row) model.resize(row + 1);
    model[row][column] = text;
  }

  void CheckAgainstModel(const char* step) {
    SCOPED_TRACE(step);
    std::map<std::pair<uint32_t, uint16_t>, std::string> actual, expected;
    CellCursor cursor;
    while (CellRecord* r = Data().cells.NextCell(cursor)) {
      actual[{cell::Row(r), cell::Column(r)}] = std::string(cell::Text(r));
    }
    for (uint32_t row = 0; row < model.size(); ++row) {
      for (const auto& [column, text] : model[row]) expected[{row, column}] = text;
    }
    ASSERT_EQ(actual, expected);
    std::vector<uint32_t> shown(book.records.rows(), book.records.rows() + book.records.count());
    ASSERT_EQ(shown, set);
    ASSERT_TRUE(book.records.Consistent(FirstFreeRow(book.records, Data())));
    ASSERT_EQ(FieldCountNow(), fields);
  }

  std::vector<Row> model;     // by sheet row
  std::vector<uint32_t> set;  // the rows of the records shown
  int fields = 0;
};

TEST_F(TablePropertyTest, RandomRecordAndFieldOperationsKeepEveryCellInPlace) {
  std::mt19937 rng(2026);
  MakeTable(
      {Field("A", FieldType::kText), Field("B", FieldType::kText), Field("C", FieldType::kText)});
  fields = 3;
  for (uint32_t r = 0; r < 60; ++r) {
    for (uint16_t c = 0; c < 3; ++c) {
      if (rng() % 3 != 0) Put(r, c, std::to_string(r) + ":" + std::to_string(c));
    }
  }
  Put(59, 0, "last");
  ASSERT_TRUE(RefreshCurrentTable(book));
  for (uint32_t i = 0; i < book.records.count(); ++i) set.push_back(i);
  CheckAgainstModel("start");

  for (int step = 0; step < 400; ++step) {
    int op = static_cast<int>(rng() % 7);
    uint32_t count = static_cast<uint32_t>(set.size());
    if (op == 0 && count > 0) {
      // Insert records.
      uint32_t first = rng() % count;
      uint32_t last = std::min(count - 1, first + static_cast<uint32_t>(rng() % 4));
      uint32_t n = last - first + 1;
      bool ordered = book.records.ordered();
      ASSERT_TRUE(InsertRecords(book, first, last));
      std::vector<uint32_t> newRows(n);
      if (ordered) {
        uint32_t at = set[first];
        model.insert(model.begin() + std::min<size_t>(at, model.size()), n, Row());
        for (uint32_t& row : set) {
          if (row >= at) row += n;
        }
        for (uint32_t k = 0; k < n; ++k) newRows[k] = at + k;
      } else {
        std::vector<uint32_t> sorted(set.begin() + first, set.begin() + last + 1);
        std::sort(sorted.begin(), sorted.end());
        std::vector<Row> next;
        for (uint32_t row = 0; row < model.size(); ++row) {
          if (std::binary_search(sorted.begin(), sorted.end(), row)) next.emplace_back();
          next.push_back(model[row]);
        }
        model = next;
        for (uint32_t k = 0; k < n; ++k) {
          uint32_t row = set[first + k];
          newRows[k] =
              row + static_cast<uint32_t>(std::lower_bound(sorted.begin(), sorted.end(), row) -
                                          sorted.begin());
        }
        for (uint32_t& row : set) {
          row += static_cast<uint32_t>(std::upper_bound(sorted.begin(), sorted.end(), row) -
                                       sorted.begin());
        }
      }
      set.insert(set.begin() + first, newRows.begin(), newRows.end());
      CheckAgainstModel("insert records");
      // Type into one of the new records.
      uint32_t row = newRows[rng() % n];
      Put(row, static_cast<uint16_t>(rng() % fields), "new" + std::to_string(step));
    } else if (op == 1 && count > 0) {
      // Remove records.
      uint32_t first = rng() % count;
      uint32_t last = std::min(count - 1, first + static_cast<uint32_t>(rng() % 5));
      std::vector<uint32_t> removed(set.begin() + first, set.begin() + last + 1);
      std::sort(removed.begin(), removed.end());
      ASSERT_TRUE(RemoveRecords(book, first, last));
      for (size_t k = removed.size(); k-- > 0;) {
        if (removed[k] < model.size()) model.erase(model.begin() + removed[k]);
      }
      set.erase(set.begin() + first, set.begin() + last + 1);
      for (uint32_t& row : set) {
        row -= static_cast<uint32_t>(std::lower_bound(removed.begin(), removed.end(), row) -
                                     removed.begin());
      }
      CheckAgainstModel("remove records");
    } else if (op == 2 && fields < 12) {
      uint16_t at = static_cast<uint16_t>(rng() % (fields + 1));
      ASSERT_TRUE(InsertField(book, at, Field("F" + std::to_string(step), FieldType::kText)));
      for (Row& row : model) {
        Row next;
        for (auto& [c, t] : row) next[c >= at ? c + 1 : c] = t;
        row = next;
      }
      ++fields;
      set.assign(book.records.rows(), book.records.rows() + book.records.count());
      CheckAgainstModel("insert field");
    } else if (op == 3 && fields > 1) {
      uint16_t at = static_cast<uint16_t>(rng() % fields);
      ASSERT_TRUE(DeleteField(book, at));
      for (Row& row : model) {
        Row next;
        for (auto& [c, t] : row) {
          if (c != at) next[c > at ? c - 1 : c] = t;
        }
        row = next;
      }
      --fields;
      set.assign(book.records.rows(), book.records.rows() + book.records.count());
      CheckAgainstModel("delete field");
    } else if (op == 4 && fields > 1) {
      int a = static_cast<int>(rng() % fields);
      int b = a + (rng() % 2 ? 1 : -1);
      ASSERT_TRUE(SwapFields(book, a, b));
      if (b >= 0 && b < fields) {
        for (Row& row : model) {
          Row next;
          for (auto& [c, t] : row) next[c == a ? b : c == b ? a : c] = t;
          row = next;
        }
      }
      set.assign(book.records.rows(), book.records.rows() + book.records.count());
      CheckAgainstModel("swap fields");
    } else if (op == 5 && count > 2) {
      // A filter: a shuffled subset of the records, as a search would leave it.
      std::vector<uint32_t> subset = set;
      std::shuffle(subset.begin(), subset.end(), rng);
      subset.resize(1 + rng() % (subset.size() - 1));
      std::copy(subset.begin(), subset.end(), book.records.rows());
      book.records.SetCount(static_cast<uint32_t>(subset.size()));
      book.records.SetOrdered(false);
      book.records.RewriteFreeTail(FirstFreeRow(book.records, Data()));
      set = subset;
      CheckAgainstModel("filter");
    } else if (op == 6) {
      // The filter goes: the set is rebuilt in row order.
      ASSERT_TRUE(RefreshCurrentTable(book));
      set.clear();
      for (uint32_t i = 0; i < book.records.count(); ++i) set.push_back(i);
      while (!model.empty() && model.back().empty()) model.pop_back();
      CheckAgainstModel("refresh");
    }
  }
}

}  // namespace
}  // namespace kelpdex
