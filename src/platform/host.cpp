#include "ports/host.h"

#include "platform/factories.h"
#include "ports/binary_file.h"
#include "ports/clock.h"
#include "ports/companion_library.h"
#include "ports/database.h"
#include "ports/error_texts.h"
#include "ports/file_lock.h"
#include "ports/file_probe.h"
#include "ports/file_system.h"
#include "ports/front_end.h"
#include "ports/internet.h"
#include "ports/log_files.h"
#include "ports/named_mutex.h"
#include "ports/page_file.h"
#include "ports/power.h"
#include "ports/processes.h"
#include "ports/product_version.h"
#include "ports/settings_store.h"
#include "ports/system_info.h"
#include "ports/xml_document.h"

namespace ports {
namespace {

class SystemHost final : public Host {
 public:
  SystemHost(int argc, char** argv, bool is_tool)
      : front_end_(platform::MakeFrontEnd(is_tool)),
        processes_(platform::MakeProcesses(argc, argv)) {}

  Ports MakePorts() override {
    Ports ports;
    ports.binary_files = binary_files_.get();
    ports.clock = clock_.get();
    ports.companion = companion_.get();
    ports.database = database_.get();
    ports.error_texts = error_texts_.get();
    ports.file_locks = file_locks_.get();
    ports.file_probe = file_probe_.get();
    ports.files = files_.get();
    ports.front_end = front_end_.get();
    ports.internet = internet_.get();
    ports.log_files = log_files_.get();
    ports.mutexes = mutexes_.get();
    ports.page_files = page_files_.get();
    ports.power = power_.get();
    ports.processes = processes_.get();
    ports.product_version = product_version_.get();
    ports.settings = settings_.get();
    ports.system_info = system_info_.get();
    ports.xml = xml_.get();
    return ports;
  }

 private:
  std::unique_ptr<BinaryFiles> binary_files_ = platform::MakeBinaryFiles();
  std::unique_ptr<Clock> clock_ = platform::MakeClock();
  std::unique_ptr<CompanionLibrary> companion_ = platform::MakeCompanionLibrary();
  std::unique_ptr<DatabaseEngine> database_ = platform::MakeDatabaseEngine();
  std::unique_ptr<ErrorTexts> error_texts_ = platform::MakeErrorTexts();
  std::unique_ptr<FileLocks> file_locks_ = platform::MakeFileLocks();
  std::unique_ptr<FileProbe> file_probe_ = platform::MakeFileProbe();
  std::unique_ptr<FileSystem> files_ = platform::MakeFileSystem();
  std::unique_ptr<FrontEnd> front_end_;
  std::unique_ptr<Internet> internet_ = platform::MakeInternet(kInternetStallLimit);
  std::unique_ptr<LogFiles> log_files_ = platform::MakeLogFiles();
  std::unique_ptr<NamedMutexes> mutexes_ = platform::MakeNamedMutexes();
  std::unique_ptr<PageFiles> page_files_ = platform::MakePageFiles();
  std::unique_ptr<Power> power_ = platform::MakePower();
  std::unique_ptr<Processes> processes_;
  std::unique_ptr<ProductVersion> product_version_ = platform::MakeProductVersion();
  std::unique_ptr<SettingsStore> settings_ = platform::MakeSettingsStore();
  std::unique_ptr<SystemInfo> system_info_ = platform::MakeSystemInfo();
  std::unique_ptr<XmlParser> xml_ = platform::MakeXmlParser();
};

}  // namespace

std::optional<int> PrepareUpdater(int argc, char** argv) {
  return platform::PrepareUpdater(argc, argv);
}

std::optional<int> WaitForUpdaterChain() {
  return platform::WaitForUpdaterChain();
}

std::unique_ptr<Host> MakeHost(int argc, char** argv, bool is_tool) {
  return std::make_unique<SystemHost>(argc, argv, is_tool);
}

}  // namespace ports
