#include "jet/values/value_type.h"

namespace jet {

ValueType TypeOfField(ports::DataType type) {
  switch (type) {
    case ports::DataType::kBoolean:
      return ValueType::kBoolean;
    case ports::DataType::kByte:
    case ports::DataType::kInteger:
    case ports::DataType::kLong:
      return ValueType::kInteger;
    case ports::DataType::kCurrency:
      return ValueType::kCurrency;
    case ports::DataType::kSingle:
      return ValueType::kSingle;
    case ports::DataType::kDouble:
      return ValueType::kNumber;
    case ports::DataType::kDate:
      return ValueType::kDate;
    case ports::DataType::kText:
    case ports::DataType::kMemo:
    case ports::DataType::kGuid:
      return ValueType::kText;
    default:
      return ValueType::kBinary;
  }
}

ports::DataType TypeOfColumn(ValueType type) {
  switch (type) {
    case ValueType::kBoolean:
      return ports::DataType::kBoolean;
    case ValueType::kInteger:
      return ports::DataType::kLong;
    case ValueType::kNumber:
      return ports::DataType::kDouble;
    case ValueType::kSingle:
      return ports::DataType::kSingle;
    case ValueType::kCurrency:
    case ValueType::kStoredCurrency:
      return ports::DataType::kCurrency;
    case ValueType::kDate:
      return ports::DataType::kDate;
    case ValueType::kBinary:
      return ports::DataType::kLongBinary;
    case ValueType::kStoredGuid:
      return ports::DataType::kGuid;
    default:
      return ports::DataType::kText;
  }
}

}  // namespace jet
