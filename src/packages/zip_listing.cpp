#include "packages/zip_listing.h"

#include <algorithm>
#include <cstddef>
#include <memory>

#include "ports/page_file.h"
#include "ports/ports.h"

namespace tmw {
namespace {

constexpr std::uint64_t kEndMark = 0x06054b50;
constexpr std::uint64_t kCentralMark = 0x02014b50;
constexpr std::size_t kEndLength = 22;
constexpr std::size_t kCentralLength = 46;
constexpr std::uint64_t kMaxComment = 0xFFFF;

// Little-endian; the place lies inside.
std::uint64_t NumberAt(const std::string& bytes, std::size_t at, std::size_t length) {
  std::uint64_t number = 0;
  for (std::size_t i = length; i-- > 0;)
    number = number << 8U | static_cast<unsigned char>(bytes[at + i]);
  return number;
}

std::optional<std::string> Read(ports::PageFile& file, std::uint64_t offset, std::uint64_t length) {
  std::string bytes(static_cast<std::size_t>(length), '\0');
  const auto count = file.ReadAt(offset, bytes.data(), bytes.size());
  if (!count || count.value != bytes.size()) return std::nullopt;
  return bytes;
}

// The end record, the last in the file, without the comment behind it.
std::optional<std::string> FindEnd(ports::PageFile& file, std::uint64_t size) {
  const std::uint64_t length = std::min(size, kEndLength + kMaxComment);
  const auto tail = Read(file, size - length, length);
  if (!tail || length < kEndLength) return std::nullopt;
  for (std::size_t at = tail->size() - kEndLength + 1; at-- > 0;) {
    const bool is_end = NumberAt(*tail, at, 4) == kEndMark &&
                        at + kEndLength + NumberAt(*tail, at + 20, 2) == tail->size();
    if (is_end) return tail->substr(at, kEndLength);
  }
  return std::nullopt;
}

}  // namespace

std::optional<std::vector<ZipListing>> TryListZip(const std::string& file) {
  const auto opened = ports::CurrentPorts().page_files->Open(file, ports::PageFileMode::kRead);
  if (!opened) return std::nullopt;
  const auto size = opened.value->Size();
  const auto end = size ? FindEnd(*opened.value, size.value) : std::nullopt;
  if (!end) return std::nullopt;
  const std::uint64_t length = NumberAt(*end, 12, 4);
  const std::uint64_t offset = NumberAt(*end, 16, 4);
  if (offset + length > size.value) return std::nullopt;
  const auto directory = Read(*opened.value, offset, length);
  if (!directory) return std::nullopt;
  std::vector<ZipListing> entries;
  for (std::size_t at = 0; at < directory->size();) {
    if (directory->size() - at < kCentralLength || NumberAt(*directory, at, 4) != kCentralMark)
      return std::nullopt;
    const auto name = static_cast<std::size_t>(NumberAt(*directory, at + 28, 2));
    entries.push_back({directory->substr(at + kCentralLength, name),
                       NumberAt(*directory, at + 24, 4),
                       static_cast<std::uint32_t>(NumberAt(*directory, at + 16, 4)),
                       static_cast<std::uint32_t>(NumberAt(*directory, at + 10, 2)),
                       NumberAt(*directory, at + 20, 4), NumberAt(*directory, at + 42, 4)});
    const std::uint64_t rest = NumberAt(*directory, at + 30, 2) + NumberAt(*directory, at + 32, 2);
    at += kCentralLength + name + static_cast<std::size_t>(rest);
  }
  if (entries.size() != NumberAt(*end, 10, 2)) return std::nullopt;
  return entries;
}

}  // namespace tmw
