#include "functions/logical_functions.h"

#include <cmath>
#include <cstring>
#include <string>

#include "core/locale_settings.h"
#include "format/number_text.h"
#include "functions/arguments.h"
#include "store/range_cursor.h"
#include "store/workbook.h"

namespace kelpdex::fn {

namespace {

// A logical argument: rounded to a whole number, positive true, zero false; a negative number is
// "#VALUE!".
struct Truth {
  bool all = true;
  bool any = false;
  uint8_t error = 0;
};

void VisitTruth(void* context, double x) {
  auto* t = static_cast<Truth*>(context);
  double rounded = RoundHalfAway(x);
  if (rounded < 0) {
    t->error = LargerError(t->error, ferr::kValue);
    return;
  }
  t->all &= rounded > 0;
  t->any |= rounded > 0;
}

void RunAndOr(FormulaEngine& e, bool isAnd) {
  if (!HasArguments(e, 1)) return;
  int base = e.Operand(e.depth()).argumentBase;
  Truth truth;
  // Text that is no number is "#VALUE!" here; empty cells are skipped.
  uint8_t error = ForEachNumber(e, base, true, &truth, VisitTruth, ferr::kValue);
  error = LargerError(error, truth.error);
  SetNumberResult(e, base, (isAnd ? truth.all : truth.any) ? 1 : 0, error);
}

void RunConstant(FormulaEngine& e, double value, uint8_t error) {
  int base = e.Operand(e.depth()).argumentBase;
  if (e.depth() != base) {
    e.SetSyntaxError();
    return;
  }
  e.Operand(base) = FormulaValue::Number(value, error);
}

// The value of an informational function's argument, without coercion; references are read.
// `text` receives a string's text, which is then dropped from the pool.
FormulaValue TakeValue(FormulaEngine& e, int slot, std::string* text = nullptr) {
  FormulaValue& v = e.Operand(slot);
  e.LoadReference(v);
  FormulaValue copy = v;
  if (v.kind == kind::kString) {
    if (text != nullptr) text->assign(e.TopString());
    e.PopString();
  }
  return copy;
}

using Test = bool (*)(const FormulaValue& v, const std::string& text);

// The informational pattern: one argument, broadcast over arrays, answer 1 or 0.
void RunTest(FormulaEngine& e, Test test) {
  if (!HasArguments(e, 1) || BroadcastArrays(e, 1)) return;
  int slot = e.depth() - 1;
  std::string text;
  FormulaValue v = TakeValue(e, slot, &text);
  SetNumberResult(e, slot, test(v, text) ? 1 : 0, 0);
}

void RunParity(FormulaEngine& e, bool wantEven) {
  if (!HasArguments(e, 1) || BroadcastArrays(e, 1)) return;
  int slot = e.depth() - 1;
  double x = 0;
  uint8_t error = GetNumberArg(e, slot, x);
  double rounded = RoundHalfAway(x);
  bool even = std::fmod(rounded, 2) == 0;
  SetNumberResult(e, slot, even == wantEven ? 1 : 0, error);
}

}  // namespace

void And(FormulaEngine& e) {
  RunAndOr(e, true);
}
void Or(FormulaEngine& e) {
  RunAndOr(e, false);
}

void Not(FormulaEngine& e) {
  if (!HasArguments(e, 1) || BroadcastArrays(e, 1)) return;
  int slot = e.depth() - 1;
  double x = 0;
  uint8_t error = GetNumberArg(e, slot, x);
  double rounded = RoundHalfAway(x);
  if (error == 0 && rounded < 0) error = ferr::kValue;
  SetNumberResult(e, slot, rounded == 0 ? 1 : 0, error);
}

void True(FormulaEngine& e) {
  RunConstant(e, 1, 0);
}
void False(FormulaEngine& e) {
  RunConstant(e, 0, 0);
}
void NA(FormulaEngine& e) {
  RunConstant(e, 0, ferr::kNA);
}

void If(FormulaEngine& e) {
  int base = e.Operand(e.depth()).argumentBase;
  if (e.depth() - base != 3) {
    e.SetSyntaxError();
    return;
  }
  if (e.Operand(base).kind & kind::kArrayOrRange) {
    // Beside an array of tests, arrays among the choices go element by element too: the
    // broadcast cannot hand an array to each element's call as if it were a scalar.
    bool isArray[3];
    for (int i = 0; i < 3; ++i) isArray[i] = (e.Operand(base + i).kind & kind::kArrayOrRange) != 0;
    e.ApplyOverArray(isArray, base);
    return;
  }
  FormulaValue& test = e.Operand(base);
  FormulaValue& a = e.Operand(base + 1);
  FormulaValue& b = e.Operand(base + 2);
  // The three arguments own the top pool entries, the test's lowest; read its text in place.
  int strings = (a.kind == kind::kString) + (b.kind == kind::kString);
  if (test.kind == kind::kString) {
    std::string_view t = e.StringAt(e.stringCount() - strings - 1);
    double x = 0;
    test = test.errorCode == 0 && TextToNumber(t, currentLocale.decimalSeparator, x)
               ? FormulaValue::Number(x)
               : FormulaValue::Empty(test.errorCode != 0 ? test.errorCode : ferr::kNum);
    strings += 1;  // still on the pool, released below
  } else {
    e.LoadReference(test);
    if (test.kind == kind::kString) {
      // A reference that read a string: its text went on top.
      std::string_view t = e.TopString();
      double x = 0;
      test = TextToNumber(t, currentLocale.decimalSeparator, x) ? FormulaValue::Number(x)
                                                                : FormulaValue::Empty(ferr::kNum);
      e.PopString();
    }
  }
  uint8_t error = test.errorCode;
  double x = test.kind == kind::kNumber ? test.number : 0;
  double rounded = RoundHalfAway(x);
  if (error == 0 && (rounded < 0 || rounded > 2147483647.0)) error = ferr::kNum;
  bool pickA = rounded > 0;
  FormulaValue chosen = pickA ? a : b;
  FormulaValue other = pickA ? b : a;
  // Keep the chosen text aside, drop every string of the call, then put the chosen one back.
  char keep[FormulaEngine::kPoolBytes];
  size_t keepLength = 0;
  if (chosen.kind == kind::kString) {
    int index = pickA ? e.stringCount() - 1 - (b.kind == kind::kString) : e.stringCount() - 1;
    std::string_view t = e.StringAt(index);
    if (!t.empty()) std::memcpy(keep, t.data(), t.size());
    keepLength = t.size();
  }
  for (int i = 0; i < strings; ++i) e.PopString();
  if (other.kind == kind::kArray) {
    if (pickA || chosen.kind != kind::kArray) {
      e.PopArray();  // the unused array is the top one, or the only one
    } else {
      // b is chosen and a's array lies beneath it: move b's chain down.
      RowBlock* chain = e.TopArray().DetachChain(true);
      e.PopArray();
      e.PopArray();
      CellStore* slot = e.PushArray();
      if (slot != nullptr) slot->AdoptChain(chain);
    }
  }
  e.SetDepth(base);
  if (error != 0) {
    if (chosen.kind == kind::kArray) e.PopArray();
    e.Operand(base) = FormulaValue::Empty(error);
    return;
  }
  if (chosen.kind == kind::kString && !e.PushString(std::string_view(keep, keepLength))) {
    chosen = FormulaValue::Empty(ferr::kValue);
  }
  e.Operand(base) = chosen;
  if (chosen.kind == kind::kReference) e.LoadReference(e.Operand(base));
}

void CountBlank(FormulaEngine& e) {
  if (!HasArguments(e, 1)) return;
  int base = e.Operand(e.depth()).argumentBase;
  double blanks = 0;
  for (int slot = e.depth() - 1; slot >= base; --slot) {
    FormulaValue& v = e.Operand(slot);
    if (v.kind == kind::kArray || v.kind == kind::kRangeReference) {
      bool isArray = v.kind == kind::kArray;
      CellStore* cells = isArray ? &e.TopArray() : (v.sheet != nullptr ? &v.sheet->cells : nullptr);
      uint32_t row1 = isArray ? 0 : v.row1;
      uint16_t column1 = isArray ? 0 : v.column1;
      uint32_t row2 = v.row2;
      uint16_t column2 = v.column2;
      // Every position of the rectangle, less the cells that hold something.
      double positions = double(row2 - row1 + 1) * double(column2 - column1 + 1);
      double filled = 0;
      RangeCursor read(cells, row1, row2, column1, column2);
      while (CellRecord* r = read.Next()) filled += !(cell::IsText(r) && cell::Text(r).empty());
      blanks += positions - filled;
      e.Release(v);
      continue;
    }
    std::string text;
    FormulaValue value = TakeValue(e, slot, &text);
    bool blank = (value.kind == kind::kEmpty && value.errorCode == 0) ||
                 (value.kind == kind::kString && text.empty());
    blanks += blank;
  }
  SetNumberResult(e, base, blanks, 0);
}

void ErrorType(FormulaEngine& e) {
  if (!HasArguments(e, 1) || BroadcastArrays(e, 1)) return;
  int slot = e.depth() - 1;
  FormulaValue v = TakeValue(e, slot);
  // The error's place in the table, 1 for "#DIV/0!" to 12 for "#SYNTAX!".
  if (v.errorCode == 0) {
    SetNumberResult(e, slot, 0, ferr::kValue);
  } else {
    SetNumberResult(e, slot, v.errorCode / 16, 0);
  }
}

void IsBlank(FormulaEngine& e) {
  RunTest(e, [](const FormulaValue& v, const std::string& t) {
    return (v.kind == kind::kEmpty && v.errorCode == 0) || (v.kind == kind::kString && t.empty());
  });
}
void IsErr(FormulaEngine& e) {
  RunTest(e, [](const FormulaValue& v, const std::string&) {
    return v.errorCode != 0 && v.errorCode != ferr::kNA;
  });
}
void IsError(FormulaEngine& e) {
  RunTest(e, [](const FormulaValue& v, const std::string&) { return v.errorCode != 0; });
}
void IsNA(FormulaEngine& e) {
  RunTest(e, [](const FormulaValue& v, const std::string&) { return v.errorCode == ferr::kNA; });
}
void IsLogical(FormulaEngine& e) {
  RunTest(e, [](const FormulaValue& v, const std::string&) {
    return v.kind == kind::kNumber && v.errorCode == 0 && (v.number == 0 || v.number == 1);
  });
}
void IsText(FormulaEngine& e) {
  RunTest(e, [](const FormulaValue& v, const std::string&) {
    return v.kind == kind::kString && v.errorCode == 0;
  });
}
void IsNonText(FormulaEngine& e) {
  RunTest(e, [](const FormulaValue& v, const std::string&) {
    return !(v.kind == kind::kString && v.errorCode == 0);
  });
}
void IsNumber(FormulaEngine& e) {
  RunTest(e, [](const FormulaValue& v, const std::string& t) {
    double x = 0;
    if (v.errorCode != 0) return false;
    if (v.kind == kind::kNumber) return true;
    return v.kind == kind::kString && TextToNumber(t, currentLocale.decimalSeparator, x);
  });
}
void IsEven(FormulaEngine& e) {
  RunParity(e, true);
}
void IsOdd(FormulaEngine& e) {
  RunParity(e, false);
}

void IsRef(FormulaEngine& e) {
  if (!HasArguments(e, 1)) return;
  int slot = e.depth() - 1;
  FormulaValue& v = e.Operand(slot);
  bool isRef = v.kind == kind::kReference || v.kind == kind::kRangeReference;
  e.Release(v);
  SetNumberResult(e, slot, isRef ? 1 : 0, 0);
}

void N(FormulaEngine& e) {
  if (!HasArguments(e, 1) || BroadcastArrays(e, 1)) return;
  int slot = e.depth() - 1;
  std::string text;
  FormulaValue v = TakeValue(e, slot, &text);
  double x = 0;
  if (v.kind == kind::kNumber) {
    x = v.number;
  } else if (v.kind == kind::kString && v.errorCode == 0) {
    if (!TextToNumber(text, currentLocale.decimalSeparator, x)) x = 0;
  }
  SetNumberResult(e, slot, x, v.errorCode);
}

void Type(FormulaEngine& e) {
  if (!HasArguments(e, 1)) return;
  int slot = e.depth() - 1;
  FormulaValue& v = e.Operand(slot);
  double type = 1;
  if (v.kind == kind::kArray || v.kind == kind::kRangeReference) {
    type = 64;
    e.Release(v);
  } else {
    FormulaValue value = TakeValue(e, slot);
    if (value.errorCode != 0) {
      type = 16;
    } else if (value.kind == kind::kString) {
      type = 2;
    }
  }
  SetNumberResult(e, slot, type, 0);
}

}  // namespace kelpdex::fn
