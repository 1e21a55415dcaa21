#pragma once

#include <string>
#include <string_view>

namespace tmw {

// The file on the server that holds the signature of a digest with these bytes:
// "TMW_version.dat.<first 16 digits of their SHA-256>.minisig".
std::string SignatureName(std::string_view digest_bytes);

}  // namespace tmw
