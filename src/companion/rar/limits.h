#pragma once

#include <cstddef>
#include <cstdint>

// The largest values that the reader accepts, checked before anything is allocated or created.
namespace companion::rar {

inline constexpr std::size_t kMaxHeaderLength = 2U << 20U;  // the format's own limit (RAR 5)
inline constexpr std::size_t kMaxNameUnits = 1023;          // what the header record can hold
inline constexpr std::uint64_t kMaxPackedSize = std::uint64_t{1} << 48U;
inline constexpr std::uint64_t kMaxEntrySize = std::uint64_t{32} << 30U;
inline constexpr std::uint64_t kMaxTotalSize = std::uint64_t{64} << 30U;  // of one open archive
inline constexpr std::uint32_t kMaxDictionaryKib = 1U << 20U;             // 1 GiB

}  // namespace companion::rar
