// What the text and xBase imports share: a fresh workbook with one table, whose cells are
// appended in row and column order straight into blocks (no lookup per cell), and whose fields
// are written once the data has told their types.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "store/block_chain.h"
#include "store/catalogue.h"
#include "store/field_row.h"
#include "store/workbook.h"

namespace kelpdex {

// The table name an imported file gets: its name without the extension, or "Table" where that
// would be empty or "system".
std::string ImportTableName(const std::string& path);

// "field%d" with the number counted from 1.
std::string DefaultFieldName(uint16_t column);

// Cells of an import in key order. The chain is the data sheet's once Finish() has run; a builder
// dropped before that hands its blocks to the sheet anyway, so that they are freed with it.
class ImportedTable {
 public:
  // Makes the \system folder, the catalogue and the data sheet in `book`, which must be empty.
  // False with the book's errorCode set.
  bool Begin(Workbook& book, std::string_view name);
  ~ImportedTable();

  // Each false on out of memory (code 21 in the book). Rows and columns must rise.
  bool AppendText(uint32_t row, uint16_t column, std::string_view text, uint8_t extraTag = 0);
  bool AppendNumber(uint32_t row, uint16_t column, double value, uint8_t extraTag = 0);

  // Cells read apart, in a chain of their own with rows counted from 0, go behind the cells
  // appended so far, `rowOffset` rows down; the chain's blocks join this table's and `other` is
  // left empty.
  void AppendChain(BlockChain& other, uint32_t rowOffset);

  // Checks header names by the field dialog's rules on the empty table: trailing blanks are cut,
  // a name is made unique with a number behind it, and one the rules still refuse becomes
  // "field%d". `names` may be shorter than `fields` (the rest keep their names).
  void NameFields(const std::vector<std::string>& names, std::vector<FieldSpec>& fields);
  // Writes the catalogue rows and gives the cells to the data sheet; the table becomes current.
  bool Finish(const std::vector<FieldSpec>& fields);

  const TableSpec& table() const { return table_; }
  Workbook* book() const { return book_; }

 private:
  bool Append(uint32_t size);
  void HandOver();

  Workbook* book_ = nullptr;
  TableSpec table_;
  BlockChain chain_;
  uint8_t record_[kBlockPayload];
};

// The cells of the second half of a file read on a worker thread: a chain of its own, with its
// own spare blocks, handed to the table with AppendChain once both halves are read.
class ChainSink {
 public:
  ChainSink() = default;
  ~ChainSink() { pool_.GiveChain(chain_.Release(), true); }
  ChainSink(const ChainSink&) = delete;
  ChainSink& operator=(const ChainSink&) = delete;

  bool AppendText(uint32_t row, uint16_t column, std::string_view text, uint8_t extraTag = 0);
  bool AppendNumber(uint32_t row, uint16_t column, double value, uint8_t extraTag = 0);
  void Fail(ErrorCode code) { error_ = code; }
  ErrorCode error() const { return error_; }
  BlockChain& chain() { return chain_; }

 private:
  bool Append(uint32_t size);

  BlockChain chain_;
  BlockPool pool_;
  ErrorCode error_ = err::kNone;
  uint8_t record_[kBlockPayload];
};

// How a reader written for either target leaves its error: in the book, or in the sink.
inline void FailSink(ImportedTable& table, ErrorCode code) {
  table.book()->errorCode = code;
}
inline void FailSink(ChainSink& sink, ErrorCode code) {
  sink.Fail(code);
}

}  // namespace kelpdex
