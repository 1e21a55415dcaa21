#include "platform/front_end.h"

#include "platform/linux/terminal_front_end.h"

namespace platform {

std::unique_ptr<FrontEnd> MakeFrontEnd() {
  return MakeTerminalFrontEnd();
}

}  // namespace platform
