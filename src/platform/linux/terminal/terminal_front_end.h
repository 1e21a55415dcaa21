#pragma once

#include <memory>

#include "ports/front_end.h"

namespace platform {

// Boxes as lines of a terminal, the progress window as a block of lines redrawn in place.
std::unique_ptr<ports::FrontEnd> MakeTerminalFrontEnd();

}  // namespace platform
