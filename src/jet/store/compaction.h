#pragma once

#include <string>

namespace jet {

// As DatabaseEngine::CompactDatabase says.
void Compact(const std::string& source, const std::string& target);

}  // namespace jet
