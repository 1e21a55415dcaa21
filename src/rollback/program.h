#pragma once

#include <string>
#include <vector>

namespace rollback {

// The program with the given arguments; returns its exit code. Unless it only answers or rehearses,
// it waits until the product is closed and goes on as a copy outside of the product's folder. In a
// terminal it answers there, otherwise with boxes.
int Run(const std::vector<std::string>& arguments);

}  // namespace rollback
