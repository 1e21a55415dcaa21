#pragma once

#include "ports/database_types.h"

// The kinds of values of the database port, for tables of cases.
namespace tests {

using ports::BinaryValue;
using ports::CurrencyValue;
using ports::DatabaseValue;
using ports::DataType;
using ports::DateValue;
using ports::DecimalValue;
using ports::EmptyValue;
using ports::NullValue;
using ports::OtherValue;

}  // namespace tests
