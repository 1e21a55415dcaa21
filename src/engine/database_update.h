#pragma once

#include <string>

#include "database/database_build.h"
#include "engine/records.h"
#include "engine/working_folders.h"
#include "services/updater_events.h"

namespace tmw {

// Builds the reference database and the working database of a release in its working folders and
// puts them in their places. An operation that returns false has reported why, unless the user has
// cancelled.
class DatabaseUpdate {
 public:
  // The manifest outlives the object.
  DatabaseUpdate(UpdaterEvents& events, const std::string& product_code, const Digest& digest,
                 const Manifest& manifest, const ReleasePaths& release);

  bool BuildReference();
  bool BuildWorking();

  // Packs the user database into a backup beside it.
  bool BackUp();

  // Replaces both databases and the scripts that the product keeps by the new ones.
  bool PlaceNew();

 private:
  UpdaterEvents& events_;
  DatabaseBuild build_;
  std::string version_id_;
  std::string user_rows_hash_;  // from before the working database was copied
  std::string reference_hash_;  // of the databases that were built
  std::string working_hash_;
};

}  // namespace tmw
