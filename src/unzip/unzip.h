#pragma once

#include <cstddef>
#include <functional>
#include <string>

namespace tmw {

// Gets the content in pieces, in order. Returns false to stop.
using UnpackedBytes = std::function<bool(const char* bytes, std::size_t length)>;

// Unpacks the only entry of a zip file, stored or deflated. Returns false with a reason in the
// user's language if the archive cannot be read, holds anything else or is damaged: what has been
// handed over is then not to be used. The entry's length and CRC-32 are checked.
[[nodiscard]] bool TryUnpackOnlyEntry(const std::string& archive, const UnpackedBytes& take,
                                      std::string& reason);

}  // namespace tmw
