#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "ports/database_types.h"

// Conversion of values to field types, and what a field demands of its values.
namespace jet {

// What a value is stored into.
struct Target {
  std::string name;
  ports::DataType type = ports::DataType::kText;
  std::int32_t size = 0;
  bool required = false;
  bool allow_zero_length = true;
  bool in_primary_key = false;  // or in an index that forbids Null
};

// The value as the type has it, Null staying Null (a Boolean has none: it becomes False). What does
// not convert, or does not fit the type's range, fails with the number given (3421 on assignment,
// 3464 in a statement); a text or binary value that is too long fails with 3163.
ports::DatabaseValue ConvertTo(const ports::DatabaseValue& value, ports::DataType type,
                               std::int32_t size, std::int32_t mismatch_number);

// Likewise for a field, which the failure names.
ports::DatabaseValue ConvertFor(const ports::DatabaseValue& value, const Target& target,
                                std::int32_t mismatch_number);

// True when a text is not longer than that many UTF-16 units; 0 is no limit.
bool FitsText(std::string_view text, std::int32_t size);

// Fails with 3058, 3314 or 3315 when the field refuses the value. It must have the field's type.
void CheckAllowed(const ports::DatabaseValue& value, const Target& target);

// The size that the engine gives a field of that type; asked is the wanted size of a text or binary
// field. Fails with 3259 for a type that Jet 4 tables do not have, 3163 for a size above the limit.
std::int32_t FieldSize(ports::DataType type, std::int32_t asked, const std::string& field);

// To the nearest ten-thousandth, halves to even; false when it does not fit.
bool ToCurrency(double value, std::int64_t& ten_thousandths);

}  // namespace jet
