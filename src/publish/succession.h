#pragma once

#include <string>

#include "publish/description.h"
#include "publish/faults.h"
#include "publish/manifest.h"

namespace publish {

// Compares the files and tables of a release to come with those of the release that is announced in
// the folder, for slips that no release shows by itself: a user's table that becomes a dictionary,
// which would replace the user's rows, is a fault unless the description says that it is meant; a
// file that moves to another folder is a warning. Does nothing if no readable release is announced.
void CheckSuccession(const std::string& root, const Manifest& manifest,
                     const Description& description, Faults& faults);

}  // namespace publish
