#pragma once

#include <cstddef>
#include <string>
#include <vector>

namespace jet::sql {

// An action query: statements of the storage's SQL to be run in order.
struct ActionPlan {
  std::vector<std::string> steps;
  std::size_t counted = 0;  // the step whose changes are the rows touched
};

}  // namespace jet::sql
