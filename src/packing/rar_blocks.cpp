#include "packing/rar_blocks.h"

#include <algorithm>
#include <array>
#include <ctime>

#include "foundation/encodings.h"

namespace packing {
namespace {

template <typename T>
void Put(std::string& bytes, T value) {
  for (std::size_t i = 0; i < sizeof(T); ++i) {
    bytes.push_back(static_cast<char>(value >> (8 * i) & 0xFFU));
  }
}

bool IsAscii(std::string_view text) {
  return std::all_of(text.begin(), text.end(),
                     [](char c) { return static_cast<unsigned char>(c) < 0x80; });
}

std::uint32_t Attributes(const EntryHeader& entry) {
  if (entry.unix_mode) return *entry.unix_mode | (entry.is_folder ? 0040000U : 0100000U);
  return entry.is_folder ? 0x10 : 0x20;
}

// MS-DOS format: local time in steps of two seconds.
std::uint32_t DosTime(std::int64_t modified) {
  const auto time = static_cast<std::time_t>(modified);
  const std::tm* const local = std::localtime(&time);
  if (local == nullptr || local->tm_year < 80) return 0x00210000;
  const auto bits = [](int value, unsigned shift) {
    return static_cast<std::uint32_t>(value) << shift;
  };
  return bits(local->tm_year - 80, 25) | bits(local->tm_mon + 1, 21) | bits(local->tm_mday, 16) |
         bits(local->tm_hour, 11) | bits(local->tm_min, 5) |
         bits(std::min(local->tm_sec, 59) / 2, 0);
}

// The encoded UTF-16 name that follows the code-page name. Of the four kinds of units, three
// suffice: the low byte alone, with the most common high byte, or with both bytes.
std::string CodeUnits(std::u16string_view units) {
  std::array<std::size_t, 256> counts{};
  for (const char16_t unit : units) {
    if (unit >= 0x80) ++counts[unit >> 8U];
  }
  const auto common = static_cast<unsigned>(
      std::distance(counts.begin(), std::max_element(counts.begin(), counts.end())));
  std::string coded(1, static_cast<char>(common));
  for (std::size_t i = 0; i < units.size(); i += 4) {
    unsigned kinds = 0;
    std::string bytes;
    for (std::size_t j = i; j < std::min(i + 4, units.size()); ++j) {
      const unsigned high = units[j] >> 8U;
      const unsigned kind = high == 0 ? 0 : high == common ? 1 : 2;
      kinds |= kind << (6 - 2 * (j - i));
      bytes.push_back(static_cast<char>(units[j] & 0xFFU));
      if (kind == 2) bytes.push_back(static_cast<char>(high));
    }
    coded.push_back(static_cast<char>(kinds));
    coded += bytes;
  }
  return coded;
}

std::string MakeRar4Entry(const EntryHeader& entry) {
  constexpr std::uint16_t kHasUnicodeName = 0x200;
  constexpr std::uint16_t kIsFolder = 0xE0;
  constexpr std::uint16_t kHasData = 0x8000;
  std::string name = entry.name;
  std::uint16_t flags = entry.is_folder ? kHasData | kIsFolder : kHasData;
  std::replace(name.begin(), name.end(), '/', '\\');
  if (!IsAscii(name)) {
    flags |= kHasUnicodeName;
    const std::u16string units = tmw::Utf8ToUtf16(name);
    name = tmw::Utf8ToCodePage(tmw::CodePage::k866, name) + std::string(1, '\0') + CodeUnits(units);
  }
  std::string fields;
  Put(fields, static_cast<std::uint32_t>(entry.size));  // packed
  Put(fields, static_cast<std::uint32_t>(entry.size));
  Put<std::uint8_t>(fields, entry.unix_mode ? 3 : 2);
  Put(fields, entry.crc);
  Put(fields, DosTime(entry.modified));
  Put<std::uint8_t>(fields, 20);    // the version needed to unpack it
  Put<std::uint8_t>(fields, 0x30);  // stored
  Put(fields, static_cast<std::uint16_t>(name.size()));
  Put(fields, Attributes(entry));
  return MakeRar4Block(0x74, flags, fields + name);
}

std::string MakeRar5Entry(const EntryHeader& entry) {
  constexpr unsigned kIsFolder = 1;
  constexpr unsigned kHasTime = 2;
  constexpr unsigned kHasCrc = 4;
  std::string fields = MakeVint(kHasTime | (entry.is_folder ? kIsFolder : kHasCrc));
  fields += MakeVint(entry.size);
  fields += MakeVint(Attributes(entry));
  Put(fields, static_cast<std::uint32_t>(entry.modified));
  if (!entry.is_folder) Put(fields, entry.crc);
  fields += MakeVint(0);  // stored
  fields += MakeVint(entry.unix_mode ? 1 : 0);
  fields += MakeVint(entry.name.size()) + entry.name;
  // Folders have a data size too: some readers fail without it.
  return MakeRar5Block(2, 0, fields, {}, entry.size);
}

}  // namespace

std::string MakeVint(std::uint64_t value) {
  std::string bytes;
  do {
    const auto low = static_cast<unsigned>(value & 0x7FU);
    value >>= 7U;
    bytes.push_back(static_cast<char>(value != 0 ? low | 0x80U : low));
  } while (value != 0);
  return bytes;
}

std::string MakeRar4Block(std::uint8_t type, std::uint16_t flags, const std::string& fields) {
  std::string body;
  Put(body, type);
  Put(body, flags);
  Put(body, static_cast<std::uint16_t>(fields.size() + 7));
  body += fields;
  std::string block;
  Put(block, static_cast<std::uint16_t>(UpdateCrc32(0, body) & 0xFFFFU));
  return block + body;
}

std::string MakeRar5Block(unsigned type, unsigned flags, const std::string& fields,
                          const std::string& extra, std::optional<std::uint64_t> data_size) {
  std::string body = MakeVint(type);
  body += MakeVint(flags | (extra.empty() ? 0U : 1U) | (data_size ? 2U : 0U));
  if (!extra.empty()) body += MakeVint(extra.size());
  if (data_size) body += MakeVint(*data_size);
  body += fields + extra;
  body = MakeVint(body.size()) + body;
  std::string block;
  Put(block, UpdateCrc32(0, body));
  return block + body;
}

std::string MakeBeginning(RarFormat format) {
  if (format == RarFormat::kRar5)
    return std::string("Rar!\x1A\x07\x01\x00", 8) + MakeRar5Block(1, 0, MakeVint(0));
  return std::string("Rar!\x1A\x07\x00", 7) + MakeRar4Block(0x73, 0, std::string(6, '\0'));
}

std::string MakeEntryHeader(RarFormat format, const EntryHeader& entry) {
  return format == RarFormat::kRar5 ? MakeRar5Entry(entry) : MakeRar4Entry(entry);
}

std::string MakeEnd(RarFormat format) {
  if (format == RarFormat::kRar5) return MakeRar5Block(5, 4, MakeVint(0));
  return MakeRar4Block(0x7B, 0x4000, "");
}

}  // namespace packing
