// Help entries of the category "financial". The texts stand as the function picker has always shown
// them, slips included.
#include "functions/help_table.h"

namespace kelpdex {

namespace {

constexpr uint8_t kCategory = help::kFinancial;

const HelpEntry kEntries[] = {
    {HelpCode(kCategory, 5),
     "cumIPMT",
     {"rate", "nper", "pv", "n1", "n2"},
     "00000",
     "cumIPMT(rate, nper, pv, n1, n2)\r\n"
     "\r\n"
     "Returns the cumulative interest paid on a loan between the periods 'startPeriod' and "
     "'endPeriod', based on a given interest rate (relative to one period), the total number of "
     "periods 'nper', the present value 'pv' and payments made in arrears.\r\n"
     "\r\n"
     "=cumIPMT(0.0075, 360, 125000, 13, 24) returns -11135.2321307508\r\n"},
    {HelpCode(kCategory, 5),
     "cumPRINC",
     {"rate", "period", "pv", "n1", "n2"},
     "00000",
     "cumPRINC(rate, period, pv, n1, n2)\r\n"
     "\r\n"
     "Returns the cumulative principal paid on a loan between the periods 'startPeriod' and "
     "'endPeriod', based on a given interest rate (relative to one period), the total number of "
     "periods 'nper', the present value 'pv' and payments made in arrears.\r\n"
     "\r\n"
     "=cumPRINC(0.0075, 360, 125000, 13, 24) returns -934.107123420876\r\n"},
    {HelpCode(kCategory, 4),
     "db",
     {"cost", "salvage", "life", "period", "[month]"},
     "00000",
     "db(cost, salvage, life, period, [month])\r\n"
     "\r\n"
     "Returns the depreciation of an asset for a given period using the fixed-declining balance "
     "method, where 'cost' is the initial cost of an asset, 'salvage' is the value at the end of "
     "the depreciation, 'life' is the total number of depreciation periods, 'period' is the period "
     "for which the depreciation is calculated, 'month' is the number of months in the first year. "
     "The default value of 'month' is 12.\r\n"
     "\r\n"
     "=db(1000000, 100000, 6, 1, 7) returns 185,912.959716189\r\n"
     "=db(1000000, 100000, 6, 7, 7) returns 15,867.888384391\r\n"},
    {HelpCode(kCategory, 4),
     "ddb",
     {"cost", "salvage", "life", "period", "[factor]"},
     "00000",
     "ddb(cost, salvage, life, period, [factor])\r\n"
     "\r\n"
     "nReturns the depreciation of an asset for a given period using the double-declining balance "
     "method or other method determined by the optional 'factor' declining rate, where 'cost' is "
     "the initial cost of an asset, 'salvage' is the value at the end of the depreciation, 'life' "
     "is the total number of depreciation periods, 'period' is the period for which the "
     "depreciation is calculated, 'factor' is the rate at which the balance declines. The default "
     "value of 'factor' is 2.\r\n"
     "\r\n"
     "=ddb(2400, 300, 3650, 1,) returns 1.31506849315068\r\n"
     "=ddb(2400, 300, 10, 2, 1.5) returns 306\r\n"},
    {HelpCode(kCategory, 2),
     "dollarDe",
     {"x", "denominator"},
     "00",
     "dollarDe(x, denominator)\r\n"
     "\r\n"
     "Converts a dollar price represented by a fraction with a given denominator value to a "
     "decimal number.\r\n"
     "\r\n"
     "=dollarDe(1.02, 16) returns 1.125 (=1 2/16)\r\n"},
    {HelpCode(kCategory, 2),
     "dollarFr",
     {"x", "denominator"},
     "00",
     "dollarFr(x, denominator)\r\n"
     "\r\n"
     "Converts a decimal number to a dollar price represented by a fraction with a given "
     "denominator value.\r\n"
     "\r\n"
     "=dollarFr(1.125, 16) returns 1.02 (=1 2/16)\r\n"},
    {HelpCode(kCategory, 2),
     "effect",
     {"rate", "nper"},
     "00",
     "effect(rate, nper)\r\n"
     "\r\n"
     "Calculates and returns the annual effective interest rate based on the nominal annual "
     "interest rate and the number of compunding periods per year 'nper'.\r\n"
     "\r\n"
     "=effect(5.25%, 4) returns 0.05354266737076\r\n"},
    {HelpCode(kCategory, 3),
     "fv",
     {"rate", "nper", "pmt", "[pv]", "[type]"},
     "00000",
     "fv(rate, pmt, [pv], [type])\r\n"
     "\r\n"
     "Returns the future value of an investment based on constant periodic payments and interest "
     "rate where 'rate' is the interest rate (relative to one period), 'pmt' is the periodic "
     "payment, 'pv' is the present value of the investment and and 'type' specifies the payment "
     "type: 0 - at the end of each period, 1 - at the beginning of each period. If the 'pmt' "
     "argument is omitted, the 'pv' value must be specified. If the 'pv' argument is omitted, it's "
     "assumed to be 0 and the 'pmt' value must be specified. The default value of 'type' is 0.\r\n"
     "\r\n"
     "=fv(0.5%, 10, -200, -500, 1) returns 2581.40337406014\r\n"},
    {HelpCode(kCategory, kVariableArguments),
     "fvSchedule",
     {"pv", "x1", "x2", "..."},
     "011",
     "fv(pv, x1, x2, ...)\r\n"
     "\r\n"
     "Returns the future value of an initial principal after the specified number of periods at a "
     "variable interest rate in each period. The x(n) arguments are numbers or array(s) of numbers "
     "representing the subsequent interest rates. Empty cells are treated as zeros.\r\n"
     "\r\n"
     "=fvSchedule(1, {0.09, 0.11, 0.1}) returns 1.33089\r\n"},
    {HelpCode(kCategory, 4),
     "ipmt",
     {"rate", "period", "nper", "pv", "[fv]"},
     "00000",
     "ipmt(rate, period, nper, pv, [fv])\r\n"
     "\r\n"
     "Returns the interest payment for a given period based on constant periodic payments and a "
     "constant interest rate where 'nper' is the total number of periods, 'pv' is the present "
     "value or the current value of the future payments, 'fv' is the future value (after the last "
     "payment is made) and payments occur at the end of each period. If 'fv' is omitted, it's "
     "assumed to be 0.\r\n"
     "\r\n"
     "=ipmt(0.1/12, 1, 36, 8000,) returns -66.6666666666667\r\n"},
    {HelpCode(kCategory, kVariableArguments),
     "irr",
     {"pv1", "pv2", "..."},
     "11",
     "irr(pv1, pv2, ..., guess)\r\n"
     "\r\n"
     "Returns the internal interest rate for a series of (negative and positive) cash flows "
     "occurring at regular intervals. The pv(n) arguments can numbers or arrays of numbers, "
     "'guess' is the value of the rate that irr will use as the initial approximation of the "
     "actual rate. Empty cells in arrays are ignored.\r\n"
     "\r\n"
     "=irr(-70000, 12000, 15000, 18000, 21000, 26000, 0%) returns 0.08663094803653\r\n"},
    {HelpCode(kCategory, 2),
     "mirr",
     {"flowsArray", "rate"},
     "10",
     "mirr(flowsArray, rate)\r\n"
     "\r\n"
     "Returns the modified internal rate of return for a series of (negative and positive) cash "
     "flows assuming that the obtained cash can be reinvested at a given interest rate (relative "
     "to one period). Empty cells in arrays are ignored. To evaluate an investment, compare that "
     "value with the interest rate paid on the capital.\r\n"
     "\r\n"
     "=mirr({-120000, 39000, 30000, 21000, 37000, 46000}, 12%) returns 0.12609413036591\r\n"},
    {HelpCode(kCategory, 2),
     "nominal",
     {"rate", "nper"},
     "00",
     "nominal(rate, nper)\r\n"
     "\r\n"
     "Calculates and returns the annual nominal interest rate, based on a given effective rate and "
     "the number of compounding periods per year.\r\n"
     "\r\n"
     "=nominal(5.3543%, 4) return 0.05250031986836\r\n"},
    {HelpCode(kCategory, 3),
     "nper",
     {"rate", "pmt", "pv", "[fv]", "[type]"},
     "00000",
     "nper(rate, pmt, pv, [fv], [type])\r\n"
     "\r\n"
     "Returns the total number of periods for an investment based on constant periodic payments "
     "and a constant interest rate. The 'pmt' argument is the periodic payment, 'pv' is the "
     "present value, 'fv' is a cash balance after the last payment is made and 'type' specifies "
     "the payment type: 0 - at the end of each period, 1 - at the beginning of each period. If "
     "'fv' is omitted, it's assumed to be 0. The default value of 'type' is 0.\r\n"
     "\r\n"
     "=nper(12%/12, -100, -1000, 10000, 1) returns 59.6738656742946\r\n"
     "=nper(1%, -100, 1000,,) returns 10.5886444594232\r\n"},
    {HelpCode(kCategory, kVariableArguments),
     "npv",
     {"rate", "pv1", "pv2", "..."},
     "011",
     "npv(rate, pv1, pv2, ..., pvN)\r\n"
     "\r\n"
     "Returns the net present value of an investment, given the 'rate' discount rate and a series "
     "of future payments and income occurring at regular intervals in arrears. The 'rate' argument "
     "is the discount rate (relative to one period), the pv(N) values are numbers or arrays of "
     "numbers representing payments or income. Empty cells are ignored.\r\n"
     "\r\n"
     "=npv(10%, -10000, 3000, 4200, 6800) returns 1188.44341233522\r\n"},
    {HelpCode(kCategory, 3),
     "pmt",
     {"rate", "nper", "pv", "[fv]", "[type]"},
     "00000",
     "pmt(rate, nper, pv, [fv], [type])\r\n"
     "\r\n"
     "Returns the payment for a loan based on constant payments and constant interest rate. The "
     "'rate' argument is the interest rate, 'nper' is the total number of payment periods, 'pv' "
     "the present value, 'fv' is a cash balance after the last payment is made and 'type' "
     "specifies the payment type: 0 - at the end of each period, 1 - at the beginning of each "
     "period. If 'fv' is omitted, it's assumed to be 0. The default value of 'type' is 0.\r\n"
     "\r\n"
     "=pmt(8%/12, 10, 10000,,) returns -1037.03208935916\r\n"
     "=pmt(8%/12, 10, 10000, 0, 1) returns -1030.16432717798\r\n"},
    {HelpCode(kCategory, 4),
     "ppmt",
     {"rate", "period", "nper", "pv", "[fv]", "[type]"},
     "000000",
     "ppmt(rate, period, nper, pv, [fv], [type])\r\n"
     "\r\n"
     "Returns the principal portion of a given payment. The 'rate' argument is the interest rate "
     "(relative to one period), 'period' is the period that the payment refers to, 'nper' is the "
     "total number of periods, 'pv' is the present value, 'fv' is a cash balance after the last "
     "payment is made and 'type' specifies the payment type: 0 - at the end of each period, 1 - at "
     "the beginning of each period. If 'fv' is omitted, it's assumed to be 0. The default value of "
     "'type' is 0.\r\n"
     "\r\n"
     "=ppmt(10%/12, 1, 24, 2000,,) returns -75.6231860083666\r\n"},
    {HelpCode(kCategory, 3),
     "pv",
     {"rate", "nper", "pmt", "[fv]", "[type]"},
     "00000",
     "pv(rate, nper, pmt, [fv], [type])\r\n"
     "\r\n"
     "Returns the present value of an investment where 'rate' is the interest rate (relative to "
     "one period), 'nper' is the total number of compounding periods, 'pmt' is the periodic "
     "payment, 'fv' is the future value and 'type' specifies the payment type: 0 - at the end of "
     "each period, 1 - at the beginning of each period. If 'fv' is omitted, it's assumed to be 0. "
     "The default value of 'type' is 0.\r\n"
     "\r\n"
     "=pv(0.08/12, 12*20, 500, , 0) returns -59777.1458511878\r\n"},
    {HelpCode(kCategory, 3),
     "rate",
     {"nper", "pmt", "pv", "[fv]", "[type]", "[guess]"},
     "000000",
     "rate(nper. pmt, pv, [fv], [type])\r\n"
     "\r\n"
     "Returns the average interest rate per period. The 'nper' argument is the total number of "
     "periods, 'pmt' is the periodic payment, 'pv' is the present value, 'fv' is the future value, "
     "'type' is the payment type: 0 - at the end of each period, 1 - at the beginning of each "
     "period, 'guess' is the value of the rate that irr will use as the initial approximation of "
     "the actual rate. If 'fv' is omitted, it's assumed to be 0. The default value of 'type' is "
     "0.\r\n"
     "\r\n"
     "=rate(48, -200, 8000,,,) returns 0.0077014724882\r\n"},
    {HelpCode(kCategory, 3),
     "sln",
     {"cost", "salvage", "life"},
     "000",
     "sln(cost, salvage, life)\r\n"
     "\r\n"
     "Returns the straight-line depreciation of an asset for one period. The 'cost' argument is "
     "initial values of an asset, 'salvage' is the value at the end of the depreciation, 'life' is "
     "the total number of depreciation periods.\r\n"
     "\r\n"
     "=sln(30000, 7500, 10) returns 2250\r\n"},
    {HelpCode(kCategory, 4),
     "syd",
     {"cost", "salvage", "life", "period"},
     "0000",
     "syd(cost, salvage, life, period)\r\n"
     "\r\n"
     "Returns the sum-of-years' digits depreciation of an asset for a given period. The 'cost' "
     "argument is the initial value of an asset, 'salvage' is the value at the end of the "
     "depreciation period, 'life' is the total number of depreciation periods, 'period' is the "
     "period for which the SYD value is calculated.\r\n"
     "\r\n"
     "=syd(30000,7500,10,1) returns 4090.909090909\r\n"},
    {HelpCode(kCategory, 2),
     "xirr",
     {"flows", "dates", "[guess]"},
     "110",
     "xirr(flows, dates, [guess])\r\n"
     "\r\n"
     "Returns the internal rate of return for a schedule of cash flows without the periodicity "
     "constraint. The 'flows' argument is an array of numbers representing cash flows and the "
     "'dates' argument is an array of generic date/time strings indicating when the corresponding "
     "cash flows occur. The first element of the 'flows' array is optional and represents the "
     "initial cost/investment. The first element of the 'dates' array specifies the beginning of "
     "the schedule; the remaining dates can be placed in any other but they must be later than the "
     "first one. The 'guess' argument is the value of the rate that xirr will use as the initial "
     "approximation of the actual rate. The default value of 'guess' is 10%.\r\n"
     "\r\n"
     "=xirr({-10000, 2750, 4250, 3250, 2750}, {\"1992-01-01\", \"1992-03-01\", \"1992-10-30\", "
     "\"1993-02-15\", \"1993-04-01\"}, 0.1) returns 0.37336253351883\r\n"},
    {HelpCode(kCategory, 3),
     "xnpv",
     {"rate", "flows", "dates"},
     "011",
     "xnpv(rate, flows, dates)\r\n"
     "\r\n"
     "Returns the net present value of an investment for a schedule of cash flows without the "
     "periodicity constraint. The 'rate' argument is the discount rate, 'flows' is an array of "
     "numbers representing cash flows and the 'dates' argument is an array of generic date/time "
     "strings indicating when the corresponding cash flows occur. The first element of the 'flows' "
     "array is optional and represents the initial cost/investment. The first element of the "
     "'dates' array specifies the beginning of the schedule; the remaining dates can be placed in "
     "any other but they must be later than the first one.\r\n"
     "\r\n"
     "=xnpv(0.09, {-10000, 2750, 4250, 3250, 2750}, {\"1992-01-01\", \"1992-03-01\", "
     "\"1992-10-30\", \"1993-02-15\", \"1993-04-01\"}) returns 2086.64760205153\r\n"},
};

}  // namespace

std::span<const HelpEntry> FinancialHelp() {
  return kEntries;
}

}  // namespace kelpdex
