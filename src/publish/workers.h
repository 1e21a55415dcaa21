#pragma once

#include <cstddef>
#include <functional>

namespace publish {

// The number of the machine's cores.
std::size_t WorkerCount();

// Calls action with every number below count, in parallel on up to `workers` threads. An exception
// stops the work; the first one is rethrown after all threads have ended.
void RunSideBySide(std::size_t count, std::size_t workers,
                   const std::function<void(std::size_t)>& action);

}  // namespace publish
