#pragma once

#include <cstdint>
#include <string_view>

namespace tmw {

// The CRC-32 of RAR and zip. Starts from 0; the CRC of what came before is carried on.
std::uint32_t UpdateCrc32(std::uint32_t crc, std::string_view bytes);

}  // namespace tmw
