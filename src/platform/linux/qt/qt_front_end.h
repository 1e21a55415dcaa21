#pragma once

#include <memory>

#include "ports/front_end.h"

namespace platform {

// The front end that shows windows; nothing where no display can be opened. Qt itself is started
// with the first window.
std::unique_ptr<ports::FrontEnd> TryMakeQtFrontEnd();

}  // namespace platform
