// kpx eval: one formula, alone or against a record of a document.
#include <memory>
#include <string>
#include <vector>

#include "core/locale_settings.h"
#include "format/number_text.h"
#include "formula/formula_engine.h"
#include "functions/function_table.h"
#include "kpx/kpx_args.h"
#include "kpx/kpx_commands.h"
#include "kpx/kpx_document.h"
#include "platform/locale_provider.h"
#include "table/table_state.h"

namespace kelpdex::kpx {

namespace {

std::string ShownCell(const CellRecord* r) {
  if (r == nullptr) return std::string();
  if (cell::ErrorNibble(r) != 0) return std::string(ErrorLiteral(cell::ErrorNibble(r)));
  if (cell::IsText(r)) return std::string(cell::Text(r));
  if (cell::IsFormula(r)) return NumberToGeneral(cell::CachedNumber(r), &currentLocale);
  return NumberToGeneral(cell::Number(r), &currentLocale);
}

// The array on top of the engine: a line per row, its cells separated by tabs.
void PrintArray(FILE* out, FormulaEngine& engine) {
  CellStore& array = engine.TopArray();
  uint16_t lastColumn = 0;
  uint32_t lastRow = 0;
  array.LastUsed(nullptr, &lastColumn, nullptr, &lastRow);
  for (uint32_t row = 0; row <= lastRow; ++row) {
    std::string line;
    for (uint16_t column = 0; column <= lastColumn; ++column) {
      if (column) line += '\t';
      line += ToTerminal(ShownCell(array.GetCell(row, column)));
    }
    std::fprintf(out, "%s\n", line.c_str());
  }
}

// kpx prints numbers in the locale it evaluates in; the grid's "General" form otherwise.
struct LocaleScope {
  LocaleSettings saved = currentLocale;
  ~LocaleScope() { currentLocale = saved; }
};

}  // namespace

int RunEval(CommandContext& context) {
  const CommandInfo& self = *FindCommand("eval");
  Args args(context.words, {"doc", "table", "record", "locale"}, {});
  long record = 0;
  if (!args.ok() || !args.IntValue("record", 1, RecordSet::kEntries, record)) {
    return UsageError(context, self, args.error());
  }
  if (args.positionals().size() != 1 || args.positionals()[0].empty()) {
    return UsageError(context, self, "one FORMULA is needed");
  }
  std::string locale = args.Value("locale").value_or("generic");
  if (locale != "generic" && locale != "current") {
    return UsageError(context, self, "--locale is generic or current");
  }
  bool withDocument = args.Value("doc").has_value();
  if (!withDocument && (args.Value("table") || record != 0)) {
    return UsageError(context, self, "--table and --record need --doc");
  }
  LocaleScope scope;
  currentLocale = locale == "current" ? BuildLocaleSettings(2, platform::SystemLocaleProvider())
                                      : genericLocale;

  CommandDocument document(context);
  TableSpec table;
  uint32_t row = 0;
  if (withDocument) {
    if (!document.Open(*args.Value("doc"), true)) return kExitFailure;
    if (!document.SelectTable(args.Value("table").value_or(""), table)) return kExitFailure;
    uint32_t count = document.book.records.count();
    if (record == 0) record = 1;
    if (static_cast<uint32_t>(record) > count) {
      return Fail(context, "record " + std::to_string(record) + " is out of range (1 to " +
                               std::to_string(count) + ")");
    }
    row = document.book.records[static_cast<uint32_t>(record - 1)];
  } else {
    // A formula alone still needs a sheet to stand on.
    if (!CreateTable(document.book, "Eval") || !CurrentTable(document.book, table)) {
      return Fail(context, ErrorText(document.book.errorCode));
    }
  }
  std::string formula = FromTerminal(args.positionals()[0]);
  if (formula.empty() || (formula[0] != '=' && formula[0] != '+')) formula.insert(0, "=");

  std::vector<FormulaField> fields = FormulaFields(document.book.fieldDefaults);
  FormulaEngine engine(&document.book, table.data, &BuiltinFunctions());
  engine.SetFields(fields.data(), static_cast<uint16_t>(fields.size()));
  // A formula typed in the current notation is brought to the stored one first.
  if (locale == "current" && !engine.RewriteFormula(formula, true)) {
    return Fail(context, "the formula is too long");
  }
  uint16_t kindOfResult =
      engine.EvaluateFormula(formula, static_cast<uint16_t>(fields.size()), row);
  if (kindOfResult == kind::kArray && engine.arrayCount() > 0 && engine.Result().errorCode == 0) {
    PrintArray(context.out, engine);
  } else if (kindOfResult == kind::kNumber && engine.Result().errorCode == 0) {
    std::fprintf(context.out, "%s\n",
                 NumberToGeneral(engine.Result().number, &currentLocale).c_str());
  } else if (kindOfResult == 0 && engine.Result().errorCode == 0) {
    std::fprintf(context.out, "%s\n", std::string(ErrorLiteral(ferr::kSyntax)).c_str());
  } else {
    std::fprintf(context.out, "%s\n", ToTerminal(engine.ResultDisplay()).c_str());
  }
  return kExitSuccess;
}

}  // namespace kelpdex::kpx
