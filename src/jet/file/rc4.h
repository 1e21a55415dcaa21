#pragma once

#include <string>
#include <string_view>

namespace jet::file {

// Combines (XOR) bytes with the RC4 stream of a key; doing it twice gives the bytes back. Here it
// hides a few fields from plain sight and protects nothing.
std::string ApplyRc4(std::string_view key, std::string_view bytes);

}  // namespace jet::file
