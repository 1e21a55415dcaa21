#pragma once

#include <string_view>

namespace jet {

enum class Wildcards {
  kJet,   // * ? #
  kAnsi,  // % _
};

// Jet's wildcards: * any text, ? one character, # one digit, [a-z] one of a set, [!a-z] one not in
// the set. Case is ignored. Fails with 3075 for an unclosed "[".
bool MatchesLike(std::string_view text, std::string_view pattern,
                 Wildcards wildcards = Wildcards::kJet);

}  // namespace jet
