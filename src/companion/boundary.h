#pragma once

#include <new>

namespace companion {

// The result of the action; one of the others if it throws. No exception may cross the interface.
template <typename Result, typename Action>
Result WithoutExceptions(Result no_memory, Result otherwise, Action action) noexcept {
  try {
    return action();
  } catch (const std::bad_alloc&) {
    return no_memory;
  } catch (...) {
    return otherwise;
  }
}

}  // namespace companion
