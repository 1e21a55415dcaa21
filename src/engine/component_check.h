#pragma once

#include <cstdint>
#include <string>

#include "engine/records.h"
#include "engine/release_paths.h"

// Verifying what has been downloaded. A false result has been told to the user, and what failed has
// been deleted as far as it must not be used again.
namespace tmw {

// What the manifest says of a component.
struct ComponentFacts {
  std::string name;                  // installed
  std::int32_t pack_method = 0;      // unchecked
  std::int32_t server_size = 0;      // bytes
  std::int32_t expected_length = 0;  // bytes, unpacked; -1 when it is not known
  std::string expected_hash;
};

// True when the loaded file of an earlier run is good. A bad one is deleted.
bool IsLoadedFileReusable(const std::string& loaded, const ComponentFacts& expected);

// From the downloaded package to the unpacked file beside it; the package is deleted.
bool UnpackComponent(const ReleasePaths& release, const ComponentFacts& expected);

// Length and hash of the unpacked file, or the hash of its text.
bool VerifyComponent(const ReleasePaths& release, const ComponentFacts& expected);

// Existence, length and hash of a package of several files.
bool VerifyPackage(const std::string& url, const std::string& file, const WuPackage& package);

// The integrity data of an unpacked file (which is deleted when they fail) and of a package.
bool CheckFileCrc(const std::string& file);
bool CheckFileCrcEx(const std::string& file);

}  // namespace tmw
