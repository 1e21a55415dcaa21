#pragma once

#include <memory>

#include "ports/front_end.h"

namespace platform {

// Boxes as lines of a terminal, the window of a run as a block of lines redrawn in place.
std::unique_ptr<ports::FrontEnd> MakeTerminalFrontEnd();

}  // namespace platform
