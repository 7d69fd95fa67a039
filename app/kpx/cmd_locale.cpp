#include <string>

#include "core/locale_settings.h"
#include "kpx/kpx_args.h"
#include "kpx/kpx_commands.h"
#include "platform/locale_provider.h"
#include "platform/locale_table.h"
#include "text/utf8.h"

namespace kelpdex::kpx {

namespace {

std::string Utf8Char(char c) {
  if (c == '\0') return "";
  return text::Cp1252ToUtf8(std::string_view(&c, 1));
}

const char* OrderName(uint8_t order) {
  switch (order) {
    case 0:
      return "month-day-year";
    case 1:
      return "day-month-year";
    case 2:
      return "year-month-day";
    default:
      return "unknown";
  }
}

int ListChoices(CommandContext& context, platform::LocaleProvider& provider) {
  for (int choice = 0; choice < platform::kLocaleChoiceCount; ++choice) {
    uint32_t lcid = platform::LocaleIdOfChoice(choice);
    const char* installed = "";
    if (choice > 2) installed = provider.IsValidLocale(lcid) ? "\tinstalled" : "\tnot installed";
    std::fprintf(context.out, "%d\t0x%04X\t%s%s\n", choice, lcid,
                 platform::LocaleChoiceName(choice), installed);
  }
  return kExitSuccess;
}

}  // namespace

int RunLocale(CommandContext& context) {
  const CommandInfo& self = *FindCommand("locale");
  Args args(context.words, {"choice"}, {"list"});
  long choice = 2;  // what a user who never chose gets on this machine
  if (!args.ok() || !args.IntValue("choice", 0, platform::kLocaleChoiceCount - 1, choice)) {
    return UsageError(context, self, args.error());
  }
  if (!args.positionals().empty()) {
    return UsageError(context, self, "unexpected argument '" + args.positionals()[0] + "'");
  }
  platform::LocaleProvider& provider = platform::SystemLocaleProvider();
  if (args.Flag("list")) return ListChoices(context, provider);

  int requested = static_cast<int>(choice);
  LocaleSettings s = BuildLocaleSettings(requested, provider);
  std::fprintf(context.out, "choice\t%d\t%s\n", requested, platform::LocaleChoiceName(requested));
  if (s.localeIndex != requested) {
    std::fprintf(context.out, "in force\t0\t%s (the choice cannot be used here)\n",
                 platform::LocaleChoiceName(0));
  }
  std::fprintf(context.out, "decimal\t%s\n", Utf8Char(s.decimalSeparator).c_str());
  std::fprintf(context.out, "thousands\t%s\n", Utf8Char(s.thousandSeparator).c_str());
  std::fprintf(context.out, "date\t%s\n", Utf8Char(s.dateSeparator).c_str());
  std::fprintf(context.out, "time\t%s\n", Utf8Char(s.timeSeparator).c_str());
  std::fprintf(context.out, "list\t%s\n", Utf8Char(s.listSeparator).c_str());
  std::fprintf(context.out, "row\t%s\n", Utf8Char(s.rowSeparator).c_str());
  std::fprintf(context.out, "date order\t%s\n", OrderName(s.dateOrder));
  std::fprintf(context.out, "long date order\t%s\n", OrderName(s.longDateOrder));
  std::fprintf(context.out, "currency\t%s\n", text::Cp1252ToUtf8(s.currencySymbol).c_str());
  return kExitSuccess;
}

}  // namespace kelpdex::kpx
