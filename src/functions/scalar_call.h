// The arguments of a handler whose parameters are all scalars (the text and date families):
// arity, broadcasting over arrays and ranges, and the reading of every argument through the
// frame's helpers, done once for all of them.
#pragma once

#include <cstdint>
#include <string_view>

#include "formula/formula_engine.h"
#include "functions/arguments.h"

namespace kelpdex {

struct ScalarCall {
  static constexpr int kMaxParameters = 4;
  int slot = 0;       // the first argument's slot, where the result goes
  int count = 0;      // the arguments read; optional ones left off at the end are not counted
  uint8_t error = 0;  // the largest error among them
  bool given[kMaxParameters] = {};  // false for an argument left empty, as in "left(x,)"
  std::string_view text[kMaxParameters];
  // Preset by the caller: an argument left off or empty keeps its default.
  double number[kMaxParameters] = {};
  int32_t integer[kMaxParameters] = {};
  // Text arguments are copied here, since the pool gives them back as they are read.
  char buffers[kMaxParameters][kTextArgSize];
};

// `kinds` has one letter per parameter: 't' text, 'n' number, 'i' whole number (any 32-bit value;
// the handler checks its own range). The first `required` must be present, else "#SYNTAX!"; extra
// arguments stay on the stack and end the formula in "#SYNTAX!" as with every fixed-arity handler.
// False when the call is already complete: a syntax error, or the handler was broadcast over the
// arrays among the arguments.
bool ReadScalarCall(FormulaEngine& engine, const char* kinds, int required, ScalarCall& call);

// Reads call.count arguments from call.slot on, by the letters of `kinds`, for a handler that has
// settled arity and broadcasting itself.
void ReadScalarSlots(FormulaEngine& engine, const char* kinds, ScalarCall& call);

// The short way for a handler whose result is its first argument's text cut or changed byte by
// byte (left, upper, trim...): when that text is a plain text on top of the pool and the
// arguments after it are whole numbers from 0 up, it is changed where it stands instead of being
// copied out and pushed back. Any other call takes the full frame, which then reads the
// arguments as loaded here.
struct TextInPlace {
  static constexpr int kMaxIntegers = 2;
  int slot = 0;          // the text's slot, which keeps the result
  char* text = nullptr;  // its bytes, on top of the pool
  size_t size = 0;
  int32_t integer[kMaxIntegers] = {};
};

// True when the call has exactly a text and `integers` whole numbers, as above.
bool ReadTextInPlace(FormulaEngine& engine, int integers, TextInPlace& call);
// Ends the call with the first `size` bytes of the text as the result.
void KeepTextInPlace(FormulaEngine& engine, const TextInPlace& call, size_t size);

}  // namespace kelpdex
