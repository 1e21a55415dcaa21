#include <gtest/gtest.h>

#include "platform/windows/native_path.h"
#include "platform/windows/windows_headers.h"
#include "ports/file_system.h"
#include "ports/ports.h"
#include "tests/support/sandbox.h"
// The system's headers come first: these build on them.
#include <aclapi.h>
#include <sddl.h>

namespace platform {
namespace {

TEST(ProtectedFolder, IsClosedToOrdinaryUsersAndNeverAnExistingOne) {
  const tests::Sandbox sandbox;
  ports::FileSystem& files = *ports::CurrentPorts().files;
  const std::string folder = sandbox.Path("x");
  ASSERT_TRUE(files.CreateProtectedFolder(folder));
  PACL list = nullptr;
  PSECURITY_DESCRIPTOR descriptor = nullptr;
  ASSERT_EQ(
      GetNamedSecurityInfoW(NativePath(folder).data(), SE_FILE_OBJECT, DACL_SECURITY_INFORMATION,
                            nullptr, nullptr, &list, nullptr, &descriptor),
      static_cast<DWORD>(ERROR_SUCCESS));
  for (unsigned i = 0; i < list->AceCount; ++i) {
    void* entry = nullptr;
    ASSERT_TRUE(GetAce(list, i, &entry));
    PSID owner = &static_cast<ACCESS_ALLOWED_ACE*>(entry)->SidStart;
    // Wine keeps only what Unix rights can express: of a usual folder, that everybody may read it.
    EXPECT_FALSE(IsWellKnownSid(owner, WinWorldSid)) << i;
    EXPECT_FALSE(IsWellKnownSid(owner, WinBuiltinUsersSid)) << i;
  }
  LocalFree(descriptor);
  EXPECT_EQ(files.CreateProtectedFolder(folder).code, ERROR_ALREADY_EXISTS);
}

}  // namespace
}  // namespace platform
