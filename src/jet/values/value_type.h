#pragma once

#include <cstdint>

#include "ports/database_types.h"

namespace jet {

// What is known of an expression's value before it is computed. The numbers are handed to the
// functions that convert values at run time.
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
  kStoredCurrency = 10,  // ten-thousandths, as a column holds them
  kStoredGuid = 11,      // 16 bytes
};

ValueType TypeOfField(ports::DataType type);
// The field type that holds computed values of a type.
ports::DataType TypeOfColumn(ValueType type);

}  // namespace jet
