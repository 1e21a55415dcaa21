#pragma once

#include <memory>

#include "platform/front_end.h"

namespace platform {

// The front end that shows windows; nothing where no display can be opened. Qt itself is started
// with the first window.
std::unique_ptr<FrontEnd> TryMakeQtFrontEnd();

}  // namespace platform
