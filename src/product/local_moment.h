#pragma once

#include <string>

namespace tmw {

// The moment by the user's clock, "2026-11-22 07:15:30". Empty if the system has no record of it.
std::string LocalMomentText();

}  // namespace tmw
