#include "publish/unpack_folders.h"

#include "foundation/file_names.h"
#include "foundation/file_utils.h"

namespace publish {

std::string UnpackFolders::Take() {
  const std::lock_guard lock(guard_);
  if (free_.empty()) return tmw::JoinPath(parent_, std::to_string(made_++));
  std::string folder = std::move(free_.back());
  free_.pop_back();
  return folder;
}

void UnpackFolders::Return(const std::string& folder) {
  for (const std::string& name : tmw::CollectFileNamesInFolder(folder, "*"))
    tmw::DeleteFile(tmw::JoinPath(folder, name));
  const std::lock_guard lock(guard_);
  free_.push_back(folder);
}

}  // namespace publish
