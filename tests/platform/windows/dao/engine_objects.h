#pragma once

#include "tests/platform/windows/dao/served_object.h"

namespace tests {

// DAO's engine with everything that is reached through it, over the embedded engine.
platform::ComPointer<ServedObject> MakeServedEngine();

}  // namespace tests
