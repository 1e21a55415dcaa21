#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "publish/faults.h"

// The two text files in the root of a server. Lines end with CR LF.
namespace publish {

// A file of the updater itself.
struct UpdaterFile {
  std::string name;
  std::int64_t length = 0;
  std::string hash;
};

struct Digest {
  std::string version;         // empty when it could not be read
  std::string needed_updater;  // older ones replace themselves by the files
  std::vector<UpdaterFile> files;
};

std::string WriteDigest(const Digest& digest);

// The text of the digest's file; whatever the updater would refuse or misread is a fault.
Digest ReadDigest(const std::string& text, Faults& faults);

// Whether updaters can replace themselves by these files; names may have folders.
void CheckUpdater(const std::string& needed_updater, const std::vector<std::string>& files,
                  const std::string& place, Faults& faults);

void CheckServerList(const std::string& text, Faults& faults);

// Exactly count decimal numbers with "." between them.
bool IsVersion(const std::string& text, int count);

// A hash as the manifest and the digest have it: 64 digits, letters lower-case.
bool IsHash(const std::string& text);

}  // namespace publish
