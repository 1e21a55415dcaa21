#pragma once

#include <span>

#include "jet/store/function_call.h"

namespace jet {

std::span<const FunctionEntry> NumberFunctions();

}  // namespace jet
