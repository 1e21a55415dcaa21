#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

// What the files of this room share.
namespace signature {

inline constexpr std::string_view kUntrustedComment = "untrusted comment: ";
inline constexpr std::string_view kTrustedComment = "trusted comment: ";

using Bytes = std::vector<std::uint8_t>;

// Starts libsodium, once per process; to be called before any other function of it. Raises
// std::runtime_error if the library does not work on this machine.
void RequireSodium();

// Returns nothing unless the text stands for exactly that many bytes.
std::optional<Bytes> DecodeBase64(std::string_view text, std::size_t length);
std::string EncodeBase64(std::span<const std::uint8_t> bytes);

// The lines without their ends, LF or CR LF. A line end at the end of the text begins no line.
std::vector<std::string_view> LinesOf(std::string_view text);

// What is signed in the place of a message of any length: its BLAKE2b of 64 bytes.
Bytes PrehashOf(std::string_view message);

}  // namespace signature
