#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "publish/announcement.h"
#include "publish/faults.h"
#include "publish/packer.h"
#include "publish/rehearsal.h"
#include "tools/progress.h"

namespace publish {

struct PublishOptions {
  std::string description;         // the file
  std::string product;             // the folder of the product's files
  std::string database;            // the reference database
  std::string scripts;             // the folder of the update scripts; empty: there are none
  std::string output;              // the folder that the web server offers
  bool may_replace = false;        // even if a release of this version is announced, or was before
  bool may_downgrade = false;      // even below the announced version
  bool is_announced = true;        // else the release waits for Announce
  const Signer* signer = nullptr;  // of the announcement; null: it is not signed
  std::optional<PackerOptions> packer;
  std::vector<std::string> tries;  // databases of users, to rehearse the update on
};

// A release that has been made.
struct PublishedRelease {
  std::string version;
  std::string folder;  // of the release
  std::size_t files = 0;
  std::size_t dictionaries = 0;
  std::size_t user_tables = 0;
  std::size_t scripts = 0;
  std::int64_t volume = 0;  // bytes a first installation downloads
  Announcement announcement;
  std::vector<TriedDatabase> tried;  // also if they are the reason why no release was made
};

// Makes a release, or none if there are faults. The same input gives the same bytes.
//
// The release is built in the folder "<release>.new", renamed when it is complete, and announced by
// the digest last. Wherever a run is interrupted, the digest names a complete release; the next run
// removes what is left over.
PublishedRelease Publish(const PublishOptions& options, tools::Progress& progress, Faults& faults);

}  // namespace publish
