#pragma once

#include "platform/windows/com.h"
#include "ports/database_types.h"

namespace platform {

// A value of the port as an automation value and back. An empty VARIANT is handed in.
void ToVariant(const ports::DatabaseValue& value, VARIANT& variant);
ports::DatabaseValue FromVariant(const VARIANT& variant);

// Parts of what DAO answers; another kind of value gives the type's zero.
std::int32_t LongOf(const ports::DatabaseValue& value);
bool BooleanOf(const ports::DatabaseValue& value);
std::string TextOf(const ports::DatabaseValue& value);

}  // namespace platform
