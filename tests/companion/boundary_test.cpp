#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <filesystem>
#include <functional>
#include <new>

#include "companion/exports.h"
#include "packing/rar_writer.h"
#include "tests/support/sandbox.h"

namespace {

thread_local int allocations_left = -1;  // -1: as many as are asked for

// The library's calls of the disk: r for reading, f for flushing, n for renaming; and its faults.
struct {
  std::string log;
  bool flushing_fails = false;
  off_t changed_byte = -1;  // comes back wrong after the first flush

  void Note(char call) {
    if (!log.ends_with(call)) log += call;
  }
} disk;

}  // namespace

// The companion's calls of the system are this program's.
extern "C" int fsync(int file) {
  disk.Note('f');
  errno = EIO;
  return disk.flushing_fails ? -1 : static_cast<int>(syscall(SYS_fsync, file));
}
extern "C" ssize_t pread(int file, void* buffer, std::size_t length, off_t offset) {
  const ssize_t got = syscall(SYS_pread64, file, buffer, length, offset);
  const off_t at = disk.changed_byte - offset;
  if (disk.log.find('f') != std::string::npos && at >= 0 && at < got)
    static_cast<char*>(buffer)[at] ^= 4;
  disk.Note('r');
  return got;
}
extern "C" int renameat2(int from_folder, const char* from, int to_folder, const char* to,
                         unsigned flags) noexcept {
  disk.Note('n');
  return static_cast<int>(syscall(SYS_renameat2, from_folder, from, to_folder, to, flags));
}

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

TEST(Boundary, AZipFileIsFlushedAndReadBackBeforeItHasItsName) {
  const Sandbox sandbox;
  const std::string file = sandbox.Write("in/a", std::string(100, 'x') + "end");
  const std::string zip = sandbox.Path("out.zip");
  const std::string root = sandbox.Path("in");
  const std::string other = sandbox.Write("in/b", std::string(50, 'x') + "end");
  const char* names[] = {file.c_str(), other.c_str()};
  ports::ZpFunctions functions{};
  ports::ZpOptions options{};
  options.Level = '9';
  options.RootDir = root.c_str();
  ZpInit(&functions);
  ZpSetOptions(&options);
  const auto pack = [&](off_t changed_byte, bool flushing_fails) {
    disk = {"", flushing_fails, changed_byte};
    const int code = ZpArchive({2, zip.c_str(), names});
    disk = {disk.log};
    return code;
  };
  ASSERT_EQ(pack(-1, false), 0);
  EXPECT_EQ(disk.log, "rfrnf");
  const auto length = static_cast<off_t>(std::filesystem::file_size(ToPath(zip)));
  std::filesystem::remove(ToPath(zip));
  EXPECT_EQ(pack(-1, true), 14);
  EXPECT_EQ(disk.log, "rf");
  // The local mark, the content, the directory's mark, checksum and name, the end mark.
  const off_t directory = length - 22 - 2 * (46 + 1 + 9);
  for (const off_t changed :
       {off_t{0}, directory - 6, directory, directory + 17, directory + 46, length - 22}) {
    EXPECT_EQ(pack(changed, false), 14) << changed;
    EXPECT_EQ(disk.log, "rfr") << changed;
  }
  const std::filesystem::directory_iterator left(ToPath(sandbox.Path()));
  EXPECT_EQ(std::distance(begin(left), end(left)), 1);
}

}  // namespace
}  // namespace tests
