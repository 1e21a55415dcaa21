#pragma once

#include <sqlite3.h>

#include <cstdint>
#include <string_view>

#include "jet/storage_sql.h"
#include "jet/store/functions.h"
#include "ports/database_types.h"

// The arguments and the result of one call by SQLite. If no result is put, it is Null.
namespace jet {

class FunctionCall {
 public:
  FunctionCall(sqlite3_context* context, int count, sqlite3_value** values)
      : context_(context), values_(values), count_(count) {}

  FunctionContext& Context() const;
  int Count() const { return count_; }

  bool IsNull(int index) const { return sqlite3_value_type(values_[index]) == SQLITE_NULL; }
  bool IsText(int index) const { return sqlite3_value_type(values_[index]) == SQLITE_TEXT; }
  bool IsWhole(int index) const { return sqlite3_value_type(values_[index]) == SQLITE_INTEGER; }
  bool IsFinite(int index) const;  // a floating-point number, not infinite
  bool AnyNull() const;

  std::string_view Text(int index) const;
  std::string_view Bytes(int index) const;
  std::int64_t Integer(int index) const { return sqlite3_value_int64(values_[index]); }
  // Reads a text as a number; fails with 3464 if it is none.
  double Number(int index) const;
  // Rounds to 32 bits, halves to even; fails with 6 if it does not fit.
  std::int32_t Whole(int index) const;
  std::int32_t WholeOr(int index, std::int32_t fallback) const;
  // Reads a text as a date or a number; fails with 6 if it is out of the range of dates.
  double Moment(int index) const;
  // The value at the index, which has the type (ValueType) that the next argument gives.
  ports::DatabaseValue Typed(int index) const;

  void PutInteger(std::int64_t value) { sqlite3_result_int64(context_, value); }
  void PutTruth(bool value) { PutInteger(value ? 1 : 0); }
  void PutBoolean(bool value) { PutInteger(value ? -1 : 0); }
  // Fails with 6 if the number is not finite.
  void PutNumber(double value);
  void PutText(std::string_view text);
  void PutBytes(std::string_view bytes);
  // In the form in which a field of that type is stored.
  void PutStored(const ports::DatabaseValue& value, ports::DataType type);
  void PutArgument(int index) { sqlite3_result_value(context_, values_[index]); }

 private:
  sqlite3_context* context_;
  sqlite3_value** values_;
  int count_;
};

using FunctionBody = void (*)(FunctionCall& call);

// Runs a body and keeps its error for the statement. A strict body is run only if no argument is
// Null; otherwise the result is Null.
void RunGuarded(FunctionBody body, bool is_strict, sqlite3_context* context, int count,
                sqlite3_value** values);

template <FunctionBody body>
void Guarded(sqlite3_context* context, int count, sqlite3_value** values) {
  RunGuarded(body, false, context, count, values);
}
template <FunctionBody body>
void Strict(sqlite3_context* context, int count, sqlite3_value** values) {
  RunGuarded(body, true, context, count, values);
}

struct FunctionEntry {
  Function function;
  void (*body)(sqlite3_context*, int, sqlite3_value**);
};

}  // namespace jet
