#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <string>

namespace publish {

// What the headers of a program or library say.
struct ImageFacts {
  int bits = 0;                                        // 32 or 64; 0 if it runs as either
  bool can_be_registered = false;                      // it exports DllRegisterServer
  std::optional<std::array<std::int32_t, 4>> version;  // of its version resource, if it has one
};

// Reads an image of Windows (PE) or Linux (ELF, little-endian). Returns nothing if the file is
// neither or cannot be read. Headers are not believed: no more than a few megabytes are read, and
// nothing outside the file.
std::optional<ImageFacts> ReadImage(const std::string& file);

}  // namespace publish
