#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "publish/faults.h"

// The manifest of a release: an XML document of a few megabytes at most, packed.
namespace publish {

// How a file lies on the server.
enum PackMethod : std::int32_t {
  kPlain = 1,      // verified by length and hash
  kIntegrity = 2,  // file and package carry integrity data besides
  kText = 3,       // UTF-16 text, verified by the hash of the text
};

// One program file.
struct FileRecord {
  std::string folder;              // with constants, "{p}tm"
  std::string name;                // as installed
  std::string server_name;         // in the release's folder; "/" separates
  std::int64_t length = 0;         // installed, bytes
  std::int64_t server_length = 0;  // on the server, bytes
  std::int32_t pack_method = kPlain;
  std::string hash;  // of the installed file
  bool is_com = false;
};

// One table of the database.
struct TableRecord {
  std::string name;
  bool is_user = false;  // content is the user's own; the fields below are for dictionaries
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

// UTF-8. Files of one folder that follow each other share one element.
std::string WriteManifest(const Manifest& manifest);

// Reads the extracted document. What cannot be read is a fault and left out; the rest is there.
// False when it is no manifest at all, which is a fault too.
[[nodiscard]] bool ReadManifest(const std::string& file, Manifest& manifest, Faults& faults);

// What can be said of the lists alone and the updater would stumble over: names that its path guard
// refuses or that no address can hold, a place or a server name taken twice, different contents
// under one name, tables that may not be carried, more bytes than it can count.
void CheckManifest(const Manifest& manifest, Faults& faults);

// On the server a table lies under its own name, whatever the manifest says of its file.
std::string TablePackage(const std::string& table);

// The key of a program file: where it is installed, without regard to letter case.
std::string InstalledPlace(const FileRecord& file);

// What a first installation, or one where everything has changed, downloads. Bytes.
std::int64_t WholeVolume(const Manifest& manifest);

}  // namespace publish
