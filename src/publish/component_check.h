#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <utility>

#include "publish/digest.h"
#include "publish/faults.h"
#include "publish/image_check.h"
#include "publish/manifest.h"
#include "publish/release_source.h"

namespace publish {

// Fetches the parts of one release, one by one, and checks each as the updater will. What the
// manifest alone shows is left to CheckManifest. A method may be called on as many threads as the
// source allows; the scratch folders, where packages are extracted, are the caller's.
class ComponentCheck {
 public:
  // folder: of the release in the source, with a "/" at the end; empty for the source's root.
  ComponentCheck(ReleaseSource& source, std::string folder)
      : source_(source), folder_(std::move(folder)) {}

  // Returns false, and a fault, if there is no readable manifest. A digest that does not bind one
  // binds this one afterwards.
  bool ReadManifest(Digest& digest, const std::string& scratch, Manifest& manifest, Faults& faults);

  // Returns what the file's headers say, if it is a program.
  std::optional<ImageFacts> CheckUpdaterFile(const UpdaterFile& file, Faults& faults);

  // Returns what CheckRegistered asks for, if that concerns the file.
  std::optional<ReleaseImage> CheckFile(const FileRecord& file, const std::string& scratch,
                                        Faults& faults);

  void CheckDictionary(const TableRecord& table, const std::string& scratch, Faults& faults);

  // Extracts the package into the scratch folder; returns false if there is nothing to look at.
  bool CheckPackage(const PackageRecord& package, const std::string& scratch, Faults& faults);

 private:
  std::unique_ptr<FetchedFile> Fetch(const std::string& name, std::int64_t max_bytes,
                                     const std::string& place, Faults& faults);
  std::unique_ptr<FetchedFile> FetchSized(const std::string& name, std::int64_t length,
                                          const std::string& place, Faults& faults);

  ReleaseSource& source_;
  std::string folder_;
};

}  // namespace publish
