#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <string_view>

// Digests as text (module miHashApi), two lower-case hexadecimal digits per byte, computed by the
// companion library.
namespace tmw {

std::string GetFileHash(const std::string& file_name);

// The digest of the text's UTF-16LE code units, without a byte-order mark or terminator.
std::string GetStringHash(const std::string& text);

// Returns whether a text is such a digest: 64 lower-case hexadecimal digits.
bool IsHashText(std::string_view text);

std::string GetHashString(std::span<const std::uint8_t> bytes);

}  // namespace tmw
