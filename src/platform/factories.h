#pragma once

#include <chrono>
#include <memory>
#include <optional>
#include <string>

#include "ports/binary_file.h"
#include "ports/clock.h"
#include "ports/companion_library.h"
#include "ports/database.h"
#include "ports/error_texts.h"
#include "ports/file_lock.h"
#include "ports/file_system.h"
#include "ports/front_end.h"
#include "ports/internet.h"
#include "ports/named_mutex.h"
#include "ports/page_file.h"
#include "ports/processes.h"
#include "ports/product_version.h"
#include "ports/settings_store.h"
#include "ports/system_info.h"
#include "ports/xml_document.h"

// Makes the implementation of each port for the system that the program is built for. Known to the
// host and to the tests of the implementations.
namespace platform {

std::unique_ptr<ports::BinaryFiles> MakeBinaryFiles();
std::unique_ptr<ports::Clock> MakeClock();
// Empty: the library in the program's own folder.
std::unique_ptr<ports::CompanionLibrary> MakeCompanionLibrary(const std::string& path = {});
// Cheap: the engine itself is started by its first use.
std::unique_ptr<ports::DatabaseEngine> MakeDatabaseEngine();
std::unique_ptr<ports::ErrorTexts> MakeErrorTexts();
std::unique_ptr<ports::FileLocks> MakeFileLocks();
std::unique_ptr<ports::FileSystem> MakeFileSystem();
std::unique_ptr<ports::FrontEnd> MakeFrontEnd();
std::unique_ptr<ports::Internet> MakeInternet(
    std::chrono::milliseconds stall_limit = ports::kInternetStallLimit);
std::unique_ptr<ports::NamedMutexes> MakeNamedMutexes();
std::unique_ptr<ports::PageFiles> MakePageFiles();
std::unique_ptr<ports::Processes> MakeProcesses(int argc, char** argv);
std::unique_ptr<ports::ProductVersion> MakeProductVersion();
std::unique_ptr<ports::SettingsStore> MakeSettingsStore();
std::unique_ptr<ports::SystemInfo> MakeSystemInfo();
std::unique_ptr<ports::XmlParser> MakeXmlParser();

// As ports::WaitForUpdaterChain says.
std::optional<int> WaitForUpdaterChain();

}  // namespace platform
