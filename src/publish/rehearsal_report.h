#pragma once

#include <string>
#include <vector>

#include "publish/rehearsal.h"
#include "tools/json.h"

// What a rehearsal has shown, for programs and for people.
namespace publish {

tools::Json ObjectOf(const TriedDatabase& tried);
std::string WordsOf(const TriedDatabase& tried);

// Adds the member "tried" to the answer, unless nothing was tried, and gives the words.
std::string AddTo(tools::Json& answer, const std::vector<TriedDatabase>& tried);

}  // namespace publish
