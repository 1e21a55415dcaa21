#pragma once

#include <cstdint>
#include <span>
#include <string>

// Digests as text (module miHashApi), computed by the companion library. Two lower-case
// hexadecimal digits a byte.
namespace tmw {

std::string GetFileHash(const std::string& file_name);

// Of the text's UTF-16 little-endian code units, without a mark or terminator.
std::string GetStringHash(const std::string& text);

std::string GetHashString(std::span<const std::uint8_t> bytes);

}  // namespace tmw
