#pragma once

#include <mutex>
#include <set>
#include <string>

namespace publish {

// Archives from earlier runs, by key. Each is a file with integrity data at its end, which gets its
// name when it is complete. May be used on several threads.
class PackageCache {
 public:
  // An empty folder: nothing is found or kept.
  explicit PackageCache(std::string folder);

  // Writes the kept archive to a file; returns false if there is none, or only a damaged one.
  bool Find(const std::string& key, const std::string& archive) const;

  // Keeps a copy of the archive.
  void Keep(const std::string& key, const std::string& archive);

 private:
  std::string PathOf(const std::string& key) const;

  std::string folder_;
  std::mutex guard_;
  std::set<std::string> kept_;  // by this run
};

}  // namespace publish
