// Handlers of the text family. Texts are single-byte in the document's code page; positions count
// from 1. Every handler broadcasts over arrays and ranges in its scalar parameters.
#pragma once

#include "formula/formula_engine.h"

namespace kelpdex::fn {

void Asc(FormulaEngine& e);
void Char(FormulaEngine& e);
void Clean(FormulaEngine& e);
void Code(FormulaEngine& e);
void Concatenate(FormulaEngine& e);
void Dollar(FormulaEngine& e);
void Exact(FormulaEngine& e);
void Find(FormulaEngine& e);
void Fixed(FormulaEngine& e);
void Left(FormulaEngine& e);
void Len(FormulaEngine& e);
void Lower(FormulaEngine& e);
void Mid(FormulaEngine& e);
void Proper(FormulaEngine& e);
void Replace(FormulaEngine& e);
void Rept(FormulaEngine& e);
void Right(FormulaEngine& e);
void Search(FormulaEngine& e);
void Substitute(FormulaEngine& e);
void Text(FormulaEngine& e);
void Trim(FormulaEngine& e);
void Upper(FormulaEngine& e);
void Value(FormulaEngine& e);

}  // namespace kelpdex::fn
