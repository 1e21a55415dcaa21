#include "platform/front_end.h"

#include <cstdlib>
#include <string_view>

#include "platform/linux/qt_front_end.h"
#include "platform/linux/terminal_front_end.h"

namespace platform {

std::unique_ptr<FrontEnd> MakeFrontEnd() {
  const char* wanted = std::getenv("TMW_FRONT_END");
  if (wanted == nullptr || std::string_view(wanted) != "terminal") {
    if (auto windows = TryMakeQtFrontEnd()) return windows;
  }
  return MakeTerminalFrontEnd();
}

}  // namespace platform
