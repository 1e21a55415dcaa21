#pragma once

#include <string>
#include <string_view>

namespace jet {

// Unicode's simple upper-case mapping, the inverse of tmw::LowerCase, in any locale.
std::string UpperCase(std::string_view text);

}  // namespace jet
