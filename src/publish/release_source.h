#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>

namespace publish {

// How much may come where nothing announces a size. The updater takes no more either.
inline constexpr std::int64_t kMaxSmallFile = std::int64_t{1} << 20;  // digest, server list
inline constexpr std::int64_t kMaxManifestPackage = std::int64_t{64} << 20;

// A file of a release on this machine; a downloaded copy goes with the object.
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

// Where releases are read from: what a web server offers, or the folder behind it.
class ReleaseSource {
 public:
  virtual ~ReleaseSource() = default;

  // Nothing, with the reason, for a file that is not there, cannot be had or is longer than
  // max_bytes. The name is relative, "/" separates; it has been checked.
  virtual std::unique_ptr<FetchedFile> Fetch(const std::string& name, std::int64_t max_bytes,
                                             std::string& reason) = 0;

  // How many threads may fetch at a time.
  virtual std::size_t Workers() const = 0;
};

// A folder or, with "://" in it, an address. Downloads go into the scratch folder.
std::unique_ptr<ReleaseSource> OpenReleaseSource(const std::string& place,
                                                 const std::string& scratch);

}  // namespace publish
