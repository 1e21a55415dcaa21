#include "platform/host.h"

#include "platform/binary_file.h"
#include "platform/clock.h"
#include "platform/companion_library.h"
#include "platform/database.h"
#include "platform/error_texts.h"
#include "platform/file_lock.h"
#include "platform/file_system.h"
#include "platform/front_end.h"
#include "platform/internet.h"
#include "platform/named_mutex.h"
#include "platform/processes.h"
#include "platform/product_version.h"
#include "platform/settings_store.h"
#include "platform/system_info.h"
#include "platform/xml_document.h"

namespace platform {
namespace {

class WindowsHost final : public Host {
 public:
  WindowsHost(int argc, char** argv) : processes_(MakeProcesses(argc, argv)) {}

  Ports MakePorts() override {
    Ports ports;
    ports.binary_files = binary_files_.get();
    ports.clock = clock_.get();
    ports.companion = companion_.get();
    ports.database = database_.get();
    ports.error_texts = error_texts_.get();
    ports.file_locks = file_locks_.get();
    ports.files = files_.get();
    ports.front_end = front_end_.get();
    ports.internet = internet_.get();
    ports.mutexes = mutexes_.get();
    ports.processes = processes_.get();
    ports.product_version = product_version_.get();
    ports.settings = settings_.get();
    ports.system_info = system_info_.get();
    ports.xml = xml_.get();
    return ports;
  }

 private:
  std::unique_ptr<BinaryFiles> binary_files_ = MakeBinaryFiles();
  std::unique_ptr<Clock> clock_ = MakeClock();
  std::unique_ptr<CompanionLibrary> companion_ = MakeCompanionLibrary();
  std::unique_ptr<DatabaseEngine> database_ = MakeDatabaseEngine();
  std::unique_ptr<ErrorTexts> error_texts_ = MakeErrorTexts();
  std::unique_ptr<FileLocks> file_locks_ = MakeFileLocks();
  std::unique_ptr<FileSystem> files_ = MakeFileSystem();
  std::unique_ptr<FrontEnd> front_end_ = MakeFrontEnd();
  std::unique_ptr<Internet> internet_ = MakeInternet();
  std::unique_ptr<NamedMutexes> mutexes_ = MakeNamedMutexes();
  std::unique_ptr<Processes> processes_;
  std::unique_ptr<ProductVersion> product_version_ = MakeProductVersion();
  std::unique_ptr<SettingsStore> settings_ = MakeSettingsStore();
  std::unique_ptr<SystemInfo> system_info_ = MakeSystemInfo();
  std::unique_ptr<XmlParser> xml_ = MakeXmlParser();
};

}  // namespace

std::optional<int> WaitForUpdaterChain() {
  return std::nullopt;
}

std::unique_ptr<Host> MakeHost(int argc, char** argv) {
  return std::make_unique<WindowsHost>(argc, argv);
}

}  // namespace platform
