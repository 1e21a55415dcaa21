#include "jet/sql/scalar_functions.h"

#include <string>

#include "foundation/encodings.h"
#include "jet/errors.h"

namespace jet::sql {
namespace {

constexpr ValueType kOfArgument = ValueType::kUnknown;
constexpr ValueType kBoolean = ValueType::kBoolean;
constexpr ValueType kInteger = ValueType::kInteger;
constexpr ValueType kNumber = ValueType::kNumber;
constexpr ValueType kDate = ValueType::kDate;
constexpr ValueType kText = ValueType::kText;

// The number before the arguments of jet_convert is the field type's.
constexpr ScalarFunction kFunctions[] = {
    {"abs", "n", 1, "jet_abs", kOfArgument, ""},
    {"asc", "t", 1, "jet_asc", kInteger, ""},
    {"ascw", "t", 1, "jet_ascw", kInteger, ""},
    {"atn", "n", 1, "jet_atn", kNumber, ""},
    {"cbool", "v", 1, "jet_convert", kBoolean, "1"},
    {"cbyte", "v", 1, "jet_convert", kInteger, "2"},
    {"ccur", "v", 1, "jet_convert", ValueType::kCurrency, "5"},
    {"cdate", "v", 1, "jet_convert", kDate, "8"},
    {"cdbl", "v", 1, "jet_convert", kNumber, "7"},
    {"chr", "n", 1, "jet_chr", kText, ""},
    {"chrw", "n", 1, "jet_chrw", kText, ""},
    {"cint", "v", 1, "jet_convert", kInteger, "3"},
    {"clng", "v", 1, "jet_convert", kInteger, "4"},
    {"cos", "n", 1, "jet_cos", kNumber, ""},
    {"csng", "v", 1, "jet_convert", ValueType::kSingle, "6"},
    {"cstr", "v", 1, "jet_convert", kText, "12"},
    {"cvar", "v", 1, "", kOfArgument, ""},
    {"cvdate", "v", 1, "jet_convert", kDate, "8"},
    {"date", "", 0, "jet_date", kDate, ""},
    {"dateadd", "tnd", 3, "jet_date_add", kDate, ""},
    {"datediff", "tddnn", 3, "jet_date_difference", kInteger, ""},
    {"datepart", "tdnn", 2, "jet_date_part", kInteger, ""},
    {"dateserial", "nnn", 3, "jet_date_serial", kDate, ""},
    {"datevalue", "d", 1, "jet_day_only", kDate, ""},
    {"day", "d", 1, "jet_date_part", kInteger, "'d'"},
    {"exp", "n", 1, "jet_exp", kNumber, ""},
    {"fix", "n", 1, "jet_fix", kOfArgument, ""},
    {"format", "vtnn", 1, "jet_format", kText, ""},
    {"formatnumber", "vn", 1, "jet_format_number", kText, ""},
    {"hex", "n", 1, "jet_hex", kText, ""},
    {"hour", "d", 1, "jet_date_part", kInteger, "'h'"},
    {"instr", "tt", 2, "jet_in_text", kInteger, ""},
    {"instr", "nttn", 3, "jet_in_text", kInteger, ""},
    {"instrrev", "ttnn", 2, "jet_in_text_reversed", kInteger, ""},
    {"int", "n", 1, "jet_int", kOfArgument, ""},
    {"isdate", "v", 1, "jet_is_date", kBoolean, ""},
    {"isnumeric", "v", 1, "jet_is_numeric", kBoolean, ""},
    {"lcase", "t", 1, "jet_lower", kText, ""},
    {"left", "tn", 2, "jet_left", kText, ""},
    {"len", "t", 1, "jet_length", kInteger, ""},
    {"log", "n", 1, "jet_log", kNumber, ""},
    {"ltrim", "t", 1, "jet_trim_left", kText, ""},
    {"mid", "tnn", 2, "jet_mid", kText, ""},
    {"minute", "d", 1, "jet_date_part", kInteger, "'n'"},
    {"month", "d", 1, "jet_date_part", kInteger, "'m'"},
    {"monthname", "nn", 1, "jet_month_name", kText, ""},
    {"now", "", 0, "jet_now", kDate, ""},
    {"oct", "n", 1, "jet_oct", kText, ""},
    {"partition", "nnnn", 4, "jet_partition", kText, ""},
    {"replace", "tttnnn", 3, "jet_replace", kText, ""},
    {"right", "tn", 2, "jet_right", kText, ""},
    {"rnd", "n", 0, "jet_random", kNumber, ""},
    {"round", "Nn", 1, "jet_round", kOfArgument, ""},
    {"rtrim", "t", 1, "jet_trim_right", kText, ""},
    {"second", "d", 1, "jet_date_part", kInteger, "'s'"},
    {"sgn", "n", 1, "jet_sgn", kInteger, ""},
    {"sin", "n", 1, "jet_sin", kNumber, ""},
    {"space", "n", 1, "jet_space", kText, ""},
    {"sqr", "n", 1, "jet_sqr", kNumber, ""},
    {"str", "v", 1, "jet_str", kText, ""},
    {"strcomp", "ttn", 2, "jet_compare_texts", kInteger, ""},
    {"string", "nV", 2, "jet_string", kText, ""},
    {"strreverse", "t", 1, "jet_reverse", kText, ""},
    {"tan", "n", 1, "jet_tan", kNumber, ""},
    {"time", "", 0, "jet_time", kDate, ""},
    {"timeserial", "nnn", 3, "jet_time_serial", kDate, ""},
    {"timevalue", "d", 1, "jet_time_only", kDate, ""},
    {"trim", "t", 1, "jet_trim", kText, ""},
    {"ucase", "t", 1, "jet_upper", kText, ""},
    {"val", "t", 1, "jet_val", kNumber, ""},
    {"weekday", "dn", 1, "jet_date_part", kInteger, "'w'"},
    {"weekdayname", "nnn", 1, "jet_weekday_name", kText, ""},
    {"year", "d", 1, "jet_date_part", kInteger, "'yyyy'"},
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
