#include <gtest/gtest.h>

#include <functional>
#include <thread>

#include "foundation/file_utils.h"
#include "platform/windows/handles.h"
#include "platform/windows/wide.h"
#include "ports/file_system.h"
#include "ports/ports.h"
#include "tests/support/sandbox.h"

// The system's headers give our verbs other names.
#undef CopyFile
#undef DeleteFile

namespace platform {
namespace {

// What a virus scanner does: it reads a file that may be deleted meanwhile. The name then stays in
// use until it lets go. (Wine still shows the file to who only looks.)
TEST(PendingDeletion, IsWaitedForByEveryUseOfTheName) {
  const tests::Sandbox sandbox;
  const std::string source = sandbox.Write("новый", "new");
  const std::function<void(const std::string&)> uses[] = {
      [](const std::string& file) { tmw::CreateEmptyFile(file); },
      [&](const std::string& file) { tmw::CopyFile(source, file); }};
  for (const auto& use : uses) {
    const std::string file = sandbox.Write("старый", "old");
    UniqueFileHandle scanner(CreateFileW(ToWide(file).c_str(), GENERIC_READ,
                                         FILE_SHARE_READ | FILE_SHARE_DELETE, nullptr,
                                         OPEN_EXISTING, 0, nullptr));
    ASSERT_TRUE(scanner);
    ASSERT_TRUE(tmw::DeleteFile(file));
    std::thread later([&] {
      Sleep(400);
      scanner.Reset();
    });
    use(file);
    later.join();
  }
}

TEST(PendingDeletion, AndAFileMappedIntoMemoryPass) {
  for (const ports::SystemCode code : {5, 32, 33, 303, 1224})
    EXPECT_TRUE(ports::CurrentPorts().files->MeansBusy(code)) << code;
  EXPECT_FALSE(ports::CurrentPorts().files->MeansBusy(ERROR_DISK_FULL));
}

}  // namespace
}  // namespace platform
