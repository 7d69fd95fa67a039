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

}  // namespace kelpdex
