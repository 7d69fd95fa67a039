// kpx convert: a document or a foreign file read and written under another name, in a native form
// or as a text, xBase, Excel 2003 XML or SQLite file, the side file going with it.
#include <string>

#include "document/exchange_files.h"
#include "exchange/excel_xml.h"
#include "exchange/sqlite.h"
#include "exchange/text_separators.h"
#include "kpx/kpx_args.h"
#include "kpx/kpx_commands.h"
#include "kpx/kpx_document.h"
#include "text/code_page.h"
#include "text/utf8.h"

namespace kelpdex::kpx {

namespace {

// What a file is read or written as: a native form (kNative with its format) or a foreign kind.
struct FileKind {
  DocumentKind kind = DocumentKind::kNative;
  NativeFormat format = NativeFormat::kDefault;
};

std::optional<FileKind> ParseKind(const std::string& name) {
  if (std::optional<NativeFormat> format = ParseFormatOption(name)) {
    return FileKind{DocumentKind::kNative, *format};
  }
  if (name == "text") return FileKind{DocumentKind::kText};
  if (name == "dbase3") return FileKind{DocumentKind::kDbase3};
  if (name == "dbase4") return FileKind{DocumentKind::kDbase4};
  if (name == "foxpro") return FileKind{DocumentKind::kFoxPro};
  if (name == "clipper") return FileKind{DocumentKind::kClipper};
  if (name == "excel-xml") return FileKind{DocumentKind::kExcelXml};
  if (name == "sqlite") return FileKind{DocumentKind::kSqlite};
  return std::nullopt;
}

std::string Extension(const std::string& path) {
  size_t slash = path.find_last_of("/\\");
  size_t dot = path.rfind('.');
  if (dot == std::string::npos || (slash != std::string::npos && dot < slash)) return "";
  return text::Lower(path.substr(dot));
}

// By the extension: text, xBase and Excel 2003 XML files are foreign; anything else is native,
// told by its bytes on reading. An .xml file to read is SpreadsheetML or a native document by its
// root element; one to write is SpreadsheetML.
FileKind KindOfPath(const std::string& path, bool reading) {
  std::string extension = Extension(path);
  if (extension == ".csv" || extension == ".txt" || extension == ".tsv") {
    return FileKind{DocumentKind::kText};
  }
  if (extension == ".dbf") return FileKind{DocumentKind::kDbase3};
  if (extension == ".sqlite" || extension == ".db" || (reading && IsSqliteFile(path))) {
    return FileKind{DocumentKind::kSqlite};
  }
  if (extension == ".xml" && (!reading || SniffXmlRoot(path) != XmlRoot::kNative)) {
    return FileKind{DocumentKind::kExcelXml};
  }
  return FileKind{};
}

// The text options of the command line over `options`; false with `why` for a wrong value.
bool ReadTextOptions(const Args& args, const std::string& path, TextFileOptions& options,
                     std::string& why) {
  // A tab-separated file says so by its name.
  options.separator = Extension(path) == ".tsv" ? '\t' : ',';
  if (std::optional<std::string> separator = args.Value("separator")) {
    if (!SeparatorOfName(*separator, options.separator)) {
      why = "the separator is comma, tab, point, semicolon, space or one character";
      return false;
    }
  }
  if (std::optional<std::string> quote = args.Value("quote")) {
    if (quote->size() != 1) {
      why = "the quote is one character";
      return false;
    }
    options.quote = (*quote)[0];
  }
  if (std::optional<std::string> encoding = args.Value("encoding")) {
    if (*encoding == "utf8") {
      options.encoding = TextEncoding::kUtf8;
    } else if (*encoding == "ansi") {
      options.encoding = TextEncoding::kAnsi;
    } else if (*encoding == "oem") {
      options.encoding = TextEncoding::kOem;
    } else {
      why = "the encoding is utf8, ansi or oem";
      return false;
    }
  }
  if (std::optional<std::string> widths = args.Value("widths")) {
    if (!ParseTextWidths(*widths, options)) {
      why = "the widths are whole numbers from 1 to 65535, separated by commas";
      return false;
    }
    options.fixedWidths = true;
  }
  options.numbers = args.Flag("numbers");
  options.headerLine = args.Flag("header");
  return true;
}

}  // namespace

int RunConvert(CommandContext& context) {
  const CommandInfo& self = *FindCommand("convert");
  Args args(context.words,
            {"format", "from", "to", "table", "separator", "quote", "encoding", "widths"},
            {"numbers", "header", "oem", "as-tables"});
  if (!args.ok()) return UsageError(context, self, args.error());
  if (args.positionals().size() != 2) return UsageError(context, self, "IN and OUT are needed");
  const std::string& in = args.positionals()[0];
  const std::string& out = args.positionals()[1];
  FileKind from = KindOfPath(in, true);
  if (std::optional<std::string> name = args.Value("from")) {
    std::optional<FileKind> kind = ParseKind(*name);
    if (!kind) return UsageError(context, self, "unknown kind '" + *name + "'");
    from = *kind;
  }
  std::optional<FileKind> to;
  if (std::optional<std::string> name = args.Value("format")) {
    std::optional<NativeFormat> format = ParseFormatOption(*name);
    if (!format) return UsageError(context, self, "unknown format '" + *name + "'");
    to = FileKind{DocumentKind::kNative, *format};
  }
  if (std::optional<std::string> name = args.Value("to")) {
    to = ParseKind(*name);
    if (!to) return UsageError(context, self, "unknown kind '" + *name + "'");
  }
  if (!to) to = KindOfPath(out, false);
  if (args.Flag("as-tables") && from.kind != DocumentKind::kExcelXml) {
    return UsageError(context, self, "--as-tables reads an Excel 2003 XML file");
  }
  CommandDocument document(context);
  ExchangeFiles& exchange = document.session.exchangeFiles();
  exchange.excelMode =
      args.Flag("as-tables") ? ExcelXmlMode::kWorksheetsAsTables : ExcelXmlMode::kDatabase;
  std::string why;
  if (!ReadTextOptions(args, in, exchange.importTextOptions, why)) {
    return UsageError(context, self, why);
  }
  exchange.xbaseImport.oem = args.Flag("oem");
  exchange.xbaseExport.oem = args.Flag("oem");
  // An SQLite file is read and written whole unless one table is named.
  exchange.sqliteTable = text::Utf8ToCp1252(args.Value("table").value_or(""));
  // Reading a file another process has open is harmless; the copy is written elsewhere.
  if (!document.Open(in, true, from.kind)) return kExitFailure;
  if (std::optional<std::string> table = args.Value("table")) {
    TableSpec selected;
    if (!document.SelectTable(*table, selected)) return kExitFailure;
  }
  if (to->kind == DocumentKind::kNative) {
    // Without a form the copy keeps the one the document came in, and a foreign file becomes XML.
    if (to->format != NativeFormat::kDefault) {
      document.book.fileFormat = to->format;
    } else if (from.kind != DocumentKind::kNative) {
      document.book.fileFormat = NativeFormat::kXml;
    }
    if (document.book.protectionMode != 0 && IsXmlFormat(document.book.fileFormat) &&
        to->format != NativeFormat::kDefault) {
      return Fail(context,
                  "the XML forms hold no password: unprotect the document first, or "
                  "convert it to binary or binary.gz");
    }
  }
  // The options given apply to both files; only the separator a name implies differs.
  TextFileOptions& outOptions = document.book.textOptions;
  if (!ReadTextOptions(args, out, outOptions, why)) return UsageError(context, self, why);
  document.prompter.saveChoice = SaveFileChoice{out, SaveFilterOfKind(to->kind)};
  return document.session.SaveDocumentAs() ? kExitSuccess : kExitFailure;
}

}  // namespace kelpdex::kpx
