#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <functional>
#include <new>

#include "companion/exports.h"
#include "packing/rar_writer.h"
#include "tests/support/sandbox.h"

namespace {

thread_local int allocations_left = -1;  // -1: as many as are asked for

}  // namespace

// The companion's allocations are this program's.
void* operator new(std::size_t size) {
  if (allocations_left == 0) throw std::bad_alloc();
  if (allocations_left > 0) --allocations_left;
  void* const memory = std::malloc(size);
  if (memory == nullptr) throw std::bad_alloc();
  return memory;
}
void operator delete(void* memory) noexcept {
  std::free(memory);
}
void operator delete(void* memory, std::size_t /*size*/) noexcept {
  std::free(memory);
}

namespace tests {
namespace {

TEST(Boundary, NoExceptionLeavesTheLibraryWhereverMemoryEnds) {
  const Sandbox sandbox;
  const std::string long_name(200, 'n');  // too long to be kept without an allocation
  const std::string file = sandbox.Write(long_name, std::string(100'000, 'x'));
  const std::string package = sandbox.Path(long_name + ".rar");
  packing::StoredRarWriter writer(package, packing::RarFormat::kRar5);
  writer.AddFile({long_name, 1700000000, 0644}, file);
  writer.Finish();
  const std::string zip = sandbox.Path("out.zip");
  const std::string out = sandbox.Path(std::string(50, 'o'));
  const std::u16string wide_out(out.begin(), out.end());
  const char* names[] = {file.c_str()};
  ports::ZpFunctions functions{};
  ports::ZpOptions options{};
  options.Level = '9';
  options.RootDir = out.c_str();
  std::uint8_t digest[32];
  static ports::RARHeaderDataEx header;
  ZpInit(&functions);

  const auto extract = [&](bool is_wide) {
    ports::RAROpenArchiveDataEx record{};
    record.ArcName = package.c_str();
    record.OpenMode = 1;
    record.Callback = [](std::uint32_t, std::intptr_t, std::intptr_t, std::intptr_t)
                          COMPANION_CALL { return 0; };
    const ports::RarHandle handle = RAROpenArchiveEx(&record);
    if (handle == nullptr) return static_cast<int>(record.OpenResult);
    RARSetCallback(handle, record.Callback, 0);
    int result = RARReadHeaderEx(handle, &header);
    if (result == 0) {
      result = is_wide ? RARProcessFileW(handle, 2, wide_out.c_str(), nullptr)
                       : RARProcessFile(handle, 2, out.c_str(), nullptr);
    }
    RARCloseArchive(handle);
    return result;
  };
  const std::function<bool()> calls[] = {
      [&] { return extract(true) == 0; },
      [&] { return extract(false) == 0; },
      [&] { return ZpSetOptions(&options) != 0; },
      [&] {
        return ZpArchive({1, zip.c_str(), names}) == 0;
      },
      [&] { return Sha256_GetFileHash(file.c_str(), digest) == 1; },
      [&] { return Sha256_GetFileCrc(package.c_str()) == 0; },
      [&] { return RegisterDll(file.c_str()) != 0; },
  };
  for (const auto& call : calls) {
    bool succeeds = false;
    for (int count = 0; count < 10'000 && !succeeds; ++count) {
      allocations_left = count;
      EXPECT_NO_THROW(succeeds = call());
      allocations_left = -1;
    }
    EXPECT_TRUE(succeeds);
  }
  for (const auto& entry : std::filesystem::directory_iterator(ToPath(sandbox.Path())))
    EXPECT_NE(entry.path().extension(), ".tmp");
}

}  // namespace
}  // namespace tests
