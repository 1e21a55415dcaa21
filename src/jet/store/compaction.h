#pragma once

#include <string>

namespace jet {

// See DatabaseEngine::CompactDatabase.
void Compact(const std::string& source, const std::string& target);

}  // namespace jet
