#pragma once

#include <cstdint>

#include "ports/database_types.h"

namespace jet {

// The static type of an expression. Functions that convert values at run time get its number.
enum class ValueType : std::int32_t {
  kUnknown = 0,
  kNull = 1,
  kBoolean = 2,  // -1 or 0
  kInteger = 3,  // Byte, Integer, Long
  kNumber = 4,   // Double
  kSingle = 5,
  kCurrency = 6,  // as a floating number
  kDate = 7,
  kText = 8,
  kBinary = 9,
  kStoredCurrency = 10,  // ten-thousandths, as in a column
  kStoredGuid = 11,      // 16 bytes
  kStoredDecimal = 12,   // the text of a decimal
};

ValueType TypeOfField(ports::DataType type);
// The field type that can hold computed values of a type.
ports::DataType TypeOfColumn(ValueType type);

}  // namespace jet
