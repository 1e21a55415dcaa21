#pragma once

#include <string>
#include <string_view>
#include <vector>

// The updater's own way to split a command line (module mProcesses), alike on both systems. It
// stands here because the Linux platform needs it below the start-up floor.
namespace tmw {

// Blanks and tabs outside double quotes separate; quotes group and are dropped; ^" and ^^ stand for
// a quote and a caret, any other caret for itself. Empty arguments are not listed.
std::vector<std::string> SplitCommandLine(std::string_view text);

// A line that SplitCommandLine takes apart into the same arguments. Empty arguments leave no trace,
// since the splitter could not give them back.
std::string JoinCommandLine(const std::vector<std::string>& arguments);

}  // namespace tmw
