#include "functions/scalar_call.h"

#include <cstring>

namespace kelpdex {

bool ReadScalarCall(FormulaEngine& engine, const char* kinds, int required, ScalarCall& call) {
  int base = engine.Operand(engine.depth()).argumentBase;
  int given = engine.depth() - base;
  int parameters = static_cast<int>(std::strlen(kinds));
  if (given < required) {
    engine.SetSyntaxError();
    return false;
  }
  call.count = given < parameters ? given : parameters;
  if (BroadcastArrays(engine, call.count)) return false;
  call.slot = engine.depth() - call.count;
  ReadScalarSlots(engine, kinds, call);
  return true;
}

void ReadScalarSlots(FormulaEngine& engine, const char* kinds, ScalarCall& call) {
  // From the top down: a text argument is the top of the pool when its turn comes.
  for (int k = call.count - 1; k >= 0; --k) {
    int slot = call.slot + k;
    uint8_t error = 0;
    switch (kinds[k]) {
      case 't':
        error = GetTextArg(engine, slot, call.buffers[k], call.text[k]);
        break;
      case 'n':
        error = GetNumberArg(engine, slot, call.number[k]);
        break;
      default:
        error = GetIntegerArg(engine, slot, call.integer[k], -0x7FFFFFFF, 0x7FFFFFFF);
        break;
    }
    call.given[k] = engine.Operand(slot).kind != kind::kEmpty;
    call.error = LargerError(call.error, error);
  }
}

bool ReadTextInPlace(FormulaEngine& engine, int integers, TextInPlace& call) {
  int depth = engine.depth();
  int base = engine.Operand(depth).argumentBase;
  if (depth - base != integers + 1) return false;
  // From the top down, as the full frame reads: the text is loaded last, so it is the pool's top.
  for (int k = integers; k >= 1; --k) {
    FormulaValue& v = engine.Operand(base + k);
    engine.LoadReference(v);
    if (v.kind != kind::kNumber || v.errorCode != 0) return false;
    double rounded = RoundHalfAway(v.number);
    // Negatives, and numbers out of range, get their errors on the full frame.
    if (!(rounded >= 0 && rounded <= 2147483647.0)) return false;
    call.integer[k - 1] = static_cast<int32_t>(rounded);
  }
  FormulaValue& v = engine.Operand(base);
  engine.LoadReference(v);
  if (v.kind != kind::kString || v.errorCode != 0) return false;
  call.slot = base;
  call.text = engine.TopStringData();
  call.size = engine.TopString().size();
  return true;
}

void KeepTextInPlace(FormulaEngine& engine, const TextInPlace& call, size_t size) {
  engine.ShortenTopString(size);
  engine.SetDepth(call.slot);
  engine.Operand(call.slot) = FormulaValue();
  engine.Operand(call.slot).kind = kind::kString;
}

}  // namespace kelpdex
