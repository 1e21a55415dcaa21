#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "product/kept_list.h"
#include "services/updater_events.h"

// Brings back what was kept. Each step can be repeated: a rollback that was interrupted goes
// through all of them again and does what is left.
namespace rollback {

enum class Group {
  kProgram,   // the product's files
  kDatabase,  // the reference database and the update scripts
  kOwnFiles,  // the updater and this program, which can finish the work until then
};

Group GroupOf(const std::string& path);

// The bytes that the disk must have free for all files: what they grow by, and the largest one,
// which stands beside the file that it replaces.
std::int64_t RoomNeeded(const tmw::KeptList& list);

// Exchanges each file of the group in one step for the kept one, which stays where it is.
// Components are unregistered before. Raises an error at the first file that cannot be exchanged.
void RestoreFiles(const tmw::KeptList& list, Group group, tmw::UpdaterEvents& events);

// Registers the restored components and returns the reasons of those that could not be.
std::vector<std::string> RegisterRestored(const tmw::KeptList& list, tmw::UpdaterEvents& events);

// Removes the files of the group that the release had added. Returns those that were left because
// somebody has changed them since.
std::vector<std::string> RemoveAdded(const tmw::KeptList& list, Group group);

// Removes the folders that the release had made and in which there is nothing any more.
void RemoveMadeFolders(const tmw::KeptList& list);

}  // namespace rollback
