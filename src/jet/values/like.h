#pragma once

#include <string_view>

namespace jet {

enum class Wildcards {
  kJet,   // * ? #
  kAnsi,  // % _
};

// The wildcards of Jet: * any text, ? one character, # one digit, [a-z] one of a set, [!a-z] one
// outside of it. Letter case does not count. An unclosed "[" fails with 3075.
bool MatchesLike(std::string_view text, std::string_view pattern,
                 Wildcards wildcards = Wildcards::kJet);

}  // namespace jet
