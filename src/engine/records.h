#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "database/wu_table_node.h"

// The records that stages hand to each other. Sizes are bytes, hashes lower-case SHA-256 texts.
namespace tmw {

// The configured servers; components come from others (server_list.h). Both addresses end in "/".
struct UpdateServers {
  std::string Url;
  std::string FallbackUrl;  // may be empty
};

// How this updater compares with the oldest one that may process the update.
enum class UpdaterVersionCheck {
  kUnreadable,    // the required version is not a version
  kTooOld,        // an older major number: nothing can be done automatically
  kUpdateNeeded,  // the updater must replace itself first
  kGood,
};

// One file of the updater itself.
struct WuUpdaterComponent {
  std::string Name;  // on the server, relative to the loading URL
  std::int32_t Size = 0;
  std::string Hash;
  std::string LocalFileName;  // set when it is downloaded
};

// The manifest's package as the digest announces it.
struct BoundPackage {
  std::int64_t Size = 0;
  std::string Hash;
};

// The version digest.
struct Digest {
  std::string Version;  // of the update
  std::array<std::int32_t, 4> VersionNumbers{};
  UpdaterVersionCheck Updater = UpdaterVersionCheck::kGood;
  std::vector<WuUpdaterComponent> UpdaterComponents;  // read only when the updater is replaced
  std::optional<BoundPackage> Manifest;               // if the digest binds it
};

// One program file of a release.
struct WuFileNode {
  std::string OrigName;       // as installed
  std::string Folder;         // absolute, without a separator at the end
  std::string SrvName;        // on the server, relative to the loading URL
  std::int32_t OrigSize = 0;  // installed
  std::int32_t SrvSize = 0;   // on the server
  std::int32_t PackType = 0;  // a PackMethod, unchecked
  std::string Hash;           // of the installed file
  bool IsCom = false;         // registered with the system after installation
  bool NeedUpdate = false;
};

enum PackMethod : std::int32_t {
  kPackPlain = 1,      // verified by length and hash
  kPackIntegrity = 2,  // carries integrity data of its own besides
  kPackText = 3,       // a text, verified by the hash of the text
};

// One package of several files (update scripts, table structures).
struct WuPackage {
  std::string SrvName;
  std::int32_t PackSize = 0;
  std::string PackHash;
};

// All that a release consists of.
struct Manifest {
  std::string VersionID;          // names the release's working folder
  std::string VersionIDNodeName;  // the same as an XML name
  std::vector<WuFileNode> Files;
  std::vector<WuTableNode> Tables;  // dictionaries first
  WuPackage ScriptsPackage;
  WuPackage StructuresPackage;
};

// What an update has to bring.
struct UpdateNeed {
  bool Tables = false;
  bool Files = false;
  std::int32_t DownloadVolume = 0;  // an estimate
};

}  // namespace tmw
