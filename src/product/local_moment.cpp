#include "product/local_moment.h"

#include <array>
#include <cstdio>

#include "ports/log_files.h"
#include "ports/ports.h"

namespace tmw {

std::string LocalMomentText() {
  ports::LogFiles* const log_files = ports::CurrentPorts().log_files;
  if (log_files == nullptr) return {};
  const ports::LocalMoment now = log_files->Now();
  std::array<char, 80> text{};
  static_cast<void>(std::snprintf(text.data(), text.size(), "%04d-%02d-%02d %02d:%02d:%02d",
                                  now.year, now.month, now.day, now.hour, now.minute, now.second));
  return text.data();
}

}  // namespace tmw
