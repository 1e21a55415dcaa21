#pragma once

#include <optional>
#include <string>
#include <vector>

#include "publish/faults.h"
#include "publish/image_file.h"

namespace publish {

// A file of a release as far as registering matters.
struct ReleaseImage {
  std::string place;  // for faults
  std::string name;
  std::string marked_by;            // what says that it is to be registered; empty: nothing does
  std::optional<ImageFacts> facts;  // nothing if it is no program or library
};

// Returns whether the headers of such a file are worth reading.
bool MayBeImage(const std::string& name);

// Checks that the updater can register what is marked: a file that is no program or library,
// exports no DllRegisterServer or is of another bitness than most of the release ends an update
// after the old files have been removed.
void CheckRegistered(const std::vector<ReleaseImage>& images, Faults& faults);

// Checks that users' updaters can become new enough: by the version of the updater that comes with
// the release or, if its file does not say that, by this program's own.
void CheckNeededUpdater(const std::string& needed, const std::string& program_name,
                        const std::optional<ImageFacts>& program, const std::string& place,
                        Faults& faults);

}  // namespace publish
