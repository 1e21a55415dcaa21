#pragma once

#include <optional>
#include <string>

#include "engine/records.h"

// Where the files of a release lie once they are installed, and which of them are special.
namespace tmw {

std::string InstalledPath(const WuFileNode& file);

// True for the updater's program, its companion library and the program of the way back, by their
// names, letter case aside. Each is replaced in one step: the product's folder is never without its
// updater.
bool IsUpdatersOwnFile(const WuFileNode& file);

// Beside a script of the product (".tms") lies its description, the file of the same base name that
// ends in ".xml"; it is deleted with the script. Returns its path, or nothing if the file is no
// script, or if the description itself is a file of the release.
std::optional<std::string> ScriptCompanion(const WuFileNode& file, const Manifest& manifest);

}  // namespace tmw
