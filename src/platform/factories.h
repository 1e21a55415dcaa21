#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>

namespace ports {
class BinaryFiles;
class Clock;
class CompanionLibrary;
class DatabaseEngine;
class ErrorTexts;
class FileLocks;
class FileProbe;
class FileSystem;
class FrontEnd;
class Internet;
class LogFiles;
class NamedMutexes;
class PageFiles;
class Power;
class Processes;
class ProductVersion;
class SettingsStore;
class SystemInfo;
class XmlParser;
}  // namespace ports

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
std::unique_ptr<ports::FileProbe> MakeFileProbe();
std::unique_ptr<ports::FileSystem> MakeFileSystem();
// in_terminal: even if there is a display (Linux).
std::unique_ptr<ports::FrontEnd> MakeFrontEnd(bool in_terminal = false);
std::unique_ptr<ports::Internet> MakeInternet(std::int32_t stall_limit);  // milliseconds
std::unique_ptr<ports::LogFiles> MakeLogFiles();
std::unique_ptr<ports::NamedMutexes> MakeNamedMutexes();
std::unique_ptr<ports::PageFiles> MakePageFiles();
std::unique_ptr<ports::Power> MakePower();
std::unique_ptr<ports::Processes> MakeProcesses(int argc, char** argv);
std::unique_ptr<ports::ProductVersion> MakeProductVersion();
std::unique_ptr<ports::SettingsStore> MakeSettingsStore();
std::unique_ptr<ports::SystemInfo> MakeSystemInfo();
std::unique_ptr<ports::XmlParser> MakeXmlParser();

// As ports::PrepareUpdater and ports::WaitForUpdaterChain say.
std::optional<int> PrepareUpdater(int argc, char** argv);
std::optional<int> WaitForUpdaterChain();

}  // namespace platform
