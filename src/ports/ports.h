#pragma once

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

// The services of the system. main sets the real ones before anything else runs, a test sets its
// fakes. None is owned.
struct Ports {
  BinaryFiles* binary_files = nullptr;
  Clock* clock = nullptr;
  CompanionLibrary* companion = nullptr;
  DatabaseEngine* database = nullptr;
  ErrorTexts* error_texts = nullptr;
  FileLocks* file_locks = nullptr;
  FileProbe* file_probe = nullptr;
  FileSystem* files = nullptr;
  FrontEnd* front_end = nullptr;
  Internet* internet = nullptr;
  LogFiles* log_files = nullptr;
  NamedMutexes* mutexes = nullptr;
  PageFiles* page_files = nullptr;
  Power* power = nullptr;
  Processes* processes = nullptr;
  ProductVersion* product_version = nullptr;
  SettingsStore* settings = nullptr;
  SystemInfo* system_info = nullptr;
  XmlParser* xml = nullptr;
};

// The process-wide set. Written by main (or a test) only.
inline Ports& CurrentPorts() {
  static Ports ports;
  return ports;
}

}  // namespace ports
