#pragma once

#include <string>
#include <vector>

namespace support {

// The program with the given arguments; returns its exit code. In a terminal it answers there;
// otherwise it asks where to save the bundle and answers with boxes.
int Run(const std::vector<std::string>& arguments);

}  // namespace support
