#pragma once

#include <optional>
#include <string>

// The marks of an installation under way: two files that hold the release's VersionID, one in the
// release's folder and one in the product's root, which outlives a lost temporary folder. They lie
// there from before the first file is touched until clean-up. A run that finds one of them
// completes the installation, even if every file already is the new one.
namespace tmw {

// The marks are on the disk when the call returns.
void MarkInstallation(const std::string& release_folder, const std::string& version_id);

// Removes the marks of all releases: one that was interrupted has been replaced by the one that is
// complete now.
void UnmarkInstallations(const std::string& temp_dir);

// The release that the mark in the product's root names, else the first mark found; nothing if
// there is no mark.
std::optional<std::string> InterruptedRelease(const std::string& temp_dir);

// True if the product's root or the folder holds the mark of any release.
bool IsInstallationInterrupted(const std::string& temp_dir);

}  // namespace tmw
