#pragma once

#include "platform/database_types.h"
#include "platform/windows/com.h"

namespace platform {

// A value of the port as an automation value and back. An empty VARIANT is handed in.
void ToVariant(const DatabaseValue& value, VARIANT& variant);
DatabaseValue FromVariant(const VARIANT& variant);

// Parts of what DAO answers; another kind of value gives the type's zero.
std::int32_t LongOf(const DatabaseValue& value);
bool BooleanOf(const DatabaseValue& value);
std::string TextOf(const DatabaseValue& value);

}  // namespace platform
