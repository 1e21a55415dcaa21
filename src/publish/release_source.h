#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>

namespace publish {

// Limits for files whose size nothing announces; the same as the updater's.
inline constexpr std::int64_t kMaxSmallFile = std::int64_t{1} << 20;  // digest, server list
inline constexpr std::int64_t kMaxManifestPackage = std::int64_t{64} << 20;

// A file of a release on this machine. The destructor removes a downloaded copy.
class FetchedFile {
 public:
  FetchedFile(std::string path, bool is_copy) : path_(std::move(path)), is_copy_(is_copy) {}
  FetchedFile(const FetchedFile&) = delete;
  FetchedFile& operator=(const FetchedFile&) = delete;
  ~FetchedFile();

  const std::string& Path() const { return path_; }

 private:
  std::string path_;
  bool is_copy_;
};

// Where releases are read from: a web server, or the folder that it offers.
class ReleaseSource {
 public:
  virtual ~ReleaseSource() = default;

  // Returns null and the reason if the file does not exist, cannot be read or is longer than
  // max_bytes. The name is relative, with "/" between parts; the caller has checked it.
  virtual std::unique_ptr<FetchedFile> Fetch(const std::string& name, std::int64_t max_bytes,
                                             std::string& reason) = 0;

  // Returns false if the last Fetch has failed on the way to the server, not by its answer.
  virtual bool IsReached() const { return true; }

  // How many threads may call Fetch at the same time.
  virtual std::size_t Workers() const = 0;
};

// Raises the reason if the server has not been reached.
void RequireReached(const ReleaseSource& source, const std::string& reason);

// Opens a folder or, if place contains "://", an address; downloads go to the scratch folder.
std::unique_ptr<ReleaseSource> OpenReleaseSource(const std::string& place,
                                                 const std::string& scratch);

}  // namespace publish
