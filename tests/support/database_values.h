#pragma once

#include "platform/database_types.h"

// The kinds of values of the database port, for tables of cases.
namespace tests {

using platform::BinaryValue;
using platform::CurrencyValue;
using platform::DatabaseValue;
using platform::DataType;
using platform::DateValue;
using platform::DecimalValue;
using platform::EmptyValue;
using platform::NullValue;
using platform::OtherValue;

}  // namespace tests
