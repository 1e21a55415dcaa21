#include "platform/factories.h"
#include "ports/clock.h"
#include "ports/error_texts.h"
#include "ports/file_lock.h"
#include "ports/file_system.h"
#include "ports/page_file.h"
#include "ports/ports.h"
#include "ports/system_info.h"
#include "tests/platform/windows/component_library.h"
#include "tests/platform/windows/dao/engine_objects.h"

namespace tests {
namespace {

// The embedded engine works with the ports of this library, not with those of its caller.
platform::ComPointer<ServedObject> MakeEngine() {
  static const auto kClock = platform::MakeClock();
  static const auto kErrorTexts = platform::MakeErrorTexts();
  static const auto kFileLocks = platform::MakeFileLocks();
  static const auto kFiles = platform::MakeFileSystem();
  static const auto kPageFiles = platform::MakePageFiles();
  static const auto kSystemInfo = platform::MakeSystemInfo();
  ports::Ports& ports = ports::CurrentPorts();
  ports.clock = kClock.get();
  ports.error_texts = kErrorTexts.get();
  ports.file_locks = kFileLocks.get();
  ports.files = kFiles.get();
  ports.page_files = kPageFiles.get();
  ports.system_info = kSystemInfo.get();
  return MakeServedEngine();
}

}  // namespace

const std::vector<ServedComponent>& ServedComponents() {
  static const std::vector<ServedComponent> kComponents = {
      {L"DAO.DBEngine.36",
       {0x6b1f2c54, 0x8a3d, 0x4e0b, {0x9c, 0x71, 0x2f, 0x5a, 0xd0, 0x43, 0x18, 0xe6}},
       MakeEngine}};
  return kComponents;
}

}  // namespace tests
