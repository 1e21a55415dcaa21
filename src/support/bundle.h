#pragma once

#include <string>

namespace support {

// The bundle's file name when the user gives none, with the date and the time in it.
std::string SuggestedName();

// Writes the bundle, a zip file: the report, the logs and, where an update has left them, the
// digest, the server list and the manifest. An existing file of that name is replaced. A failure is
// raised; nothing but the bundle is left behind.
void MakeBundle(const std::string& target);

}  // namespace support
