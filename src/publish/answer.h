#pragma once

#include <string>
#include <vector>

#include "publish/announcement.h"
#include "publish/faults.h"
#include "tools/command_line.h"
#include "tools/json.h"

// What a command prints at its end.
namespace publish {

// Exit codes besides those that all tools share.
inline constexpr int kFaultsFound = 1;
inline constexpr int kFailed = 3;

// Prints the answer with all faults and warnings as JSON, or faults and warnings, grouped by cause,
// and the words. Returns the exit code, which depends on whether there are faults.
int Answer(const tools::Arguments& arguments, tools::Json answer, const Faults& faults,
           const std::string& words);

// Faults or warnings as a JSON list.
tools::Json ListOf(const std::vector<Fault>& faults);

// What was signed, as members of the answer and as words.
void AddTo(tools::Json& answer, const SignedPart& part, const std::string& key_id);
std::string WordsOf(const SignedPart& part, const std::string& key_id);

}  // namespace publish
