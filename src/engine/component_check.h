#pragma once

#include <cstdint>
#include <string>

#include "engine/records.h"
#include "engine/working_folders.h"
#include "services/advice.h"

// Unpacking and verifying what has been downloaded. A function that returns false gives the fault
// in words, and has deleted the file where it must not be used again.
namespace tmw {

inline constexpr std::int32_t kNoLength = -1;  // of a table; its text is verified by the hash alone

// What the manifest says of a component.
struct ComponentFacts {
  std::string Name;                 // installed
  std::int32_t PackType = 0;        // unchecked
  std::int32_t ServerSize = 0;      // bytes
  std::int32_t ExpectedLength = 0;  // bytes, unpacked, or kNoLength
  std::string ExpectedHash;
};

// Returns true if an earlier run has loaded and verified the file. A bad one is deleted without a
// report.
bool IsLoadedFileReusable(const std::string& loaded, const ComponentFacts& expected);

// Unpacks the downloaded package into the file beside it and deletes the package.
[[nodiscard]] bool TryUnpackComponent(const ComponentPlaces& places, const ComponentFacts& expected,
                                      std::string& fault);

// Checks length and hash of the unpacked file, or the hash of its text.
[[nodiscard]] bool TryVerifyComponent(const std::string& unpacked, const ComponentFacts& expected,
                                      std::string& fault);

// Checks existence, length and hash of a package of several files.
[[nodiscard]] bool TryVerifyPackage(const std::string& url, const std::string& file,
                                    const WuPackage& package, std::string& fault);

// What to advise after a loaded file was refused: kDamagedFile, or kDiskFull if it could not be
// written while it was unpacked.
[[nodiscard]] FailureKind KindOfRefusal();

// Check the integrity data of an unpacked file, and those of a package. CheckFileCrc deletes a file
// that fails; CheckFileCrcEx leaves it to its caller.
[[nodiscard]] bool CheckFileCrc(const std::string& file, std::string& fault);
[[nodiscard]] bool CheckFileCrcEx(const std::string& file, std::string& fault);

}  // namespace tmw
