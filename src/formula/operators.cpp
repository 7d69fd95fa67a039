// The operators of the formula language, and the broadcasting of operators and scalar functions
// over arrays and ranges.
#include <cmath>
#include <cstring>

#include "core/locale_settings.h"
#include "format/number_text.h"
#include "formula/formula_engine.h"
#include "store/range_cursor.h"
#include "store/workbook.h"
#include "text/code_page.h"

namespace kelpdex {

namespace {

bool IsWholeRows(const FormulaValue& v) {
  return v.column1 == 0 && v.column2 == kLastColumn;
}
bool IsWholeColumns(const FormulaValue& v) {
  return v.row1 == 0 && v.row2 == kLastRow;
}

uint32_t ExtentColumns(const FormulaValue& v) {
  return uint32_t(v.column2) - v.column1 + 1;
}
uint32_t ExtentRows(const FormulaValue& v) {
  return v.row2 - v.row1 + 1;
}

}  // namespace

std::string_view FormulaEngine::StringAt(int index) const {
  if (index < 0 || index >= stringCount_) return std::string_view();
  size_t start = poolStarts_[index];
  return std::string_view(pool_ + start, poolStarts_[index + 1] - start - 1);
}

void FormulaEngine::LoadPair(FormulaValue& a, FormulaValue& b, std::string_view& ta,
                             std::string_view& tb, int& owned) {
  int count = stringCount_;
  int indexB = b.kind == kind::kString ? count - 1 : -1;
  int indexA = a.kind == kind::kString ? (indexB >= 0 ? count - 2 : count - 1) : -1;
  LoadReference(a);
  if (a.kind == kind::kString && indexA < 0) indexA = stringCount_ - 1;
  LoadReference(b);
  if (b.kind == kind::kString && indexB < 0) indexB = stringCount_ - 1;
  owned = (indexA >= 0) + (indexB >= 0);
  ta = StringAt(indexA);
  tb = StringAt(indexB);
}

void FormulaEngine::CoerceText(FormulaValue& value, std::string_view text) {
  if (value.kind != kind::kString) return;
  if (value.errorCode != 0) {
    value = FormulaValue::Empty(value.errorCode);
    return;
  }
  double x = 0;
  // A text that is no number is "#NUM!" in arithmetic, not "#VALUE!".
  if (TextToNumber(text, currentLocale.decimalSeparator, x) && !IsBadNumber(x)) {
    value = FormulaValue::Number(x);
  } else {
    value = FormulaValue::Empty(ferr::kNum);
  }
}

void FormulaEngine::CoerceToNumber(FormulaValue& value) {
  LoadReference(value);
  if (value.kind != kind::kString) return;
  std::string_view text = TopString();
  CoerceText(value, text);
  PopString();
}

void FormulaEngine::ScalarText(const FormulaValue& value, std::string_view poolText, char* buffer,
                               std::string_view& out) const {
  if (value.errorCode != 0) {
    out = ErrorLiteral(value.errorCode);
  } else if (value.kind == kind::kString) {
    out = poolText;
  } else if (value.kind == kind::kNumber) {
    out = std::string_view(buffer, NumberToGeneral(value.number, buffer));
  } else {
    out = std::string_view();
  }
}

bool FormulaEngine::ApplyTop() {
  FormulaValue& top = operands_[depth_];
  uint16_t op = top.kind;
  if (op == kind::kFunction) {
    if (functions_ == nullptr || top.functionIndex >= functions_->count) {
      SetSyntaxError();
      return false;
    }
    functions_->entries[top.functionIndex].handler(*this);
    return !syntax_;
  }
  if (op == kind::kInvalid || op > kind::kLastOperator) {
    // A "(" marker that reached the evaluator: an unclosed parenthesis or a stray separator.
    SetSyntaxError();
    return false;
  }
  int needed = (op == kind::kNegate || op == kind::kPercent) ? 1 : 2;
  if (depth_ - 1 < needed) {
    if (op == kind::kIntersection) {
      --depth_;
      return true;
    }
    SetSyntaxError();
    return false;
  }
  int base = depth_ - needed;
  if (op != kind::kRange && op != kind::kIntersection && op != kind::kSheet) {
    bool isArray[2] = {false, false};
    bool any = false;
    for (int i = 0; i < needed; ++i) {
      isArray[i] = (operands_[base + i].kind & kind::kArrayOrRange) != 0;
      any |= isArray[i];
    }
    if (any) {
      ApplyOverArray(isArray, base);
      return !syntax_;
    }
  }
  --depth_;
  switch (op) {
    case kind::kAdd:
    case kind::kSubtract:
    case kind::kMultiply:
    case kind::kDivide:
    case kind::kPower:
      ApplyArithmetic(op);
      break;
    case kind::kConcatenate:
      ApplyConcatenate();
      break;
    case kind::kNegate:
    case kind::kPercent:
      ApplyUnary(op);
      break;
    case kind::kRange:
      ApplyRange();
      break;
    case kind::kIntersection:
      ApplyIntersection();
      break;
    case kind::kSheet:
      ApplySheet();
      break;
    default:
      ApplyComparison(op);
      break;
  }
  return !syntax_;
}

void FormulaEngine::ApplyArithmetic(uint16_t op) {
  FormulaValue& a = operands_[depth_ - 1];
  FormulaValue& b = operands_[depth_];
  std::string_view ta, tb;
  int owned = 0;
  LoadPair(a, b, ta, tb, owned);
  CoerceText(a, ta);
  CoerceText(b, tb);
  for (int i = 0; i < owned; ++i) PopString();
  uint8_t error = LargerError(a.errorCode, b.errorCode);
  if (!(a.kind & kind::kNumberOrEmpty) || !(b.kind & kind::kNumberOrEmpty)) {
    if (error == 0) error = ferr::kValue;
  }
  double x = a.kind == kind::kNumber ? a.number : 0;
  double y = b.kind == kind::kNumber ? b.number : 0;
  double result = 0;
  if (error == 0) {
    switch (op) {
      case kind::kAdd:
        result = x + y;
        break;
      case kind::kSubtract:
        result = x - y;
        break;
      case kind::kMultiply:
        result = x * y;
        break;
      case kind::kDivide:
        if (y == 0) {
          error = ferr::kDivZero;
        } else {
          result = x / y;
        }
        break;
      default:
        result = std::pow(x, y);
        break;
    }
    if (error == 0 && IsBadNumber(result)) error = ferr::kNum;
  }
  --depth_;
  operands_[depth_] = FormulaValue::Number(error == 0 ? result : 0, error);
}

void FormulaEngine::ApplyUnary(uint16_t op) {
  FormulaValue& a = operands_[depth_];
  CoerceToNumber(a);
  uint8_t error = a.errorCode;
  if (!(a.kind & kind::kNumberOrEmpty) && error == 0) error = ferr::kValue;
  double x = a.kind == kind::kNumber ? a.number : 0;
  double result = op == kind::kNegate ? -x : x * 0.01;
  if (error == 0 && IsBadNumber(result)) error = ferr::kNum;
  operands_[depth_] = FormulaValue::Number(error == 0 ? result : 0, error);
}

bool FormulaEngine::ConcatenateInPool(std::string_view ta, const FormulaValue& b,
                                      std::string_view tb, int owned) {
  // Only where the left text is the top of the pool, or the one just under the right text: the
  // result then takes the left text's place without being copied out and back.
  if (ta.data() == nullptr) return false;
  size_t startA = static_cast<size_t>(ta.data() - pool_);
  size_t endA = startA + ta.size();  // where the terminator stands
  size_t top = poolStarts_[stringCount_];
  if (b.kind == kind::kString) {
    if (owned != 2 || tb.data() != pool_ + endA + 1 || top != endA + 1 + tb.size() + 1) {
      return false;
    }
    if (ta.size() + tb.size() > kMaxConcatenation) return false;
    std::memmove(pool_ + endA, tb.data(), tb.size());
    --stringCount_;
    size_t end = endA + tb.size();
    pool_[end] = '\0';
    poolStarts_[stringCount_] = static_cast<uint16_t>(end + 1);
    return true;
  }
  if (owned != 1 || top != endA + 1) return false;
  char number[32];
  std::string_view right;
  ScalarText(b, std::string_view(), number, right);
  return AppendToTopString(right);
}

bool FormulaEngine::AppendToTopString(std::string_view text) {
  size_t end = poolStarts_[stringCount_] - 1u;  // where the top entry's terminator stands
  size_t size = end - poolStarts_[stringCount_ - 1];
  if (size + text.size() > kMaxConcatenation ||
      end + text.size() + 1 > static_cast<size_t>(kPoolBytes)) {
    return false;
  }
  if (!text.empty()) std::memcpy(pool_ + end, text.data(), text.size());
  pool_[end + text.size()] = '\0';
  poolStarts_[stringCount_] = static_cast<uint16_t>(end + text.size() + 1);
  return true;
}

void FormulaEngine::ApplyConcatenate() {
  FormulaValue& a = operands_[depth_ - 1];
  FormulaValue& b = operands_[depth_];
  std::string_view ta, tb;
  int owned = 0;
  LoadPair(a, b, ta, tb, owned);
  uint8_t error = LargerError(a.errorCode, b.errorCode);
  if (error == 0 && a.kind == kind::kString && ConcatenateInPool(ta, b, tb, owned)) {
    --depth_;
    operands_[depth_] = FormulaValue();
    operands_[depth_].kind = kind::kString;
    return;
  }
  char joined[kMaxConcatenation];
  size_t length = 0;
  if (error == 0) {
    char numberA[32], numberB[32];
    std::string_view left, right;
    ScalarText(a, ta, numberA, left);
    ScalarText(b, tb, numberB, right);
    if (left.size() + right.size() > kMaxConcatenation) {
      error = ferr::kValue;
    } else {
      // An empty view may carry no pointer at all, which memcpy must not be given.
      if (!left.empty()) std::memcpy(joined, left.data(), left.size());
      if (!right.empty()) std::memcpy(joined + left.size(), right.data(), right.size());
      length = left.size() + right.size();
    }
  }
  for (int i = 0; i < owned; ++i) PopString();
  --depth_;
  if (error != 0) {
    operands_[depth_] = FormulaValue::Empty(error);
  } else if (PushString(std::string_view(joined, length))) {
    operands_[depth_] = FormulaValue();
    operands_[depth_].kind = kind::kString;
  } else {
    operands_[depth_] = FormulaValue::Empty(ferr::kValue);
  }
}

void FormulaEngine::ApplyComparison(uint16_t op) {
  FormulaValue& a = operands_[depth_ - 1];
  FormulaValue& b = operands_[depth_];
  std::string_view ta, tb;
  int owned = 0;
  LoadPair(a, b, ta, tb, owned);
  uint8_t error = LargerError(a.errorCode, b.errorCode);
  int order = 0;
  if (error == 0) {
    if ((a.kind & kind::kNumberOrEmpty) && (b.kind & kind::kNumberOrEmpty)) {
      double x = a.kind == kind::kNumber ? a.number : 0;
      double y = b.kind == kind::kNumber ? b.number : 0;
      order = x < y ? -1 : (x > y ? 1 : 0);
    } else if ((a.kind & kind::kStringOrEmpty) && (b.kind & kind::kStringOrEmpty)) {
      std::string_view x = a.kind == kind::kString ? ta : std::string_view();
      std::string_view y = b.kind == kind::kString ? tb : std::string_view();
      order = text::CompareNoCase(x, y);
    } else {
      error = ferr::kValue;
    }
  }
  for (int i = 0; i < owned; ++i) PopString();
  bool result = ComparisonHolds(op, order);
  --depth_;
  operands_[depth_] = FormulaValue::Number(error == 0 && result ? 1 : 0, error);
}

void FormulaEngine::ApplyRange() {
  FormulaValue& a = operands_[depth_ - 1];
  FormulaValue& b = operands_[depth_];
  FormulaValue result;
  if (a.kind == kind::kReference && b.kind == kind::kReference) {
    result.kind = kind::kRangeReference;
    result.sheet = a.sheet;
    result.column1 = a.column;
    result.row1 = a.row;
    result.column2 = b.column;
    result.row2 = b.row;
    result.flags1 = a.flags;
    result.flags2 = b.flags;
    result.errorCode = LargerError(a.errorCode, b.errorCode);
    if (a.column > b.column || a.row > b.row) result = FormulaValue::Empty(ferr::kRef);
  } else if (a.kind == kind::kRangeReference && b.kind == kind::kRangeReference) {
    result = a;
    if (IsWholeRows(a) && IsWholeRows(b)) {
      result.row1 = std::min(a.row1, b.row1);
      result.row2 = std::max(a.row2, b.row2);
    } else if (IsWholeColumns(a) && IsWholeColumns(b)) {
      result.column1 = std::min(a.column1, b.column1);
      result.column2 = std::max(a.column2, b.column2);
    } else {
      result = FormulaValue::Empty(ferr::kRef);
    }
  } else {
    uint8_t error = LargerError(a.errorCode, b.errorCode);
    Release(b);
    Release(a);
    result = FormulaValue::Empty(error != 0 ? error : ferr::kValue);
  }
  --depth_;
  operands_[depth_] = result;
}

void FormulaEngine::ApplyIntersection() {
  FormulaValue& a = operands_[depth_ - 1];
  FormulaValue& b = operands_[depth_];
  if (a.kind != kind::kRangeReference || b.kind != kind::kRangeReference) {
    // Not two ranges: the right operand is dropped and the left one stands.
    Release(b);
    --depth_;
    return;
  }
  FormulaValue result = FormulaValue::Empty(ferr::kNull);
  uint16_t c1 = std::max(a.column1, b.column1), c2 = std::min(a.column2, b.column2);
  uint32_t r1 = std::max(a.row1, b.row1), r2 = std::min(a.row2, b.row2);
  if (a.sheet == b.sheet && c1 <= c2 && r1 <= r2) {
    result = a;
    result.column1 = c1;
    result.column2 = c2;
    result.row1 = r1;
    result.row2 = r2;
    result.flags1 = result.flags2 = rflag::kAbsolute;
    if (c1 == c2 && r1 == r2) {
      result.kind = kind::kReference;
      result.column = c1;
      result.row = r1;
      result.flags = rflag::kAbsolute;
    }
  }
  --depth_;
  operands_[depth_] = result;
}

void FormulaEngine::ApplySheet() {
  FormulaValue& a = operands_[depth_ - 1];
  FormulaValue& b = operands_[depth_];
  bool pathOk = a.kind == kind::kString && (a.errorCode == 0 || a.errorCode == ferr::kName);
  bool targetOk = b.kind == kind::kReference || b.kind == kind::kRangeReference;
  if (!pathOk || !targetOk) {
    uint8_t error = LargerError(pathOk ? uint8_t{0} : a.errorCode, b.errorCode);
    Release(b);
    Release(a);
    --depth_;
    operands_[depth_] = FormulaValue::Empty(error != 0 ? error : ferr::kValue);
    return;
  }
  std::string path(TopString());
  PopString();
  size_t first = path.find_first_not_of(' ');
  size_t last = path.find_last_not_of(' ');
  path = first == std::string::npos ? std::string() : path.substr(first, last - first + 1);
  FormulaValue target = b;
  --depth_;
  if (!path.empty() && path[0] == '[') {
    operands_[depth_] = ReadExternal(path, target);
    return;
  }
  if (path.empty() || path[0] != '\\') {
    std::string folder;
    if (workbook_ != nullptr && sheet_ != nullptr) workbook_->PathOfNode(sheet_, folder, false);
    path = folder + "\\" + path;
  }
  WorkbookNode* node = workbook_ != nullptr ? workbook_->FindNode(path) : nullptr;
  operands_[depth_] =
      node != nullptr ? ReadTarget(*workbook_, node, target) : FormulaValue::Empty(ferr::kName);
}

namespace {
ExternalDocuments* externalDocuments = nullptr;
}  // namespace

void SetExternalDocuments(ExternalDocuments* documents) {
  externalDocuments = documents;
}

Workbook* FormulaEngine::ExternalDocument(const std::string& file) {
  for (const OpenedDocument& opened : externals_) {
    if (opened.file == file) return opened.book.get();
  }
  std::unique_ptr<Workbook> book;
  if (externalDocuments != nullptr) {
    book =
        externalDocuments->Open(file, workbook_ != nullptr ? workbook_->fileName : std::string());
  }
  externals_.push_back({file, std::move(book)});
  return externals_.back().book.get();
}

FormulaValue FormulaEngine::ReadExternal(const std::string& path, const FormulaValue& target) {
  // "[file]path": the file name in brackets, trailing blanks cut; the sheet path behind it.
  size_t close = path.find(']');
  if (close == std::string::npos) return FormulaValue::Empty(ferr::kRef);
  std::string file = path.substr(1, close - 1);
  while (!file.empty() && file.back() == ' ') file.pop_back();
  std::string sheetPath = path.substr(close + 1);
  if (file.empty() || sheetPath.size() > 256) return FormulaValue::Empty(ferr::kRef);
  std::string folder;
  if (workbook_ != nullptr && sheet_ != nullptr) workbook_->PathOfNode(sheet_, folder, false);
  Workbook* other = ExternalDocument(file);
  if (other == nullptr) return FormulaValue::Empty(ferr::kRef);
  if (sheetPath.empty() || sheetPath[0] != '\\') sheetPath = folder + "\\" + sheetPath;
  WorkbookNode* node = other->FindNode(sheetPath);
  if (node == nullptr) return FormulaValue::Empty(ferr::kRef);
  // The value is copied into this engine, so the other document is only read, never referred to.
  FormulaValue value = ReadTarget(*other, node, target);
  if (value.kind == kind::kReference) LoadReference(value);
  if (value.kind == kind::kRangeReference) RangeToArray(value);
  return value;
}

FormulaValue FormulaEngine::ReadTarget(Workbook& /*book*/, WorkbookNode* node,
                                       const FormulaValue& target) {
  if (node->IsWorksheet()) {
    FormulaValue moved = target;
    moved.sheet = static_cast<Worksheet*>(node);
    return moved;
  }
  // A folder: the same cells of every worksheet directly inside it, stacked into one array.
  FormulaValue range = target;
  if (range.kind == kind::kReference) {
    range.column1 = range.column2 = range.column;
    range.row1 = range.row2 = range.row;
  }
  uint32_t rows = ExtentRows(range);
  CellStore* cells = PushArray();
  if (cells == nullptr) return FormulaValue::Empty(ferr::kMemory);
  FormulaValue result;
  result.kind = kind::kArray;
  result.flags1 = result.flags2 = rflag::kAbsolute;
  result.column2 = static_cast<uint16_t>(ExtentColumns(range) - 1);
  CellCursor write;
  uint32_t stacked = 0;
  for (WorkbookNode* n = node->next; n != nullptr && n->level > node->level; n = n->next) {
    if (n->level != node->level + 1 || !n->IsWorksheet()) continue;
    if (uint64_t(stacked) + rows > kRowLimit) {
      result.errorCode = ferr::kRef;
      break;
    }
    RangeCursor read(&static_cast<Worksheet*>(n)->cells, range.row1, range.row2, range.column1,
                     range.column2);
    if (!CopyRebased(read, *cells, write, stacked)) result.errorCode = ferr::kMemory;
    stacked += rows;
  }
  result.row2 = stacked > 0 ? stacked - 1 : 0;
  return result;
}

void FormulaEngine::ApplyOverArray(const bool* isArray, int base) {
  FormulaValue op = operands_[depth_];
  int count = depth_ - base;
  uint32_t columns = 0, rows = 0;
  bool anyScalar = false;
  bool shapeOk = true;
  for (int i = 0; i < count; ++i) {
    if (!isArray[i]) {
      anyScalar = true;
      continue;
    }
    const FormulaValue& v = operands_[base + i];
    uint32_t c = ExtentColumns(v), r = ExtentRows(v);
    if (columns == 0) {
      columns = c;
      rows = r;
    } else if (c != columns || r != rows) {
      shapeOk = false;
    }
  }
  if (!shapeOk) {
    for (int i = count - 1; i >= 0; --i) Release(operands_[base + i]);
    depth_ = base;
    operands_[base] = FormulaValue::Empty(ferr::kValue);
    return;
  }

  // Scalars are kept aside with their texts and put back for every element.
  FormulaValue scalars[kStackSize];
  char scalarText[kPoolBytes];
  size_t textStart[kStackSize] = {};
  size_t textLength[kStackSize] = {};
  size_t used = 0;
  int stringsOwned = 0;
  for (int i = 0; i < count; ++i) stringsOwned += operands_[base + i].kind == kind::kString;
  int firstString = stringCount_ - stringsOwned;
  for (int i = 0, s = 0; i < count; ++i) {
    scalars[i] = operands_[base + i];
    if (!isArray[i] && scalars[i].kind == kind::kString) {
      std::string_view t = StringAt(firstString + s++);
      if (!t.empty()) std::memcpy(scalarText + used, t.data(), t.size());
      textStart[i] = used;
      textLength[i] = t.size();
      used += t.size();
    }
  }
  for (int i = 0; i < stringsOwned; ++i) PopString();

  // A cursor on each array or range; arrays are the top entries of the array list, in order.
  RangeCursor cursors[kStackSize];
  int arraysOwned = 0;
  for (int i = 0; i < count; ++i) arraysOwned += operands_[base + i].kind == kind::kArray;
  int firstArray = arrayCount_ - arraysOwned;
  for (int i = 0, k = 0; i < count; ++i) {
    if (!isArray[i]) continue;
    const FormulaValue& v = operands_[base + i];
    CellStore* store = v.kind == kind::kArray ? arrays_[firstArray + k++].get()
                                              : (v.sheet != nullptr ? &v.sheet->cells : nullptr);
    uint32_t row1 = v.kind == kind::kArray ? 0 : v.row1;
    uint16_t column1 = v.kind == kind::kArray ? 0 : v.column1;
    cursors[i].Open(store, row1, row1 + rows - 1, column1,
                    static_cast<uint16_t>(column1 + columns - 1));
    cursors[i].Next();
  }

  CellStore* out = PushArray();
  uint8_t resultError = out == nullptr ? ferr::kMemory : uint8_t{0};
  CellCursor write;
  uint8_t record[kBlockPayload];
  uint64_t position = 0;
  uint64_t last = (uint64_t(rows - 1) << 16) | (columns - 1);
  while (out != nullptr && !syntax_) {
    if (!anyScalar) {
      // Only the positions where some operand has a cell.
      bool found = false;
      uint64_t smallest = 0;
      for (int i = 0; i < count; ++i) {
        uint64_t key;
        if (isArray[i] && cursors[i].Position(key) && (!found || key < smallest)) {
          smallest = key;
          found = true;
        }
      }
      if (!found) break;
      position = smallest;
    } else if (position > last) {
      break;
    }
    depth_ = base - 1;
    for (int i = 0; i < count; ++i) {
      FormulaValue element;
      uint64_t key;
      if (!isArray[i]) {
        element = scalars[i];
        if (element.kind == kind::kString &&
            !PushString(std::string_view(scalarText + textStart[i], textLength[i]))) {
          element = FormulaValue::Empty(ferr::kValue);
        }
      } else if (cursors[i].Position(key) && key == position) {
        CellRecord* r = cursors[i].current();
        if (cell::IsText(r)) {
          element.kind = PushString(cell::Text(r)) ? kind::kString : kind::kEmpty;
          element.errorCode = element.kind == kind::kString ? 0 : ferr::kValue;
        } else {
          element =
              FormulaValue::Number(cell::IsNumber(r) ? cell::Number(r) : cell::CachedNumber(r), 0);
        }
        element.errorCode = LargerError(element.errorCode, cell::ErrorNibble(r));
        cursors[i].Next();
      } else {
        element = FormulaValue::Empty();
      }
      operands_[++depth_] = element;
    }
    operands_[++depth_] = op;
    ApplyTop();
    if (syntax_) break;
    FormulaValue& v = operands_[base];
    uint32_t row = static_cast<uint32_t>(position >> 16);
    uint16_t column = static_cast<uint16_t>(position & 0xFFFF);
    uint32_t size = 0;
    if (v.kind == kind::kString) {
      size = cell::EncodeText(record, row, column, TopString(), v.errorCode);
      PopString();
    } else if (v.kind == kind::kNumber || v.errorCode != 0) {
      size = cell::EncodeNumber(record, row, column, v.kind == kind::kNumber ? v.number : 0,
                                v.errorCode);
    } else if (v.kind == kind::kArray) {
      PopArray();
      size = cell::EncodeNumber(record, row, column, 0, ferr::kValue);
    }
    if (size > 0 && !out->PutCell(record, &write)) resultError = ferr::kMemory;
    if (anyScalar) {
      uint32_t nextColumn = column + 1;
      position =
          nextColumn < columns ? (uint64_t(row) << 16) | nextColumn : (uint64_t(row + 1) << 16);
    }
  }
  // The result replaces the operands' arrays on the array list.
  if (out != nullptr) {
    RowBlock* chain = out->DetachChain(true);
    --arrayCount_;
    while (arrayCount_ > firstArray) PopArray();
    CellStore* slot = PushArray();
    if (slot != nullptr) slot->AdoptChain(chain);
  }
  depth_ = base;
  FormulaValue result = FormulaValue::Array(rows, static_cast<uint16_t>(columns));
  result.errorCode = resultError;
  if (out == nullptr) result = FormulaValue::Empty(ferr::kMemory);
  operands_[base] = result;
}

}  // namespace kelpdex
