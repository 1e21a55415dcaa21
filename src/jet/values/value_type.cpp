#include "jet/values/value_type.h"

namespace jet {

namespace {

struct TypePair {
  ports::DataType field;
  ValueType value;
};

// The first field type of several is the one that holds computed values.
constexpr TypePair kPairs[] = {
    {ports::DataType::kBoolean, ValueType::kBoolean},
    {ports::DataType::kLong, ValueType::kInteger},
    {ports::DataType::kInteger, ValueType::kInteger},
    {ports::DataType::kByte, ValueType::kInteger},
    {ports::DataType::kDouble, ValueType::kNumber},
    {ports::DataType::kSingle, ValueType::kSingle},
    {ports::DataType::kCurrency, ValueType::kCurrency},
    {ports::DataType::kCurrency, ValueType::kStoredCurrency},
    {ports::DataType::kDate, ValueType::kDate},
    {ports::DataType::kText, ValueType::kText},
    {ports::DataType::kMemo, ValueType::kText},
    {ports::DataType::kGuid, ValueType::kText},
    {ports::DataType::kGuid, ValueType::kStoredGuid},
    {ports::DataType::kLongBinary, ValueType::kBinary},
    {ports::DataType::kDecimal, ValueType::kNumber},
    {ports::DataType::kDecimal, ValueType::kStoredDecimal},
};

}  // namespace

ValueType TypeOfField(ports::DataType type) {
  for (const TypePair& pair : kPairs) {
    if (pair.field == type) return pair.value;
  }
  return ValueType::kBinary;
}

ports::DataType TypeOfColumn(ValueType type) {
  for (const TypePair& pair : kPairs) {
    if (pair.value == type) return pair.field;
  }
  return ports::DataType::kText;
}

}  // namespace jet
