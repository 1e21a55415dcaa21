#include <algorithm>
#include <cstdint>
#include <cstring>
#include <memory>
#include <string>

#include "companion/rar/archive.h"
#include "companion/rar/failure.h"
#include "companion/rar/names.h"

// Feeds the RAR reader: lists an archive in memory, then decodes every entry without storing it. A
// mark in the input divides it into volumes. Header checksums are not compared in this build, so
// that damage reaches the parsers.
namespace {

using companion::rar::Archive;

class MemoryFile final : public companion::os::ReadableFile {
 public:
  explicit MemoryFile(std::string bytes) : bytes_(std::move(bytes)) {}
  std::uint64_t Size() const override { return bytes_.size(); }
  std::optional<std::size_t> ReadAt(std::uint64_t offset, void* buffer,
                                    std::size_t length) override {
    if (offset >= bytes_.size()) return 0;
    const std::size_t got = std::min<std::size_t>(length, bytes_.size() - offset);
    std::memcpy(buffer, bytes_.data() + offset, got);
    return got;
  }

 private:
  std::string bytes_;
};

constexpr const char* kMark = "<NEXT VOLUME>";

// Each opening returns the next part of the input, as long as there are any.
struct Volumes {
  std::string left;
  bool any = true;

  std::unique_ptr<companion::os::ReadableFile> Next() {
    if (!any) return nullptr;
    const std::size_t end = left.find(kMark);
    any = end != std::string::npos;
    auto file = std::make_unique<MemoryFile>(left.substr(0, end));
    left = any ? left.substr(end + std::strlen(kMark)) : "";
    return file;
  }
};

// No archive may produce more entries than it has bytes.
void ReadAll(const std::string& input, bool decode) {
  Volumes volumes{input};
  try {
    Archive archive("a.part1.rar", true, [&](const std::string&) { return volumes.Next(); });
    // A small input may unpack to gigabytes; some of them are enough.
    std::size_t content = 0;
    archive.SetListener([&](const std::uint8_t*, std::size_t length) {
      content += length;
      return content < (16U << 20U);
    });
    std::size_t entries = 0;
    while (archive.ReadHeader() == ports::kRarOk) {
      if (++entries > input.size()) __builtin_trap();
      const auto parts =
          companion::rar::SafeNameParts({archive.Current().name, archive.Current().name_is_sound});
      for (const std::string& part : parts.value_or(std::vector<std::string>())) {
        if (part.empty() || part == ".." || part.find_first_of("/\\:") != std::string::npos) {
          __builtin_trap();
        }
      }
      (void)(decode ? archive.Test() : archive.Skip());
    }
  } catch (const companion::rar::Failure&) {
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string input(reinterpret_cast<const char*>(data), size);
  ReadAll(input, true);
  ReadAll(input, false);
  return 0;
}
