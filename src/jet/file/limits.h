#pragma once

#include <cstddef>
#include <cstdint>

// What is believed of a file at most, and what may be written to one.
namespace jet::file::limits {

// Reading.
inline constexpr std::uint64_t kFileLength = 0x80000000;  // 2 GiB
inline constexpr std::size_t kDefinitionLength = 0x100000;
inline constexpr std::size_t kColumns = 255;
inline constexpr std::size_t kIndexesRead = 255;
inline constexpr std::size_t kTreeDepth = 16;
inline constexpr std::size_t kLongValueLength = 0x10000000;  // 256 MiB
inline constexpr std::size_t kPropertiesLength = 0x100000;
inline constexpr std::size_t kObjects = 65536;
inline constexpr std::size_t kSystemRows = 500000;  // of each other system table
inline constexpr std::size_t kCachedPages = 256;

// Reading and writing: beyond these the format's own engine refuses the file.
inline constexpr std::size_t kRowsOnPage = 255;
inline constexpr std::size_t kNameUnits = 64;  // UTF-16 units
inline constexpr std::size_t kRecordLength = 4060;
inline constexpr std::size_t kTextUnits = 255;
inline constexpr std::size_t kBinaryLength = 510;
inline constexpr std::size_t kIndexColumns = 10;
inline constexpr std::size_t kIndexesWritten = 32;  // real ones, and logical ones

// Writing.
inline constexpr std::size_t kIndexKeyLength = 3608;    // one entry of a node has to fit a page
inline constexpr std::size_t kSortMemory = 48U << 20U;  // for the keys of one table

}  // namespace jet::file::limits
