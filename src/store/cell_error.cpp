#include "store/cell_error.h"

namespace kelpdex {

std::string_view ErrorLiteral(uint8_t code) {
  static constexpr std::string_view kLiterals[] = {"#DIV/0!", "#NAME?", "#NULL!",  "#N/A!",
                                                   "#NUM!",   "#REF!",  "#VALUE!", "#MEMORY!",
                                                   "#FILL!",  "#CIRC!", "#IMPL!",  "#SYNTAX!"};
  if (code < 0x10 || code > 0xC0 || (code & 0x0F) != 0) return std::string_view();
  return kLiterals[code / 16 - 1];
}

}  // namespace kelpdex
