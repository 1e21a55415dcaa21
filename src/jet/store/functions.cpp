#include "jet/store/functions.h"

#include <sqlite3.h>

#include <string>
#include <string_view>

#include "jet/errors.h"
#include "jet/file/packed_text.h"
#include "jet/store/conversion_functions.h"
#include "jet/store/date_functions.h"
#include "jet/store/number_functions.h"
#include "jet/store/operator_functions.h"
#include "jet/store/row_limit.h"
#include "jet/store/text_functions.h"
#include "jet/values/coercion.h"
#include "jet/values/decimal.h"
#include "jet/values/sort_key.h"
#include "jet/values/value_text.h"
#include "jet/values/value_type.h"

namespace jet {
namespace {

using ports::DatabaseValue;
using ports::DataType;

// A fast path for common values that already have the field's type.
bool IsStorable(const FunctionCall& call, DataType type) {
  switch (type) {
    case DataType::kText:
    case DataType::kMemo: {
      if (!call.IsText(0)) return false;
      const std::string_view text = call.Text(0);
      const auto size = static_cast<std::int32_t>(call.Integer(3));
      return !text.empty() && file::CanPackText(text) &&
             FitsText(text, type == DataType::kText ? size : 0);
    }
    case DataType::kLong:
      return call.IsWhole(0) && static_cast<ValueType>(call.Integer(1)) == ValueType::kInteger &&
             call.Integer(0) == static_cast<std::int32_t>(call.Integer(0));
    case DataType::kDouble:
      return call.IsFinite(0);
    default:
      return false;
  }
}

void Store(FunctionCall& call) {
  const auto type = static_cast<DataType>(call.Integer(2));
  if (IsStorable(call, type)) return call.PutArgument(0);
  const std::int64_t flags = call.Integer(4);
  const Target target = {std::string(call.Text(5)),
                         type,
                         static_cast<std::int32_t>(call.Integer(3)),
                         (flags & fn::kRequired) != 0,
                         (flags & fn::kTakesZeroLength) != 0,
                         (flags & fn::kInPrimaryKey) != 0};
  const DatabaseValue value = ConvertFor(call.Typed(0), target, kTypeMismatch);
  CheckAllowed(value, target);
  CheckPackable(value, target);
  call.PutStored(value, type);
}

// How many bytes of a record a value takes up.
void StoredLength(FunctionCall& call) {
  const auto type = static_cast<DataType>(call.Integer(1));
  std::size_t length = 0;
  if (call.IsText(0)) {
    length = StoredTextLength(call.Text(0), type, call.Integer(2) != 0);
  } else if (!call.IsNull(0)) {
    length = StoredBytesLength(call.Bytes(0).size(), type);
  }
  call.PutInteger(static_cast<std::int64_t>(length));
}

// How many bytes of an index key a text or a binary value takes up.
void KeyLength(FunctionCall& call) {
  if (call.IsNull(0)) return call.PutInteger(0);
  const std::size_t length =
      call.IsText(0) ? TextKeyLength(call.Text(0)) : BytesKeyLength(call.Bytes(0).size());
  call.PutInteger(static_cast<std::int64_t>(length));
}

void Guid(FunctionCall& call) {
  call.PutText(GuidText(call.Bytes(0)));
}

void NextNumber(FunctionCall& call) {
  call.PutInteger(call.Context().autonumbers.Next(call.Integer(0)));
}

// Null takes the next number.
void UsedNumber(FunctionCall& call) {
  if (call.IsNull(1)) {
    NextNumber(call);
    return;
  }
  call.Context().autonumbers.NoteUsed(call.Integer(0), call.Integer(1));
  call.PutArgument(1);
}

// Called by the triggers of a relation.
void Refuse(FunctionCall& call) {
  Fail(static_cast<std::int32_t>(call.Integer(0)), call.Text(1));
}

int CollateDecimals(void* /*unused*/, int a_length, const void* a, int b_length, const void* b) {
  return CompareDecimals({static_cast<const char*>(a), static_cast<std::size_t>(a_length)},
                         {static_cast<const char*>(b), static_cast<std::size_t>(b_length)});
}

int Collate(void* /*unused*/, int a_length, const void* a, int b_length, const void* b) {
  return CompareTexts({static_cast<const char*>(a), static_cast<std::size_t>(a_length)},
                      {static_cast<const char*>(b), static_cast<std::size_t>(b_length)});
}

constexpr FunctionEntry kFunctions[] = {
    {fn::kGuid, Strict<Guid>},
    {fn::kKeyLength, Guarded<KeyLength>},
    {fn::kNextNumber, Guarded<NextNumber>},
    {fn::kRefuse, Guarded<Refuse>},
    {fn::kStore, Guarded<Store>},
    {fn::kStoredLength, Guarded<StoredLength>},
    {fn::kUsedNumber, Guarded<UsedNumber>},
};

void Register(FunctionContext& context, std::span<const FunctionEntry> entries) {
  for (const FunctionEntry& entry : entries) {
    const int flags =
        SQLITE_UTF8 | SQLITE_INNOCUOUS | (entry.function.is_pure ? SQLITE_DETERMINISTIC : 0);
    const int code = sqlite3_create_function_v2(context.connection.Handle(), entry.function.name,
                                                entry.function.count, flags, &context, entry.body,
                                                nullptr, nullptr, nullptr);
    if (code != SQLITE_OK) context.connection.FailWith(code);
  }
}

}  // namespace

void RegisterFunctions(FunctionContext& context) {
  sqlite3_create_collation_v2(context.connection.Handle(), kCollationName, SQLITE_UTF8, nullptr,
                              Collate, nullptr);
  sqlite3_create_collation_v2(context.connection.Handle(), kDecimalCollationName, SQLITE_UTF8,
                              nullptr, CollateDecimals, nullptr);
  Register(context, kFunctions);
  Register(context, OperatorFunctions());
  Register(context, ConversionFunctions());
  Register(context, TextFunctions());
  Register(context, NumberFunctions());
  Register(context, DateFunctions());
}

}  // namespace jet
