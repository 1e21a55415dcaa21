#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "publish/faults.h"

// The manifest of a release: a packed XML document of at most a few megabytes.
namespace publish {

// How a file is stored on the server.
enum PackMethod : std::int32_t {
  kPlain = 1,      // verified by length and hash
  kIntegrity = 2,  // file and package also end with integrity data
  kText = 3,       // UTF-16 text, verified by the hash of the text
};

// One program file.
struct FileRecord {
  std::string folder;              // with constants, "{p}tm"
  std::string name;                // as installed
  std::string server_name;         // in the release's folder, "/" between parts
  std::int64_t length = 0;         // installed, bytes
  std::int64_t server_length = 0;  // on the server, bytes
  std::int32_t pack_method = kPlain;
  std::string hash;  // of the installed file
  bool is_com = false;
};

// One table of the database.
struct TableRecord {
  std::string name;
  bool is_user = false;  // the content is the user's; the fields below are for dictionaries
  std::int64_t server_length = 0;
  std::string hash;  // of the table's text
};

// A package of several files.
struct PackageRecord {
  std::string server_name;
  std::int64_t length = 0;
  std::string hash;
};

struct Manifest {
  std::string product;
  std::string version;
  std::string version_id;
  std::vector<FileRecord> files;
  std::vector<TableRecord> tables;
  PackageRecord scripts;
  PackageRecord structures;
};

// The document, in UTF-8. Consecutive files of one folder share one element.
std::string WriteManifest(const Manifest& manifest);

// Reads the extracted document. What cannot be read is a fault and left out of the result. Returns
// false if the file is no manifest at all, which is a fault too.
[[nodiscard]] bool ReadManifest(const std::string& file, Manifest& manifest, Faults& faults);

// Checks what the lists alone show: names that the updater's path guard refuses or that no address
// can contain, places and server names that are used twice, different contents under one name,
// tables that must not be published, more bytes than the updater can count.
void CheckManifest(const Manifest& manifest, Faults& faults);

// Warns of files whose replacement has a side effect on another file of the release.
void WarnOfCompanions(const Manifest& manifest, Faults& faults);

// The file of a table on the server: the updater derives it from the table's name and ignores what
// the manifest says.
std::string TablePackage(const std::string& table);

// Identifies a program file by where it is installed, ignoring letter case.
std::string InstalledPlace(const FileRecord& file);

// The bytes that a first installation, or one where everything has changed, downloads.
std::int64_t WholeVolume(const Manifest& manifest);

}  // namespace publish
