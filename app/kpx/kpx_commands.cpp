#include "kpx/kpx_commands.h"

namespace kelpdex::kpx {

const std::vector<CommandInfo>& Commands() {
  static const std::vector<CommandInfo> commands = {
      {"new",
       "FILE --table NAME [--field NAME:TYPE[=FORMULA_OR_VALUE]]... "
       "[--format xml|xml.gz|binary|binary.gz]",
       "make a new database with one table (TYPE: Text, Link, Number, LongText, Files)", RunNew},
      {"info", "FILE [--json]", "show the format, tables, fields and record counts", RunInfo},
      {"dump",
       "FILE [--table NAME] [--tsv|--json] [--header] [--limit N] [--count] "
       "[--filter FIELD:OP:VALUE]... [--expr FIELD:FORMULA]... [--sort FIELD[:desc]]...",
       "print the records in force of a table as the grid shows them; the filters and sort "
       "keys given replace those in force for this command only",
       RunDump},
      {"set", "FILE --table NAME --record N --field NAME [--strict] VALUE",
       "type a value into a cell, recalculate the record and save; --strict fails where the "
       "cell would not hold the value as typed",
       RunSet},
      {"add-table", "FILE NAME [--field NAME:TYPE[=FORMULA_OR_VALUE]]...", "add a table and save",
       RunAddTable},
      {"add-field", "FILE --table NAME --field NAME:TYPE[=FORMULA_OR_VALUE] [--position N]",
       "add a field to a table and save", RunAddField},
      {"delete-field", "FILE --table NAME --field NAME", "delete a field and its values, and save",
       RunDeleteField},
      {"rename-table", "FILE --table OLD NEW", "rename a table and save", RunRenameTable},
      {"eval", "[--doc FILE [--table NAME] [--record N]] [--locale generic|current] FORMULA",
       "evaluate one formula, alone or against a record", RunEval},
      {"recalc", "FILE", "recompute the calculated fields of every table and save", RunRecalc},
      {"convert",
       "IN OUT [--from KIND] [--to KIND] [--table NAME] [--format xml|xml.gz|binary|binary.gz] "
       "[--separator comma|tab|semicolon|space|point|C] [--quote C] [--encoding utf8|ansi|oem] "
       "[--numbers] [--widths W1,W2,...] [--header] [--oem] [--as-tables]",
       "read a document or a text, xBase, Excel 2003 XML or SQLite file and write it under another "
       "name and kind (KIND: xml, xml.gz, binary, binary.gz, text, dbase3, dbase4, foxpro, "
       "clipper, "
       "excel-xml, sqlite; --as-tables reads each worksheet of a spreadsheet as a table)",
       RunConvert},
      {"filter",
       "FILE --table NAME (--field NAME (--op OP --value TEXT | --expr FORMULA | --clear) | "
       "--clear-all)",
       "set or clear a field's filter in force and save (OP: Pattern, Equal, NotEqual, Greater, "
       "Less, Between, And, Or)",
       RunFilter},
      {"key", "FILE --table NAME (add NAME | delete NAME | rename OLD NEW | select NAME)",
       "add, delete, rename or select a search key and save (select Default or None too)", RunKey},
      {"sort", "FILE --table NAME (--by FIELD[:desc]... | --none)",
       "store the sort keys, first most significant, or remove them, and save", RunSort},
      {"duplicates", "FILE --table NAME --fields F1[,F2...] [--count]",
       "print the records of every group of equal records (nothing is saved)", RunDuplicates},
      {"complement", "FILE --table NAME [--count]",
       "print the records the filters in force leave out (nothing is saved)", RunComplement},
      {"find", "FILE --table NAME TEXT [--match-case] [--whole-cell]",
       "print RECORD<TAB>FIELD for every cell whose shown text matches (*, ?, ~)", RunFind},
      {"replace", "FILE --table NAME --find X --with Y [--match-case] [--whole-cell]",
       "replace X by Y in every cell of the table, print the number of cells changed, and save",
       RunReplace},
      {"protect", "FILE --password-file P [--read-only-copy]",
       "protect a document with the password on the first line of P and save it in binary form; "
       "--read-only-copy lets anyone open its values, read-only, without the password",
       RunProtect},
      {"unprotect", "FILE --password-file P", "remove a document's password protection and save",
       RunUnprotect},
      {"locale", "[--choice N | --list]",
       "show the regional settings a locale choice gives on this machine", RunLocale},
      {"help-function", "NAME", "show a function's category, syntax, description and examples",
       RunHelpFunction},
      {"put-text", "FILE --table NAME --record N --field NAME (--from PATH | --text TEXT)",
       "store a Long Text value and save", RunPutText},
      {"get-text", "FILE --table NAME --record N --field NAME", "print a Long Text value as stored",
       RunGetText},
      {"attach", "FILE --table NAME --record N --field NAME PATH...",
       "add files to an Images/Files value and save", RunAttach},
      {"objects", "FILE --table NAME --record N --field NAME [--extract DIR]",
       "list the files of an Images/Files value (name, size, date), or copy them out", RunObjects},
      {"compact", "FILE", "rewrite the side file without the values replaced since", RunCompact},
  };
  return commands;
}

const CommandInfo* FindCommand(const std::string& name) {
  for (const CommandInfo& command : Commands()) {
    if (name == command.name) return &command;
  }
  return nullptr;
}

int UsageError(CommandContext& context, const CommandInfo& command, const std::string& message) {
  std::fprintf(context.err, "kpx: %s\nusage: kpx %s %s\n", message.c_str(), command.name,
               command.synopsis);
  return kExitUsage;
}

}  // namespace kelpdex::kpx
