#pragma once

#include <string>
#include <string_view>
#include <vector>

// The updater's own rules for splitting a command line (module mProcesses), the same on both
// systems. They stand here because the Linux platform follows them too.
namespace tmw {

// Whether an argument that stands as two quotes is one.
enum class EmptyArguments { kDropped, kKept };

// Blanks and tabs outside double quotes separate; quotes group and are dropped; ^" and ^^ stand for
// a quote and a caret, any other caret for itself.
std::vector<std::string> SplitCommandLine(std::string_view text,
                                          EmptyArguments empty = EmptyArguments::kDropped);

// A line that SplitCommandLine splits into the same arguments; an empty one becomes two quotes.
std::string JoinCommandLine(const std::vector<std::string>& arguments);

}  // namespace tmw
