#pragma once

#include <cstdint>

// How much a server may send where nothing announces a size, in bytes.
namespace tmw {

inline constexpr std::int64_t kMaxSmallFile = std::int64_t{1} << 20;  // digest, server list
inline constexpr std::int64_t kMaxManifestPackage = std::int64_t{64} << 20;

// A component may bring this much: twice what the manifest announces and a little.
inline constexpr std::int64_t MaxComponent(std::int32_t announced) {
  return std::int64_t{announced} * 2 + (std::int64_t{1} << 20);
}

}  // namespace tmw
