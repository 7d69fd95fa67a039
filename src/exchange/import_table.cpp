#include "exchange/import_table.h"

#include <cstdio>
#include <unordered_set>

#include "platform/os.h"
#include "store/cell_record.h"
#include "table/schema.h"
#include "table/table_state.h"
#include "text/code_page.h"

namespace kelpdex {

std::string ImportTableName(const std::string& path) {
  std::string name = platform::FileNameOf(path);
  size_t dot = name.rfind('.');
  if (dot != std::string::npos && dot > 0) name.resize(dot);
  std::string clean;
  for (char c : name) {
    if (c != '\\') clean += c;
  }
  if (clean.size() > kTableNameMax) clean.resize(kTableNameMax);
  // "system" names the folder of the catalogues; a table of that name would be hidden by it.
  if (clean.empty() || text::EqualNoCase(clean, "system")) return "Table";
  return clean;
}

std::string DefaultFieldName(uint16_t column) {
  char name[16];
  std::snprintf(name, sizeof name, "field%d", column + 1);
  return name;
}

bool ImportedTable::Begin(Workbook& book, std::string_view name) {
  book_ = &book;
  if (!CreateTable(book, name)) return false;
  return MakeTableSpec(book, name, table_);
}

ImportedTable::~ImportedTable() {
  HandOver();
}

void ImportedTable::HandOver() {
  // Adopting an empty chain would put the store's own blocks on its free list.
  if (chain_.head() == nullptr) return;
  if (table_.data != nullptr) {
    table_.data->cells.AdoptChain(chain_.Release());
  } else {
    chain_.Release();
  }
}

bool ImportedTable::Append(uint32_t size) {
  if (chain_.AppendRecord(record_, size, [this] { return table_.data->cells.TakeSpareBlock(); })) {
    return true;
  }
  book_->errorCode = err::kOutOfMemory;
  return false;
}

bool ImportedTable::AppendText(uint32_t row, uint16_t column, std::string_view text,
                               uint8_t extraTag) {
  if (text.size() > kBlockPayload - cell::kTextHeader) {
    text = text.substr(0, kBlockPayload - cell::kTextHeader);
  }
  return Append(cell::EncodeText(record_, row, column, text, extraTag));
}

bool ImportedTable::AppendNumber(uint32_t row, uint16_t column, double value, uint8_t extraTag) {
  return Append(cell::EncodeNumber(record_, row, column, value, extraTag));
}

bool ChainSink::AppendText(uint32_t row, uint16_t column, std::string_view text, uint8_t extraTag) {
  if (text.size() > kBlockPayload - cell::kTextHeader) {
    text = text.substr(0, kBlockPayload - cell::kTextHeader);
  }
  return Append(cell::EncodeText(record_, row, column, text, extraTag));
}

bool ChainSink::AppendNumber(uint32_t row, uint16_t column, double value, uint8_t extraTag) {
  return Append(cell::EncodeNumber(record_, row, column, value, extraTag));
}

bool ChainSink::Append(uint32_t size) {
  if (chain_.AppendRecord(record_, size, [this] { return pool_.Take(); })) return true;
  error_ = err::kOutOfMemory;
  return false;
}

void ImportedTable::AppendChain(BlockChain& other, uint32_t rowOffset) {
  RowBlock* block = other.head();
  other.Release();
  while (block != nullptr) {
    RowBlock* next = block->next;
    for (uint32_t at = 0; at < block->used; at += cell::Size(block->data + at)) {
      cell::SetRow(block->data + at, cell::Row(block->data + at) + rowOffset);
    }
    chain_.Append(block);
    block = next;
  }
}

void ImportedTable::NameFields(const std::vector<std::string>& names,
                               std::vector<FieldSpec>& fields) {
  size_t count = names.size() < fields.size() ? names.size() : fields.size();
  std::vector<FieldEdit> edits(count);
  std::unordered_set<std::string> taken;
  // The default names of the fields without a header name are taken already.
  for (size_t i = count; i < fields.size(); ++i) taken.insert(text::Upper(fields[i].name));
  for (size_t i = 0; i < count; ++i) {
    std::string name = names[i];
    while (!name.empty() && name.back() == ' ') name.pop_back();
    if (name.size() > kFieldTextMax) name.resize(kFieldTextMax);
    if (name.empty() || !text::IsCharAlpha(name[0])) name = fields[i].name;
    std::string base = name;
    for (int n = 2; !taken.insert(text::Upper(name)).second; ++n) {
      std::string suffix = "_" + std::to_string(n);
      name = base.substr(0, kFieldTextMax - suffix.size()) + suffix;
    }
    edits[i].name = name;
    edits[i].type = fields[i].type;
    edits[i].link = fields[i].link;
  }
  // The dialog's own checks have the last word; a name they refuse falls back to its number.
  std::vector<FieldSpec> rows;
  for (size_t round = 0; round <= count; ++round) {
    size_t refused = count;
    FieldCheck check = CheckNewFields(table_, edits, rows, refused);
    if (check.ok() || refused >= count) break;
    std::string fallback = DefaultFieldName(static_cast<uint16_t>(refused));
    // The number's own name may be taken by a header name that came before.
    edits[refused].name =
        edits[refused].name == fallback ? fallback + "_" + std::to_string(round + 2) : fallback;
  }
  for (size_t i = 0; i < count; ++i) fields[i].name = edits[i].name;
}

bool ImportedTable::Finish(const std::vector<FieldSpec>& fields) {
  if (!fields.empty() && !InsertFields(*book_, 0, fields)) return false;
  HandOver();
  book_->currentSheet = table_.data;
  return RefreshCurrentTable(*book_);
}

}  // namespace kelpdex
