#include "jet/store/aggregates.h"

#include <sqlite3.h>

#include <cmath>
#include <exception>

#include "jet/errors.h"
#include "jet/storage_sql.h"

namespace jet {
namespace {

// SQLite returns a new state filled with zeros, and null if there was no row.
template <typename State>
State* StateOf(sqlite3_context* context, bool is_new) {
  return static_cast<State*>(
      sqlite3_aggregate_context(context, is_new ? static_cast<int>(sizeof(State)) : 0));
}

struct Kept {
  sqlite3_value* value;
  sqlite3_int64 row;
};

template <bool is_last>
void Keep(sqlite3_context* context, int /*count*/, sqlite3_value** values) {
  auto* const kept = StateOf<Kept>(context, true);
  if (kept == nullptr) return sqlite3_result_error_nomem(context);
  const sqlite3_int64 row = sqlite3_value_int64(values[1]);
  const bool is_better = kept->value == nullptr || (is_last ? row >= kept->row : row < kept->row);
  if (!is_better) return;
  sqlite3_value_free(kept->value);
  *kept = {sqlite3_value_dup(values[0]), row};
}

void Only(sqlite3_context* context, int /*count*/, sqlite3_value** values) {
  auto* const kept = StateOf<Kept>(context, true);
  if (kept == nullptr) return sqlite3_result_error_nomem(context);
  if (kept->value == nullptr) {
    kept->value = sqlite3_value_dup(values[0]);
    return;
  }
  try {
    static_cast<Connection*>(sqlite3_user_data(context))->NoteError(MakeError(kManyRowsInSubquery));
    sqlite3_result_error_code(context, SQLITE_ERROR);
  } catch (const std::exception&) {
    sqlite3_result_error_nomem(context);
  }
}

void PutKept(sqlite3_context* context) {
  auto* const kept = StateOf<Kept>(context, false);
  if (kept == nullptr || kept->value == nullptr) return;
  sqlite3_result_value(context, kept->value);
  sqlite3_value_free(kept->value);
  kept->value = nullptr;
}

// A running mean and sum of squared distances, so that large values lose no precision.
struct Spread {
  double count;
  double mean;
  double squares;
};

void AddToSpread(sqlite3_context* context, int /*count*/, sqlite3_value** values) {
  if (sqlite3_value_type(values[0]) == SQLITE_NULL) return;
  auto* const spread = StateOf<Spread>(context, true);
  if (spread == nullptr) return sqlite3_result_error_nomem(context);
  const double value = sqlite3_value_double(values[0]);
  const double distance = value - spread->mean;
  spread->count += 1;
  spread->mean += distance / spread->count;
  spread->squares += distance * (value - spread->mean);
}

// Null for a sample of one value.
template <bool is_sample, bool is_root>
void PutSpread(sqlite3_context* context) {
  const auto* const spread = StateOf<Spread>(context, false);
  if (spread == nullptr) return;
  const double divisor = spread->count - (is_sample ? 1 : 0);
  if (divisor <= 0) return;
  const double variance = spread->squares / divisor;
  sqlite3_result_double(context, is_root ? std::sqrt(variance) : variance);
}

struct Entry {
  Function function;
  void (*step)(sqlite3_context*, int, sqlite3_value**);
  void (*final)(sqlite3_context*);
};

constexpr Entry kAggregates[] = {
    {fn::kFirst, Keep<false>, PutKept},
    {fn::kLast, Keep<true>, PutKept},
    {fn::kOnly, Only, PutKept},
    {fn::kStDev, AddToSpread, PutSpread<true, true>},
    {fn::kStDevP, AddToSpread, PutSpread<false, true>},
    {fn::kVar, AddToSpread, PutSpread<true, false>},
    {fn::kVarP, AddToSpread, PutSpread<false, false>},
};

}  // namespace

void RegisterAggregates(Connection& connection) {
  for (const Entry& entry : kAggregates) {
    const int code = sqlite3_create_function_v2(
        connection.Handle(), entry.function.name, entry.function.count,
        SQLITE_UTF8 | SQLITE_DETERMINISTIC, &connection, nullptr, entry.step, entry.final, nullptr);
    if (code != SQLITE_OK) connection.FailWith(code);
  }
}

}  // namespace jet
