#include "jet/sql/scalar_functions.h"

#include <string>

#include "foundation/encodings.h"
#include "jet/errors.h"

namespace jet::sql {
namespace {

using ports::DataType;

constexpr ValueType kOfArgument = ValueType::kUnknown;
constexpr ValueType kBoolean = ValueType::kBoolean;
constexpr ValueType kInteger = ValueType::kInteger;
constexpr ValueType kNumber = ValueType::kNumber;
constexpr ValueType kDate = ValueType::kDate;
constexpr ValueType kText = ValueType::kText;

constexpr ScalarFunction kFunctions[] = {
    {"abs", "n", 1, functions::kAbs, kOfArgument},
    {"asc", "t", 1, functions::kAsc, kInteger},
    {"ascw", "t", 1, functions::kAscW, kInteger},
    {"atn", "n", 1, functions::kAtn, kNumber},
    {"cbool", "v", 1, functions::kConvert, kBoolean, DataType::kBoolean},
    {"cbyte", "v", 1, functions::kConvert, kInteger, DataType::kByte},
    {"ccur", "v", 1, functions::kConvert, ValueType::kCurrency, DataType::kCurrency},
    {"cdate", "v", 1, functions::kConvert, kDate, DataType::kDate},
    {"cdbl", "v", 1, functions::kConvert, kNumber, DataType::kDouble},
    {"chr", "n", 1, functions::kChr, kText},
    {"chrw", "n", 1, functions::kChrW, kText},
    {"cint", "v", 1, functions::kConvert, kInteger, DataType::kInteger},
    {"clng", "v", 1, functions::kConvert, kInteger, DataType::kLong},
    {"cos", "n", 1, functions::kCos, kNumber},
    {"csng", "v", 1, functions::kConvert, ValueType::kSingle, DataType::kSingle},
    {"cstr", "v", 1, functions::kConvert, kText, DataType::kMemo},
    {"cvar", "v", 1, Function(), kOfArgument},
    {"cvdate", "v", 1, functions::kConvert, kDate, DataType::kDate},
    {"date", "", 0, functions::kDate, kDate},
    {"dateadd", "tnd", 3, functions::kDateAdd, kDate},
    {"datediff", "tddnn", 3, functions::kDateDifference, kInteger},
    {"datepart", "tdnn", 2, functions::kDatePart, kInteger},
    {"dateserial", "nnn", 3, functions::kDateSerial, kDate},
    {"datevalue", "d", 1, functions::kDayOnly, kDate},
    {"day", "d", 1, functions::kDatePart, kInteger, "d"},
    {"exp", "n", 1, functions::kExp, kNumber},
    {"fix", "n", 1, functions::kFix, kOfArgument},
    {"format", "vtnn", 1, functions::kFormat, kText},
    {"formatnumber", "vn", 1, functions::kFormatNumber, kText},
    {"hex", "n", 1, functions::kHex, kText},
    {"hour", "d", 1, functions::kDatePart, kInteger, "h"},
    {"instr", "tt", 2, functions::kInText, kInteger},
    {"instr", "nttn", 3, functions::kInText, kInteger},
    {"instrrev", "ttnn", 2, functions::kInTextReversed, kInteger},
    {"int", "n", 1, functions::kInt, kOfArgument},
    {"isdate", "v", 1, functions::kIsDate, kBoolean},
    {"isnumeric", "v", 1, functions::kIsNumeric, kBoolean},
    {"lcase", "t", 1, functions::kLower, kText},
    {"left", "tn", 2, functions::kLeft, kText},
    {"len", "t", 1, functions::kLength, kInteger},
    {"log", "n", 1, functions::kLog, kNumber},
    {"ltrim", "t", 1, functions::kTrimLeft, kText},
    {"mid", "tnn", 2, functions::kMid, kText},
    {"minute", "d", 1, functions::kDatePart, kInteger, "n"},
    {"month", "d", 1, functions::kDatePart, kInteger, "m"},
    {"monthname", "nn", 1, functions::kMonthName, kText},
    {"now", "", 0, functions::kNow, kDate},
    {"oct", "n", 1, functions::kOct, kText},
    {"partition", "nnnn", 4, functions::kPartition, kText},
    {"replace", "tttnnn", 3, functions::kReplace, kText},
    {"right", "tn", 2, functions::kRight, kText},
    {"rnd", "n", 0, functions::kRandom, kNumber},
    {"round", "Nn", 1, functions::kRound, kOfArgument},
    {"rtrim", "t", 1, functions::kTrimRight, kText},
    {"second", "d", 1, functions::kDatePart, kInteger, "s"},
    {"sgn", "n", 1, functions::kSgn, kInteger},
    {"sin", "n", 1, functions::kSin, kNumber},
    {"space", "n", 1, functions::kSpace, kText},
    {"sqr", "n", 1, functions::kSqr, kNumber},
    {"str", "v", 1, functions::kStr, kText},
    {"strcomp", "ttn", 2, functions::kCompareTexts, kInteger},
    {"string", "nV", 2, functions::kString, kText},
    {"strreverse", "t", 1, functions::kReverse, kText},
    {"tan", "n", 1, functions::kTan, kNumber},
    {"time", "", 0, functions::kTime, kDate},
    {"timeserial", "nnn", 3, functions::kTimeSerial, kDate},
    {"timevalue", "d", 1, functions::kTimeOnly, kDate},
    {"trim", "t", 1, functions::kTrim, kText},
    {"ucase", "t", 1, functions::kUpper, kText},
    {"val", "t", 1, functions::kVal, kNumber},
    {"weekday", "dn", 1, functions::kDatePart, kInteger, "w"},
    {"weekdayname", "nnn", 1, functions::kWeekdayName, kText},
    {"year", "d", 1, functions::kDatePart, kInteger, "yyyy"},
};

}  // namespace

const ScalarFunction* FindScalarFunction(std::string_view name, std::size_t argument_count) {
  std::string lower = tmw::LowerCase(name);
  const bool is_text_form = lower.ends_with('$');
  if (is_text_form) lower.pop_back();
  bool is_known = false;
  for (const ScalarFunction& function : kFunctions) {
    if (function.name != lower || (is_text_form && function.type != kText)) continue;
    if (argument_count >= function.least_arguments && argument_count <= function.parameters.size())
      return &function;
    is_known = true;
  }
  if (is_known) Fail(kWrongArgumentCount, name);
  return nullptr;
}

}  // namespace jet::sql
