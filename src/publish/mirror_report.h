#pragma once

#include <optional>
#include <string>
#include <vector>

#include "publish/mirror_check.h"
#include "tools/command_line.h"
#include "tools/json.h"

// The mirrors in what a command prints.
namespace publish {

// The number that --sample gives; nothing without it.
std::optional<std::size_t> SampleOf(const tools::Arguments& arguments);

// Adds the member "mirrors" to the answer; returns a line for each server.
std::string AddTo(tools::Json& answer, const std::vector<MirrorState>& states);

// The exit code that the worst of them stands for.
int CodeOf(const std::vector<MirrorState>& states);

}  // namespace publish
