#pragma once

#include "platform/windows/com.h"
#include "ports/database_types.h"

namespace platform {

// What a failed call of DAO means: its own number (the code's low half where the code says that it
// comes from such a component), words and source. Takes over the record's strings.
ports::DatabaseError ErrorOfCall(HRESULT result, EXCEPINFO& details);

// DAO itself cannot be had.
ports::DatabaseError NoDao(HRESULT result);

}  // namespace platform
