#pragma once

#include <string>
#include <string_view>
#include <vector>

// The updater's own rules for splitting a command line (module mProcesses), the same on both
// systems. They stand here because the Linux platform follows them too.
namespace tmw {

// Blanks and tabs outside double quotes separate; quotes group and are dropped; ^" and ^^ stand for
// a quote and a caret, any other caret for itself. Empty arguments are dropped.
std::vector<std::string> SplitCommandLine(std::string_view text);

// A line that SplitCommandLine splits into the same arguments. Empty arguments are omitted, since
// the splitter would drop them.
std::string JoinCommandLine(const std::vector<std::string>& arguments);

}  // namespace tmw
