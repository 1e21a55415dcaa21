#pragma once

#include <cstddef>
#include <functional>

namespace publish {

// One for each core of the machine.
std::size_t WorkerCount();

// Calls action with every number below count, several calls side by side on that many threads. The
// first exception ends the work; it is raised here when all threads have come to rest.
void RunSideBySide(std::size_t count, std::size_t workers,
                   const std::function<void(std::size_t)>& action);

}  // namespace publish
