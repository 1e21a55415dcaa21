#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "publish/faults.h"

// The digest in the root of a server, a text whose lines end with CR LF.
namespace publish {

// A file of the updater itself.
struct UpdaterFile {
  std::string name;
  std::int64_t length = 0;
  std::string hash;
};

// The package of the release's manifest.
struct BoundManifest {
  std::int64_t length = 0;
  std::string hash;
};

// What only a signed digest has.
struct SignedPart {
  std::string product;
  std::int64_t serial = 0;
  std::int64_t last_day = 0;  // days since 1970-01-01, UTC
};

struct Digest {
  std::string version;         // empty if it could not be read
  std::string needed_updater;  // older updaters replace themselves with the files first
  std::vector<UpdaterFile> files;
  std::optional<BoundManifest> manifest;
  std::optional<SignedPart> signed_part;  // if all its lines are there
};

std::string WriteDigest(const Digest& digest);

// Parses the text of the digest's file; whatever the updater would refuse or misread is a fault.
Digest ReadDigest(const std::string& text, Faults& faults);

// Checks that updaters can replace themselves with these files; the names may include folders.
void CheckUpdater(const std::string& needed_updater, const std::vector<std::string>& files,
                  const std::string& place, Faults& faults);

// The lines of a text that the updater splits at CR LF: any other line end is a fault, for it would
// become part of a line.
std::vector<std::string> LinesOf(const std::string& text, const std::string& place, Faults& faults);

// Returns whether the text is exactly `count` decimal numbers with "." between them.
bool IsVersion(const std::string& text, int count);

}  // namespace publish
