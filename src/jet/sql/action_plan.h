#pragma once

#include <cstddef>
#include <string>
#include <vector>

namespace jet::sql {

// An action query as statements for the storage, to be run in order.
struct ActionPlan {
  std::vector<std::string> steps;
  std::size_t counted = 0;  // the step whose row count is the result
};

}  // namespace jet::sql
