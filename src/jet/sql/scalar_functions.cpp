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
    {"abs", "n", 1, fn::kAbs, kOfArgument},
    {"asc", "t", 1, fn::kAsc, kInteger},
    {"ascw", "t", 1, fn::kAscW, kInteger},
    {"atn", "n", 1, fn::kAtn, kNumber},
    {"cbool", "v", 1, fn::kConvert, kBoolean, DataType::kBoolean},
    {"cbyte", "v", 1, fn::kConvert, kInteger, DataType::kByte},
    {"ccur", "v", 1, fn::kConvert, ValueType::kCurrency, DataType::kCurrency},
    {"cdate", "v", 1, fn::kConvert, kDate, DataType::kDate},
    {"cdbl", "v", 1, fn::kConvert, kNumber, DataType::kDouble},
    {"cdec", "v", 1, fn::kConvert, kNumber, DataType::kDouble},
    {"chr", "n", 1, fn::kChr, kText},
    {"chrw", "n", 1, fn::kChrW, kText},
    {"cint", "v", 1, fn::kConvert, kInteger, DataType::kInteger},
    {"clng", "v", 1, fn::kConvert, kInteger, DataType::kLong},
    {"cos", "n", 1, fn::kCos, kNumber},
    {"csng", "v", 1, fn::kConvert, ValueType::kSingle, DataType::kSingle},
    {"cstr", "v", 1, fn::kConvert, kText, DataType::kMemo},
    {"cvar", "v", 1, Function(), kOfArgument},
    {"cvdate", "v", 1, fn::kConvert, kDate, DataType::kDate},
    {"date", "", 0, fn::kDate, kDate},
    {"dateadd", "tnd", 3, fn::kDateAdd, kDate},
    {"datediff", "tddnn", 3, fn::kDateDifference, kInteger},
    {"datepart", "tdnn", 2, fn::kDatePart, kInteger},
    {"dateserial", "nnn", 3, fn::kDateSerial, kDate},
    {"datevalue", "d", 1, fn::kDayOnly, kDate},
    {"day", "d", 1, fn::kDatePart, kInteger, "d"},
    {"exp", "n", 1, fn::kExp, kNumber},
    {"fix", "n", 1, fn::kFix, kOfArgument},
    {"format", "vtnn", 1, fn::kFormat, kText},
    {"formatnumber", "vn", 1, fn::kFormatNumber, kText},
    {"hex", "n", 1, fn::kHex, kText},
    {"hour", "d", 1, fn::kDatePart, kInteger, "h"},
    {"instr", "tt", 2, fn::kInText, kInteger},
    {"instr", "nttn", 3, fn::kInText, kInteger},
    {"instrrev", "ttnn", 2, fn::kInTextReversed, kInteger},
    {"int", "n", 1, fn::kInt, kOfArgument},
    {"isdate", "v", 1, fn::kIsDate, kBoolean},
    {"isnumeric", "v", 1, fn::kIsNumeric, kBoolean},
    {"lcase", "t", 1, fn::kLower, kText},
    {"left", "tn", 2, fn::kLeft, kText},
    {"len", "t", 1, fn::kLength, kInteger},
    {"log", "n", 1, fn::kLog, kNumber},
    {"ltrim", "t", 1, fn::kTrimLeft, kText},
    {"mid", "tnn", 2, fn::kMid, kText},
    {"minute", "d", 1, fn::kDatePart, kInteger, "n"},
    {"month", "d", 1, fn::kDatePart, kInteger, "m"},
    {"monthname", "nn", 1, fn::kMonthName, kText},
    {"now", "", 0, fn::kNow, kDate},
    {"oct", "n", 1, fn::kOct, kText},
    {"partition", "nnnn", 4, fn::kPartition, kText},
    {"replace", "tttnnn", 3, fn::kReplace, kText},
    {"right", "tn", 2, fn::kRight, kText},
    {"rnd", "n", 0, fn::kRandom, kNumber},
    {"round", "Nn", 1, fn::kRound, kOfArgument},
    {"rtrim", "t", 1, fn::kTrimRight, kText},
    {"second", "d", 1, fn::kDatePart, kInteger, "s"},
    {"sgn", "n", 1, fn::kSgn, kInteger},
    {"sin", "n", 1, fn::kSin, kNumber},
    {"space", "n", 1, fn::kSpace, kText},
    {"sqr", "n", 1, fn::kSqr, kNumber},
    {"str", "v", 1, fn::kStr, kText},
    {"strcomp", "ttn", 2, fn::kCompareTexts, kInteger},
    {"strconv", "tnn", 2, fn::kStrConv, kText},
    {"string", "nV", 2, fn::kString, kText},
    {"strreverse", "t", 1, fn::kReverse, kText},
    {"tan", "n", 1, fn::kTan, kNumber},
    {"time", "", 0, fn::kTime, kDate},
    {"timer", "", 0, fn::kTimer, ValueType::kSingle},
    {"timeserial", "nnn", 3, fn::kTimeSerial, kDate},
    {"timevalue", "d", 1, fn::kTimeOnly, kDate},
    {"trim", "t", 1, fn::kTrim, kText},
    {"ucase", "t", 1, fn::kUpper, kText},
    {"val", "t", 1, fn::kVal, kNumber},
    {"weekday", "dn", 1, fn::kDatePart, kInteger, "w"},
    {"weekdayname", "nnn", 1, fn::kWeekdayName, kText},
    {"year", "d", 1, fn::kDatePart, kInteger, "yyyy"},
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
