#include "companion/zip/zip_format.h"

#include <gtest/gtest.h>

#include "companion/zip/failure.h"

namespace companion::zip {
namespace {

// A file that consists of its end record only, whatever length it claims.
class TailFile final : public os::ReadableFile {
 public:
  TailFile(std::uint64_t offset, std::string tail) : offset_(offset), tail_(std::move(tail)) {}
  std::uint64_t Size() const override { return offset_ + tail_.size(); }
  std::optional<std::size_t> ReadAt(std::uint64_t offset, void* buffer,
                                    std::size_t length) override {
    std::fill_n(static_cast<char*>(buffer), length, '\0');
    for (std::size_t i = 0; i < length; ++i) {
      if (offset + i >= offset_)
        static_cast<char*>(buffer)[i] = tail_[static_cast<std::size_t>(offset + i - offset_)];
    }
    return length;
  }

 private:
  std::uint64_t offset_;
  std::string tail_;
};

TEST(ZipFormat, LargeNumbersAndManyEntriesComeBackFromTheDirectory) {
  constexpr std::uint64_t kGiB = std::uint64_t{1} << 30U;
  for (const std::uint64_t offset : {std::uint64_t{100}, 5 * kGiB}) {
    for (const std::size_t count : {1U, 2U, 70000U}) {
      ZipDirectory directory;
      directory.comment = "comment";
      for (std::size_t i = 0; i < count; ++i) {
        ZipEntry entry;
        entry.name = "file" + std::to_string(i);
        entry.extra = MakeTimeExtra(1700000000);
        entry.offset = i == 0 ? 0 : offset;
        entry.size = i == 1 ? 6 * kGiB : 0xFFFFFFFE;
        entry.packed_size = i == 1 ? 4 * kGiB : 7;
        directory.entries.push_back(entry);
      }
      TailFile file(offset, MakeDirectory(directory, offset));
      const ZipDirectory found = ReadDirectory(file);
      ASSERT_EQ(found.entries.size(), count);
      EXPECT_EQ(found.comment, directory.comment);
      for (std::size_t i = 0; i < count; ++i) {
        EXPECT_EQ(found.entries[i].name, directory.entries[i].name);
        EXPECT_EQ(found.entries[i].offset, directory.entries[i].offset);
        EXPECT_EQ(found.entries[i].size, directory.entries[i].size);
        EXPECT_EQ(found.entries[i].packed_size, directory.entries[i].packed_size);
        EXPECT_EQ(found.entries[i].extra, directory.entries[i].extra);
      }
    }
  }
}

TEST(ZipFormat, ADirectoryThatIsNoneIsRefused) {
  const std::string sound = MakeDirectory({{ZipEntry{}}, ""}, 0);
  for (std::size_t length = 0; length < sound.size(); ++length) {
    TailFile file(0, sound.substr(0, length));
    EXPECT_THROW(ReadDirectory(file), Failure) << length;
  }
}

}  // namespace
}  // namespace companion::zip
