#pragma once

#include <vector>

#include "tests/platform/windows/dao/served_object.h"

namespace tests {

// A component that a library serves: found by its name, made without arguments.
struct ServedComponent {
  const wchar_t* name;
  CLSID class_id;  // of these tests alone
  platform::ComPointer<ServedObject> (*make)();
};

// Defined by each library; component_library.cpp has the entry points and the registration.
const std::vector<ServedComponent>& ServedComponents();

}  // namespace tests
