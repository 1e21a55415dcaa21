#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <utility>

#include "ports/database_types.h"

// Conversion of values to field types, and the constraints of a field on its values.
namespace jet {

// The field that a value is stored in.
struct Target {
  std::string name;
  ports::DataType type = ports::DataType::kText;
  std::int32_t size = 0;  // of a decimal: DecimalSize
  bool required = false;
  bool allow_zero_length = true;
  bool in_primary_key = false;  // or in another index that does not allow Null
};

// Null stays Null, except that a Boolean becomes False. Fails with mismatch_number (3421 on
// assignment, 3464 in a statement) if the value does not convert or is out of the type's range,
// with 3163 if a text or binary value is too long.
ports::DatabaseValue ConvertTo(const ports::DatabaseValue& value, ports::DataType type,
                               std::int32_t size, std::int32_t mismatch_number);

// Likewise for a field, which the error names.
ports::DatabaseValue ConvertFor(const ports::DatabaseValue& value, const Target& target,
                                std::int32_t mismatch_number);

// True if the text has no more than size UTF-16 units; 0 is no limit.
bool FitsText(std::string_view text, std::int32_t size);

// Fails with 3058, 3314 or 3315 if the field does not allow the value, which must have its type.
void CheckAllowed(const ports::DatabaseValue& value, const Target& target);

// The size of a field of that type; asked is the requested size of a text or binary field, 0 for
// the largest. Fails with 3259 for a type that Jet 4 tables do not have, 3163 for too large a size.
std::int32_t FieldSize(ports::DataType type, std::int32_t asked, const std::string& field);

// A decimal's precision and scale in the place of a size. 3001 for more than 28 digits or for more
// places than digits.
std::int32_t DecimalSize(std::int32_t precision, std::int32_t scale);
std::pair<std::int32_t, std::int32_t> DecimalParts(std::int32_t size);

// Rounds to the nearest ten-thousandth, halves to even; returns false if it does not fit.
bool ToCurrency(double value, std::int64_t& ten_thousandths);

}  // namespace jet
