#pragma once

#include <string>

// Programs that exchange files of the product do not run from its folder: each runs as a copy in a
// folder of its own among the temporary files.
namespace tmw {

// Creates that folder in the user's temporary folder. Returns false if that cannot be done, which
// has been reported. A run with administrator rights works in the system's instead, in a folder
// that only administrators may write to: one that is not run from there yet makes it anew.
bool CreateWorkingPlace(const std::string& name, std::string& folder);

// Whether this process is the copy that does the work, where it has to be.
bool RunsInWorkingPlace(const std::string& name);

}  // namespace tmw
