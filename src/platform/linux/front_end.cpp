#include "platform/factories.h"

#include <cstdlib>
#include <string_view>

#include "platform/linux/qt/qt_front_end.h"
#include "platform/linux/terminal/terminal_front_end.h"
#include "ports/front_end.h"

namespace platform {

std::unique_ptr<ports::FrontEnd> MakeFrontEnd(bool in_terminal) {
  const char* wanted = std::getenv("TMW_FRONT_END");
  if (!in_terminal && (wanted == nullptr || std::string_view(wanted) != "terminal")) {
    if (auto windows = TryMakeQtFrontEnd()) return windows;
  }
  return MakeTerminalFrontEnd();
}

}  // namespace platform
