#include "publish/image_file.h"

#include <algorithm>
#include <memory>
#include <string_view>
#include <utility>
#include <vector>

#include "ports/page_file.h"
#include "ports/ports.h"

namespace publish {
namespace {

using Version = std::array<std::int32_t, 4>;

// With the zero behind it, as both formats store it.
constexpr std::string_view kRegisterFunction{"DllRegisterServer\0", 18};

// More than any image has, and soon read.
constexpr std::uint64_t kMostPeSections = 96;
constexpr std::uint64_t kMostElfSections = 4096;
constexpr std::uint64_t kMostExports = 65'536;
constexpr std::uint64_t kMostSymbols = 100'000;
constexpr std::uint64_t kMostResources = 4096;  // in one folder of the resource tree

// Little-endian numbers at given places. A place outside the file reads as zeros, and is
// remembered.
class Bytes {
 public:
  static std::unique_ptr<Bytes> Open(const std::string& path) {
    auto bytes = std::make_unique<Bytes>();
    auto opened = ports::CurrentPorts().page_files->Open(path, ports::PageFileMode::kRead);
    if (!opened) return nullptr;
    bytes->file_ = std::move(opened.value);
    const auto size = bytes->file_->Size();
    if (!size) return nullptr;
    bytes->size_ = size.value;
    return bytes;
  }

  std::string At(std::uint64_t offset, std::size_t length) {
    std::string bytes(length, '\0');
    if (offset > size_ || length > size_ - offset) {
      is_outside_ = true;
      return bytes;
    }
    const auto read = file_->ReadAt(offset, bytes.data(), length);
    if (!read || read.value != length) is_outside_ = true;
    return bytes;
  }

  std::uint64_t Number(std::uint64_t offset, std::size_t length) {
    const std::string bytes = At(offset, length);
    std::uint64_t number = 0;
    for (std::size_t i = length; i-- > 0;)
      number = number << 8U | static_cast<unsigned char>(bytes[i]);
    return number;
  }
  std::uint64_t Word(std::uint64_t offset) { return Number(offset, 2); }
  std::uint64_t Long(std::uint64_t offset) { return Number(offset, 4); }

  // Whether anything has been asked for outside the file since the last call.
  bool TakeOutside() { return std::exchange(is_outside_, false); }

 private:
  std::unique_ptr<ports::PageFile> file_;
  std::uint64_t size_ = 0;
  bool is_outside_ = false;
};

// The format of Windows, as "PE Format" in Microsoft's documentation describes it.
class PeImage {
 public:
  explicit PeImage(Bytes& bytes) : bytes_(bytes) {}

  std::optional<ImageFacts> Read() {
    header_ = bytes_.Long(0x3C);
    if (bytes_.At(header_, 4) != std::string_view("PE\0\0", 4)) return std::nullopt;
    options_ = header_ + 24;
    const std::uint64_t magic = bytes_.Word(options_);
    if (magic != kPe32 && magic != kPe32Plus) return std::nullopt;
    is_wide_ = magic == kPe32Plus;
    directories_ = options_ + (is_wide_ ? 112 : 96);
    directory_count_ = bytes_.Long(directories_ - 4);
    ReadSections(options_ + bytes_.Word(header_ + 20));
    if (bytes_.TakeOutside()) return std::nullopt;
    ImageFacts facts;
    facts.bits = IsNeutral() ? 0 : is_wide_ ? 64 : 32;
    facts.can_be_registered = Exports(kRegisterFunction);
    if (bytes_.TakeOutside()) facts.can_be_registered = false;
    facts.version = FindVersion();
    if (bytes_.TakeOutside()) facts.version.reset();
    return facts;
  }

 private:
  static constexpr std::uint64_t kPe32 = 0x10B;
  static constexpr std::uint64_t kPe32Plus = 0x20B;
  static constexpr int kExportDirectory = 0;
  static constexpr int kResourceDirectory = 2;
  static constexpr int kManagedDirectory = 14;
  static constexpr std::uint64_t kVersionResource = 16;
  static constexpr std::uint64_t kVersionMark = 0xFEEF04BD;

  struct Section {
    std::uint64_t address = 0;
    std::uint64_t length = 0;
    std::uint64_t offset = 0;  // in the file
  };

  void ReadSections(std::uint64_t table) {
    const std::uint64_t count = std::min(bytes_.Word(header_ + 6), kMostPeSections);
    for (std::uint64_t i = 0; i < count; ++i) {
      const std::uint64_t header = table + i * 40;
      sections_.push_back(
          {bytes_.Long(header + 12), bytes_.Long(header + 16), bytes_.Long(header + 20)});
    }
  }

  // Where a virtual address lies in the file; nothing if no section has it.
  std::optional<std::uint64_t> PlaceOf(std::uint64_t address) const {
    for (const Section& section : sections_) {
      if (address >= section.address && address - section.address < section.length)
        return section.offset + (address - section.address);
    }
    return std::nullopt;
  }

  std::optional<std::uint64_t> Directory(int number) {
    if (static_cast<std::uint64_t>(number) >= directory_count_) return std::nullopt;
    const std::uint64_t address =
        bytes_.Long(directories_ + static_cast<std::uint64_t>(number) * 8);
    return address == 0 ? std::nullopt : PlaceOf(address);
  }

  // Managed code that is compiled for the system on which it runs.
  bool IsNeutral() {
    constexpr std::uint64_t kOnlyManaged = 1;
    constexpr std::uint64_t kRequires32 = 2;
    const auto managed = Directory(kManagedDirectory);
    if (!managed || is_wide_) return false;
    return (bytes_.Long(*managed + 16) & (kOnlyManaged | kRequires32)) == kOnlyManaged;
  }

  bool Exports(std::string_view function) {
    const auto exports = Directory(kExportDirectory);
    if (!exports) return false;
    const std::uint64_t count = std::min(bytes_.Long(*exports + 24), kMostExports);
    const auto names = PlaceOf(bytes_.Long(*exports + 32));
    for (std::uint64_t i = 0; names && i < count; ++i) {
      const auto name = PlaceOf(bytes_.Long(*names + i * 4));
      if (name && bytes_.At(*name, function.size()) == function) return true;
      bytes_.TakeOutside();  // a shorter name at the file's end
    }
    return false;
  }

  // The first entry of a folder of the resource tree, or the one of that number.
  std::optional<std::uint64_t> Entry(std::uint64_t folder, std::optional<std::uint64_t> number) {
    const std::uint64_t count =
        std::min(bytes_.Word(folder + 12) + bytes_.Word(folder + 14), kMostResources);
    for (std::uint64_t i = 0; i < count; ++i) {
      const std::uint64_t entry = folder + 16 + i * 8;
      if (!number || bytes_.Long(entry) == *number) return bytes_.Long(entry + 4) & 0x7FFFFFFFU;
    }
    return std::nullopt;
  }

  std::optional<Version> FindVersion() {
    const auto root = Directory(kResourceDirectory);
    if (!root) return std::nullopt;
    const auto name = Entry(*root, kVersionResource);
    const auto language = name ? Entry(*root + *name, std::nullopt) : std::nullopt;
    const auto data = language ? Entry(*root + *language, std::nullopt) : std::nullopt;
    const auto place = data ? PlaceOf(bytes_.Long(*root + *data)) : std::nullopt;
    // Three lengths and the name "VS_VERSION_INFO" come first.
    constexpr std::uint64_t kFixedPart = 40;
    if (!place || bytes_.Long(*place + kFixedPart) != kVersionMark) return std::nullopt;
    Version version{};
    for (std::size_t i = 0; i < version.size(); ++i) {
      // Two numbers of 32 bits, the upper half of each first.
      const std::uint64_t half = *place + kFixedPart + 8 + (i / 2) * 4 + (i % 2 == 0 ? 2 : 0);
      version[i] = static_cast<std::int32_t>(bytes_.Word(half));
    }
    return version;
  }

  Bytes& bytes_;
  std::uint64_t header_ = 0;
  std::uint64_t options_ = 0;
  std::uint64_t directories_ = 0;
  std::uint64_t directory_count_ = 0;
  std::vector<Section> sections_;
  bool is_wide_ = false;
};

// The format of Linux, as elf(5) describes it.
class ElfImage {
 public:
  explicit ElfImage(Bytes& bytes) : bytes_(bytes) {}

  std::optional<ImageFacts> Read() {
    const std::uint64_t kind = bytes_.Number(4, 1);
    const bool is_little = bytes_.Number(5, 1) == 1;
    if ((kind != 1 && kind != 2) || !is_little) return std::nullopt;
    is_wide_ = kind == 2;
    sections_ = is_wide_ ? bytes_.Number(40, 8) : bytes_.Long(32);
    section_length_ = bytes_.Word(is_wide_ ? 58 : 46);
    section_count_ = std::min(bytes_.Word(is_wide_ ? 60 : 48), kMostElfSections);
    if (bytes_.TakeOutside()) return std::nullopt;
    ImageFacts facts;
    facts.bits = is_wide_ ? 64 : 32;
    facts.can_be_registered = Exports(kRegisterFunction);
    if (bytes_.TakeOutside()) facts.can_be_registered = false;
    return facts;
  }

 private:
  static constexpr std::uint64_t kDynamicSymbols = 11;

  struct Section {
    std::uint64_t offset = 0;
    std::uint64_t length = 0;
    std::uint64_t link = 0;  // of symbols: the section of their names
  };

  std::uint64_t HeaderOf(std::uint64_t number) const {
    return sections_ + number * section_length_;
  }

  Section SectionAt(std::uint64_t number) {
    const std::uint64_t header = HeaderOf(number);
    if (!is_wide_)
      return {bytes_.Long(header + 16), bytes_.Long(header + 20), bytes_.Long(header + 24)};
    return {bytes_.Number(header + 24, 8), bytes_.Number(header + 32, 8), bytes_.Long(header + 40)};
  }

  bool Exports(std::string_view function) {
    for (std::uint64_t i = 0; i < section_count_; ++i) {
      if (bytes_.Long(HeaderOf(i) + 4) != kDynamicSymbols) continue;
      const Section symbols = SectionAt(i);
      const Section names = SectionAt(symbols.link);
      const std::uint64_t length = is_wide_ ? 24 : 16;
      const std::uint64_t count = std::min(symbols.length / length, kMostSymbols);
      for (std::uint64_t j = 0; j < count; ++j) {
        const std::uint64_t symbol = symbols.offset + j * length;
        const bool is_defined = bytes_.Word(symbol + (is_wide_ ? 6 : 14)) != 0;
        if (is_defined &&
            bytes_.At(names.offset + bytes_.Long(symbol), function.size()) == function)
          return true;
        bytes_.TakeOutside();  // a shorter name at the file's end
      }
      return false;
    }
    return false;
  }

  Bytes& bytes_;
  std::uint64_t sections_ = 0;
  std::uint64_t section_length_ = 0;
  std::uint64_t section_count_ = 0;
  bool is_wide_ = false;
};

}  // namespace

std::optional<ImageFacts> ReadImage(const std::string& file) {
  const auto bytes = Bytes::Open(file);
  if (bytes == nullptr) return std::nullopt;
  const std::string start = bytes->At(0, 4);
  if (start.starts_with("MZ")) return PeImage(*bytes).Read();
  if (start ==
      "\x7F"
      "ELF")
    return ElfImage(*bytes).Read();
  return std::nullopt;
}

}  // namespace publish
