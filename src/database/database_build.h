#pragma once

#include <string>
#include <vector>

#include "database/db_version.h"
#include "database/wu_table_node.h"

namespace tmw {

// What the two databases of a release are built from, beside the user database. The folders hold
// the verified dictionaries, the update scripts and the table structures.
struct DatabaseBuild {
  std::string ProductCode;
  DbVersion TargetVersion{};
  std::string LoadedFolder;
  std::string ScriptsFolder;
  std::string StructuresFolder;
  const std::vector<WuTableNode>* Tables = nullptr;
};

}  // namespace tmw
