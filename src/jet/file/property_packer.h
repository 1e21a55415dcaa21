#pragma once

#include <string>
#include <vector>

#include "jet/file/property_block.h"

namespace jet::file {

// The block that stands in the catalogue; empty when there is no property.
std::string PackProperties(const std::vector<PropertySet>& sets);

}  // namespace jet::file
