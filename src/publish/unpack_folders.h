#pragma once

#include <cstddef>
#include <mutex>
#include <string>
#include <utility>
#include <vector>

namespace publish {

// A folder to unpack into for each worker: to make and remove one for every file would take longer
// than everything else.
class UnpackFolders {
 public:
  explicit UnpackFolders(std::string parent) : parent_(std::move(parent)) {}

  // A folder that may not have been made yet.
  std::string Take();

  // Deletes the files in the folder, which the next Take may return.
  void Return(const std::string& folder);

 private:
  std::string parent_;
  std::mutex guard_;
  std::vector<std::string> free_;
  std::size_t made_ = 0;
};

}  // namespace publish
