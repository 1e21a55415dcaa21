#pragma once

#include <string>
#include <string_view>

namespace jet {

// Unicode's simple upper-case mapping, the reverse of tmw::LowerCase; independent of the locale.
std::string UpperCase(std::string_view text);

}  // namespace jet
