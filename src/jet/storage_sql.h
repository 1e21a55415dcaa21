#pragma once

#include <cstdint>
#include <initializer_list>
#include <string>
#include <string_view>

// The functions and the collation that translated statements use beyond SQLite's own: the
// translator writes them, the store implements them for every connection.
namespace jet {

// The order of texts in the database.
inline constexpr const char* kCollationName = "JET";
inline constexpr const char* kCollate = " COLLATE JET";

// The order of decimals, which lie as texts.
inline constexpr const char* kDecimalCollationName = "DECIMALS";
inline constexpr const char* kCollateDecimal = " COLLATE DECIMALS";

struct Function {
  const char* name = "";
  int count = 0;        // of arguments; -1 for any
  bool is_pure = true;  // the same arguments give the same result
};

// Appends an item to a list, after the separator unless the list is empty.
void Append(std::string& list, std::string_view item, std::string_view separator = ", ");
// "f(a, b)". An argument may be several, already separated.
std::string CallSql(const Function& function, std::initializer_list<std::string_view> arguments);
// A text as a literal.
std::string TextLiteral(std::string_view text);
std::string BytesLiteral(std::string_view bytes);

// The comments list the arguments in order; "type" is the number of the ValueType of the value
// before it. Most functions return Null if any argument is Null. Comparisons return 1 or 0.
namespace fn {

// Converts and checks a value for a field: value, type, DataType, size, flags, field name.
inline constexpr Function kStore = {"jet_to", 6};
enum StoreFlag : std::int32_t { kRequired = 1, kTakesZeroLength = 2, kInPrimaryKey = 4 };
inline constexpr Function kGuid = {"jet_guid", 1};                      // 16 bytes
inline constexpr Function kNextNumber = {"jet_next_number", 1, false};  // table
inline constexpr Function kUsedNumber = {"jet_used_number", 2, false};  // table, number or Null
inline constexpr Function kStoredLength = {"jet_stored_length", 3};  // value, DataType, compressed
inline constexpr Function kKeyLength = {"jet_key_length", 1};        // text or binary value
inline constexpr Function kRefuse = {"jet_refuse", 2, false};        // error number, its text

// Operators.
inline constexpr Function kAdd = {"jet_add", 2};                       // values of unknown types
inline constexpr Function kAlike = {"jet_alike", 2};                   // text, pattern with % and _
inline constexpr Function kAmount = {"jet_amount", 1};                 // a sum of ten-thousandths
inline constexpr Function kAmountProduct = {"jet_amount_product", 2};  // ten-thousandths twice
inline constexpr Function kBetween = {"jet_between", 3};  // value, two bounds in any order
inline constexpr Function kCompare = {"jet_compare", 2};  // below, at or above zero
inline constexpr Function kDivide = {"jet_divide", 2};
inline constexpr Function kIn = {"jet_in", -1};  // value, items
inline constexpr Function kJoin = {"jet_join", 2};
inline constexpr Function kLike = {"jet_like", 2};  // text, pattern with * ? #
inline constexpr Function kLong = {"jet_long", 1};  // must fit 32 bits
inline constexpr Function kModulo = {"jet_modulo", 2};
inline constexpr Function kPower = {"jet_power", 2};
inline constexpr Function kScaled = {"jet_scaled", 1};  // to ten-thousandths
inline constexpr Function kWhole = {"jet_whole", 1};    // rounded, halves to even
inline constexpr Function kWholeDivide = {"jet_whole_divide", 2};

// Totals.
inline constexpr Function kFirst = {"jet_first", 2};  // value, row number
inline constexpr Function kLast = {"jet_last", 2};    // value, row number
inline constexpr Function kOnly = {"jet_only", 1};    // fails with 3354 for a second value
inline constexpr Function kStDev = {"jet_stdev", 1};
inline constexpr Function kStDevP = {"jet_stdevp", 1};
inline constexpr Function kVar = {"jet_var", 1};
inline constexpr Function kVarP = {"jet_varp", 1};

// Conversions.
inline constexpr Function kConvert = {"jet_convert", 3};  // DataType, value, type
inline constexpr Function kFormat = {"jet_format", -1};   // value, type[, pattern[, day[, week]]]
inline constexpr Function kFormatNumber = {"jet_format_number", -1};  // value, type[, digits]
inline constexpr Function kHex = {"jet_hex", 1};
inline constexpr Function kIsDate = {"jet_is_date", 2};        // value, type
inline constexpr Function kIsNumeric = {"jet_is_numeric", 2};  // value, type
inline constexpr Function kMoment = {"jet_moment", 1};
inline constexpr Function kNumber = {"jet_number", 1};
inline constexpr Function kOct = {"jet_oct", 1};
inline constexpr Function kStr = {"jet_str", 2};    // value, type
inline constexpr Function kText = {"jet_text", 2};  // value, type
inline constexpr Function kVal = {"jet_val", 1};

// Numbers.
inline constexpr Function kAbs = {"jet_abs", 1};
inline constexpr Function kAtn = {"jet_atn", 1};
inline constexpr Function kCos = {"jet_cos", 1};
inline constexpr Function kExp = {"jet_exp", 1};
inline constexpr Function kFix = {"jet_fix", 1};
inline constexpr Function kInt = {"jet_int", 1};
inline constexpr Function kLog = {"jet_log", 1};
inline constexpr Function kPartition = {"jet_partition", 4};    // number, first, last, width
inline constexpr Function kRandom = {"jet_random", -1, false};  // [number]
inline constexpr Function kRound = {"jet_round", -1};           // value, type[, digits]
inline constexpr Function kSgn = {"jet_sgn", 1};
inline constexpr Function kSin = {"jet_sin", 1};
inline constexpr Function kSqr = {"jet_sqr", 1};
inline constexpr Function kTan = {"jet_tan", 1};

// Dates. An interval is a text for ParseInterval; day and week are the members of WeekRules.
inline constexpr Function kDate = {"jet_date", 0, false};
inline constexpr Function kDateAdd = {"jet_date_add", 3};  // interval, count, moment
inline constexpr Function kDateDifference = {"jet_date_difference",
                                             -1};  // interval, two moments[, day[, week]]
inline constexpr Function kDatePart = {"jet_date_part", -1};     // interval, moment[, day[, week]]
inline constexpr Function kDateSerial = {"jet_date_serial", 3};  // year, month, day
inline constexpr Function kDayOnly = {"jet_day_only", 1};
inline constexpr Function kMonthName = {"jet_month_name", -1};  // month[, is short]
inline constexpr Function kNow = {"jet_now", 0, false};
inline constexpr Function kTime = {"jet_time", 0, false};
inline constexpr Function kTimeOnly = {"jet_time_only", 1};
inline constexpr Function kTimer = {"jet_timer", 0, false};         // seconds since midnight
inline constexpr Function kTimeSerial = {"jet_time_serial", 3};     // hour, minute, second
inline constexpr Function kWeekdayName = {"jet_weekday_name", -1};  // weekday[, is short[, day]]

// Texts. A comparison is 0 for binary, 1 or 2 for case-insensitive.
inline constexpr Function kAsc = {"jet_asc", 1};
inline constexpr Function kAscW = {"jet_ascw", 1};
inline constexpr Function kChr = {"jet_chr", 1};
inline constexpr Function kChrW = {"jet_chrw", 1};
inline constexpr Function kCompareTexts = {"jet_compare_texts", -1};  // two texts[, comparison]
inline constexpr Function kInText = {"jet_in_text", -1};  // [start, ]text, sought[, comparison]
inline constexpr Function kInTextReversed = {"jet_in_text_reversed",
                                             -1};   // text, sought[, start[, comparison]]
inline constexpr Function kLeft = {"jet_left", 2};  // text, count
inline constexpr Function kLength = {"jet_length", 1};
inline constexpr Function kLower = {"jet_lower", 1};
inline constexpr Function kMid = {"jet_mid", -1};  // text, start[, count]
inline constexpr Function kReplace = {
    "jet_replace", -1};  // text, sought, replacement[, start[, count[, comparison]]]
inline constexpr Function kReverse = {"jet_reverse", 1};
inline constexpr Function kRight = {"jet_right", 2};  // text, count
inline constexpr Function kSpace = {"jet_space", 1};
inline constexpr Function kString = {"jet_string", 2};      // count, character or its code
inline constexpr Function kStrConv = {"jet_str_conv", -1};  // text, conversion[, LCID]
inline constexpr Function kTrim = {"jet_trim", 1};
inline constexpr Function kTrimLeft = {"jet_trim_left", 1};
inline constexpr Function kTrimRight = {"jet_trim_right", 1};
inline constexpr Function kUpper = {"jet_upper", 1};

}  // namespace fn
}  // namespace jet
