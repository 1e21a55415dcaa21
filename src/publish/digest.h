#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "publish/faults.h"

// The two text files in the root of a server: digest and list of servers. Lines end with CR LF.
namespace publish {

// A file of the updater itself.
struct UpdaterFile {
  std::string name;
  std::int64_t length = 0;
  std::string hash;
};

struct Digest {
  std::string version;         // empty if it could not be read
  std::string needed_updater;  // older updaters replace themselves with the files first
  std::vector<UpdaterFile> files;
};

std::string WriteDigest(const Digest& digest);

// Parses the text of the digest's file; whatever the updater would refuse or misread is a fault.
Digest ReadDigest(const std::string& text, Faults& faults);

// Checks that updaters can replace themselves with these files; the names may include folders.
void CheckUpdater(const std::string& needed_updater, const std::vector<std::string>& files,
                  const std::string& place, Faults& faults);

void CheckServerList(const std::string& text, Faults& faults);

// Returns whether the text is exactly `count` decimal numbers with "." between them.
bool IsVersion(const std::string& text, int count);

// Returns whether the text is a hash as in manifest and digest: 64 lower-case hexadecimal digits.
bool IsHash(const std::string& text);

}  // namespace publish
