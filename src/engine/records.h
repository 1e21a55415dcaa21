#pragma once

#include <cstdint>
#include <string>

#include "database/wu_table_node.h"

// The records that stages hand to each other. Sizes are bytes, hashes lower-case SHA-256 texts.
namespace tmw {

// One program file of a release.
struct WuFileNode {
  std::string OrigName;       // as installed
  std::string Folder;         // absolute, no separator at its end
  std::string SrvName;        // on the server, relative to the loading URL
  std::int32_t OrigSize = 0;  // installed
  std::int32_t SrvSize = 0;   // on the server
  std::int32_t PackType = 0;  // a PackMethod, unchecked
  std::string Hash;           // of the installed file
  bool IsCom = false;         // registered with the system after installation
  bool NeedUpdate = false;
};

// One package of several files (update scripts, table structures).
struct WuPackage {
  std::string SrvName;
  std::int32_t PackSize = 0;
  std::string PackHash;
};

// One file of the updater itself, from the digest.
struct WuUpdaterComponent {
  std::string Name;  // on the server, relative to the loading URL
  std::int32_t Size = 0;
  std::string Hash;
  std::string LocalFileName;  // set when it has been downloaded
};

enum PackMethod : std::int32_t {
  kPackPlain = 1,      // verified by length and hash
  kPackIntegrity = 2,  // carries integrity data of its own besides
  kPackText = 3,       // a text, verified by the hash of the text
};

}  // namespace tmw
