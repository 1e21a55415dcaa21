#include "companion/zip/zip_format.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>

#include "tests/packages/judge.h"
#include "tests/support/sandbox.h"

namespace tests {
namespace {

#ifndef _WIN32
TEST(ZipFormat, OtherProgramsReadLargeNumbersAndManyEntries) {
  constexpr std::uint64_t kFar = std::uint64_t{5} << 30U;
  for (const auto& [count, last_offset] : {std::pair(2U, kFar), {70000U, std::uint64_t{0}}}) {
    const Sandbox sandbox;
    const std::string path = sandbox.Path("a.zip");
    std::ofstream file(ToPath(path), std::ios::binary);
    companion::zip::ZipDirectory directory;
    std::uint64_t offset = 0;
    for (unsigned i = 0; i < count; ++i) {
      companion::zip::ZipEntry entry;
      entry.name = "file" + std::to_string(i);
      entry.size = entry.packed_size = 1;
      entry.crc = 0x8CDC1683;  // of "x"
      entry.extra = companion::zip::MakeTimeExtra(1700000000);
      entry.has_local_zip64 = i == 0;
      if (i + 1 == count) offset = std::max(offset, last_offset);
      entry.offset = offset;
      const std::string bytes = MakeLocalHeader(entry) + "x";
      file.seekp(static_cast<std::streamoff>(offset));
      file << bytes;
      offset += bytes.size();
      directory.entries.push_back(entry);
    }
    directory.comment = "comment";
    file << MakeDirectory(directory, offset);
    file.close();
    for (const std::string judge : {"unzip -tq ", "7z t ", "python3 -m zipfile -t "}) {
      const auto [status, output] = Judge(judge + InQuotes(path));
      EXPECT_EQ(status, 0) << output;
    }
  }
}
#endif

}  // namespace
}  // namespace tests
