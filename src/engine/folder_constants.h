#pragma once

#include <map>
#include <string>

namespace tmw {

// Replaces "{name}" by the constant of that name and "{{text}}" by "{text}"; values are not
// expanded again. A brace without its partner ends the work: the rest stays as it is. An unknown
// name is raised.
std::string ParseConsts(const std::string& text,
                        const std::map<std::string, std::string>& constants);

}  // namespace tmw
