#include "jet/store/functions.h"

#include <sqlite3.h>

#include <cmath>
#include <ctime>
#include <exception>
#include <optional>
#include <string>
#include <string_view>

#include "foundation/date_parts.h"
#include "jet/coercion.h"
#include "jet/errors.h"
#include "jet/like.h"
#include "jet/sort_key.h"
#include "jet/sql/value_type.h"
#include "jet/value_text.h"

namespace jet {
namespace {

using platform::DatabaseValue;
using platform::DataType;
using sql::ValueType;

std::string_view TextArgument(sqlite3_value* value) {
  const auto* const data = reinterpret_cast<const char*>(sqlite3_value_text(value));
  return {data == nullptr ? "" : data, static_cast<std::size_t>(sqlite3_value_bytes(value))};
}

std::string_view BytesArgument(sqlite3_value* value) {
  const auto* const data = static_cast<const char*>(sqlite3_value_blob(value));
  return {data == nullptr ? "" : data, static_cast<std::size_t>(sqlite3_value_bytes(value))};
}

bool IsNull(sqlite3_value* value) {
  return sqlite3_value_type(value) == SQLITE_NULL;
}

bool AnyNull(int count, sqlite3_value** values) {
  for (int i = 0; i < count; ++i) {
    if (IsNull(values[i])) return true;
  }
  return false;
}

// The argument as a value of the type that the translator found for it.
DatabaseValue Typed(sqlite3_value* value, ValueType type) {
  switch (sqlite3_value_type(value)) {
    case SQLITE_NULL:
      return platform::NullValue{};
    case SQLITE_TEXT:
      return std::string(TextArgument(value));
    case SQLITE_BLOB:
      return platform::BinaryValue{std::string(BytesArgument(value))};
    default:
      break;
  }
  switch (type) {
    case ValueType::kBoolean:
      return sqlite3_value_int64(value) != 0;
    case ValueType::kStoredCurrency:
      return platform::CurrencyValue{sqlite3_value_int64(value)};
    case ValueType::kDate:
      return platform::DateValue{sqlite3_value_double(value)};
    case ValueType::kSingle:
      return static_cast<float>(sqlite3_value_double(value));
    default:
      return sqlite3_value_double(value);
  }
}

struct ResultPutter {
  sqlite3_context* context;
  DataType type;

  void operator()(platform::EmptyValue) const { sqlite3_result_null(context); }
  void operator()(platform::NullValue) const { sqlite3_result_null(context); }
  void operator()(bool value) const { sqlite3_result_int(context, value ? -1 : 0); }
  void operator()(std::uint8_t value) const { sqlite3_result_int(context, value); }
  void operator()(std::int16_t value) const { sqlite3_result_int(context, value); }
  void operator()(std::int32_t value) const { sqlite3_result_int(context, value); }
  void operator()(platform::CurrencyValue value) const {
    sqlite3_result_int64(context, value.ten_thousandths);
  }
  void operator()(float value) const { sqlite3_result_double(context, static_cast<double>(value)); }
  void operator()(double value) const { sqlite3_result_double(context, value); }
  void operator()(platform::DateValue value) const { sqlite3_result_double(context, value.days); }
  void operator()(const platform::DecimalValue& value) const { PutText(value.text); }
  void operator()(const std::string& value) const {
    const std::optional<std::string> guid =
        type == DataType::kGuid ? ParseGuidText(value) : std::nullopt;
    if (guid) {
      PutBytes(*guid);
    } else {
      PutText(value);
    }
  }
  void operator()(const platform::BinaryValue& value) const { PutBytes(value.bytes); }
  void operator()(platform::OtherValue) const { sqlite3_result_null(context); }

  void PutText(const std::string& text) const {
    sqlite3_result_text64(context, text.data(), text.size(), SQLITE_TRANSIENT, SQLITE_UTF8);
  }
  void PutBytes(const std::string& bytes) const {
    sqlite3_result_blob64(context, bytes.data(), bytes.size(), SQLITE_TRANSIENT);
  }
};

void PutText(sqlite3_context* context, const std::string& text) {
  ResultPutter{context, DataType::kText}.PutText(text);
}

FunctionContext& ContextOf(sqlite3_context* context) {
  return *static_cast<FunctionContext*>(sqlite3_user_data(context));
}

// A function's body may fail like any of our code; its error is kept for the caller of the
// statement.
using Body = void (*)(sqlite3_context*, int, sqlite3_value**);

template <Body body>
void Guarded(sqlite3_context* context, int count, sqlite3_value** values) {
  try {
    body(context, count, values);
  } catch (const platform::DatabaseError& error) {
    ContextOf(context).connection.NoteError(error);
    sqlite3_result_error_code(context, SQLITE_ERROR);
  } catch (const std::exception&) {
    sqlite3_result_error_nomem(context);
  }
}

// jet_to(value, its type, field type, size, flags, field name); flags: 1 required, 2 takes empty
// texts, 4 in the primary key.
void To(sqlite3_context* context, int /*count*/, sqlite3_value** values) {
  const auto type = static_cast<DataType>(sqlite3_value_int(values[2]));
  const int flags = sqlite3_value_int(values[4]);
  const DatabaseValue value =
      ConvertTo(Typed(values[0], static_cast<ValueType>(sqlite3_value_int(values[1]))), type,
                sqlite3_value_int(values[3]), kTypeMismatch);
  if (flags != 2) {
    Target target;
    target.name = TextArgument(values[5]);
    target.required = (flags & 1) != 0;
    target.allow_zero_length = (flags & 2) != 0;
    target.in_primary_key = (flags & 4) != 0;
    CheckAllowed(value, target);
  }
  std::visit(ResultPutter{context, type}, value);
}

// jet_text(value, its type)
void Text(sqlite3_context* context, int /*count*/, sqlite3_value** values) {
  const std::optional<std::string> text =
      ValueText(Typed(values[0], static_cast<ValueType>(sqlite3_value_int(values[1]))));
  if (text) PutText(context, *text);
}

// The operator &: Null counts as an empty text unless both are.
void Join(sqlite3_context* context, int /*count*/, sqlite3_value** values) {
  if (IsNull(values[0]) && IsNull(values[1])) return;
  std::string text;
  for (int i = 0; i < 2; ++i) {
    if (!IsNull(values[i])) text += TextArgument(values[i]);
  }
  PutText(context, text);
}

double NumberOf(sqlite3_value* value) {
  switch (sqlite3_value_type(value)) {
    case SQLITE_TEXT: {
      const std::optional<double> number = ParseNumberText(TextArgument(value));
      if (!number) Fail(kTypeMismatch);
      return *number;
    }
    case SQLITE_BLOB:
      Fail(kTypeMismatch);
    default:
      return sqlite3_value_double(value);
  }
}

void Number(sqlite3_context* context, int /*count*/, sqlite3_value** values) {
  if (IsNull(values[0])) return;
  if (sqlite3_value_type(values[0]) == SQLITE_INTEGER) {
    sqlite3_result_value(context, values[0]);
  } else {
    sqlite3_result_double(context, NumberOf(values[0]));
  }
}

// The operator + between values whose types show at run time only.
void Add(sqlite3_context* context, int count, sqlite3_value** values) {
  if (AnyNull(count, values)) return;
  if (sqlite3_value_type(values[0]) == SQLITE_TEXT &&
      sqlite3_value_type(values[1]) == SQLITE_TEXT) {
    PutText(context, std::string(TextArgument(values[0])) + std::string(TextArgument(values[1])));
  } else {
    sqlite3_result_double(context, NumberOf(values[0]) + NumberOf(values[1]));
  }
}

void PutFinite(sqlite3_context* context, double value) {
  if (!std::isfinite(value)) Fail(kOverflow);
  sqlite3_result_double(context, value);
}

void Divide(sqlite3_context* context, int count, sqlite3_value** values) {
  if (AnyNull(count, values)) return;
  const double divisor = NumberOf(values[1]);
  if (divisor == 0) Fail(kDivisionByZero);
  PutFinite(context, NumberOf(values[0]) / divisor);
}

// The operands of \ and Mod are rounded to whole 32-bit numbers first, halves to even.
std::int64_t WholeOf(sqlite3_value* value) {
  const double whole = std::nearbyint(NumberOf(value));
  if (!(std::fabs(whole) <= 2147483648.0)) Fail(kOverflow);
  return static_cast<std::int64_t>(whole);
}

void WholeDivide(sqlite3_context* context, int count, sqlite3_value** values) {
  if (AnyNull(count, values)) return;
  const std::int64_t divisor = WholeOf(values[1]);
  if (divisor == 0) Fail(kDivisionByZero);
  sqlite3_result_int64(context, WholeOf(values[0]) / divisor);
}

void Modulo(sqlite3_context* context, int count, sqlite3_value** values) {
  if (AnyNull(count, values)) return;
  const std::int64_t divisor = WholeOf(values[1]);
  if (divisor == 0) Fail(kDivisionByZero);
  sqlite3_result_int64(context, WholeOf(values[0]) % divisor);
}

void Power(sqlite3_context* context, int count, sqlite3_value** values) {
  if (AnyNull(count, values)) return;
  PutFinite(context, std::pow(NumberOf(values[0]), NumberOf(values[1])));
}

void Like(sqlite3_context* context, int count, sqlite3_value** values) {
  if (AnyNull(count, values)) return;
  sqlite3_result_int(context,
                     MatchesLike(TextArgument(values[0]), TextArgument(values[1])) ? 1 : 0);
}

// Values of unlike kinds do not compare.
int CompareValues(sqlite3_value* a, sqlite3_value* b) {
  const bool is_text = sqlite3_value_type(a) == SQLITE_TEXT;
  if (is_text != (sqlite3_value_type(b) == SQLITE_TEXT)) Fail(kTypeMismatch);
  if (is_text) return CompareTexts(TextArgument(a), TextArgument(b));
  const double x = NumberOf(a);
  const double y = NumberOf(b);
  return x < y ? -1 : x > y ? 1 : 0;
}

void Compare(sqlite3_context* context, int count, sqlite3_value** values) {
  if (AnyNull(count, values)) return;
  sqlite3_result_int(context, CompareValues(values[0], values[1]));
}

void Between(sqlite3_context* context, int count, sqlite3_value** values) {
  if (AnyNull(count, values)) return;
  const int low = CompareValues(values[0], values[1]);
  const int high = CompareValues(values[0], values[2]);
  sqlite3_result_int(context, (low >= 0 && high <= 0) || (low <= 0 && high >= 0) ? 1 : 0);
}

// jet_in(value, item, …): Null among the items makes "not found" unknown.
void In(sqlite3_context* context, int count, sqlite3_value** values) {
  if (IsNull(values[0])) return;
  bool met_null = false;
  for (int i = 1; i < count; ++i) {
    if (IsNull(values[i])) {
      met_null = true;
    } else if (CompareValues(values[0], values[i]) == 0) {
      sqlite3_result_int(context, 1);
      return;
    }
  }
  if (!met_null) sqlite3_result_int(context, 0);
}

void Guid(sqlite3_context* context, int /*count*/, sqlite3_value** values) {
  if (!IsNull(values[0])) PutText(context, GuidText(BytesArgument(values[0])));
}

double LocalNow() {
  const std::time_t now = std::time(nullptr);
  const std::tm* const local = std::localtime(&now);
  tmw::DateParts parts;
  parts.year = local->tm_year + 1900;
  parts.month = local->tm_mon + 1;
  parts.day = local->tm_mday;
  parts.hour = local->tm_hour;
  parts.minute = local->tm_min;
  parts.second = local->tm_sec > 59 ? 59 : local->tm_sec;
  return tmw::DateFromParts(parts).value_or(0);
}

void Now(sqlite3_context* context, int /*count*/, sqlite3_value** /*values*/) {
  sqlite3_result_double(context, LocalNow());
}

void Date(sqlite3_context* context, int /*count*/, sqlite3_value** /*values*/) {
  sqlite3_result_double(context, std::floor(LocalNow()));
}

void Time(sqlite3_context* context, int /*count*/, sqlite3_value** /*values*/) {
  const double now = LocalNow();
  sqlite3_result_double(context, now - std::floor(now));
}

// jet_next_number(table)
void NextNumber(sqlite3_context* context, int /*count*/, sqlite3_value** values) {
  sqlite3_result_int64(context,
                       ContextOf(context).autonumbers.Next(sqlite3_value_int64(values[0])));
}

// jet_used_number(table, number): the number, or the next one for Null.
void UsedNumber(sqlite3_context* context, int count, sqlite3_value** values) {
  if (IsNull(values[1])) {
    NextNumber(context, count, values);
    return;
  }
  const std::int64_t number = sqlite3_value_int64(values[1]);
  ContextOf(context).autonumbers.NoteUsed(sqlite3_value_int64(values[0]), number);
  sqlite3_result_int64(context, number);
}

int Collate(void* /*unused*/, int a_length, const void* a, int b_length, const void* b) {
  return CompareTexts({static_cast<const char*>(a), static_cast<std::size_t>(a_length)},
                      {static_cast<const char*>(b), static_cast<std::size_t>(b_length)});
}

struct Entry {
  const char* name;
  Body function;
  int count;
  bool is_pure;
};

constexpr Entry kFunctions[] = {
    {"jet_add", Guarded<Add>, 2, true},
    {"jet_between", Guarded<Between>, 3, true},
    {"jet_compare", Guarded<Compare>, 2, true},
    {"jet_date", Guarded<Date>, 0, false},
    {"jet_divide", Guarded<Divide>, 2, true},
    {"jet_guid", Guarded<Guid>, 1, true},
    {"jet_in", Guarded<In>, -1, true},
    {"jet_join", Guarded<Join>, 2, true},
    {"jet_like", Guarded<Like>, 2, true},
    {"jet_modulo", Guarded<Modulo>, 2, true},
    {"jet_next_number", Guarded<NextNumber>, 1, false},
    {"jet_now", Guarded<Now>, 0, false},
    {"jet_number", Guarded<Number>, 1, true},
    {"jet_power", Guarded<Power>, 2, true},
    {"jet_text", Guarded<Text>, 2, true},
    {"jet_time", Guarded<Time>, 0, false},
    {"jet_to", Guarded<To>, 6, true},
    {"jet_used_number", Guarded<UsedNumber>, 2, false},
    {"jet_whole_divide", Guarded<WholeDivide>, 2, true},
};

}  // namespace

void RegisterFunctions(FunctionContext& context) {
  sqlite3* const handle = context.connection.Handle();
  sqlite3_create_collation_v2(handle, "JET", SQLITE_UTF8, nullptr, Collate, nullptr);
  for (const Entry& entry : kFunctions) {
    const int flags = SQLITE_UTF8 | (entry.is_pure ? SQLITE_DETERMINISTIC : 0);
    const int code = sqlite3_create_function_v2(handle, entry.name, entry.count, flags, &context,
                                                entry.function, nullptr, nullptr, nullptr);
    if (code != SQLITE_OK) context.connection.FailWith(code);
  }
}

}  // namespace jet
