#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "signature/public_key.h"

namespace tmw {

// The keys of which one must have signed the digest; empty: none is demanded. They are those built
// in at configure time (TMW_PUBLIC_KEYS), unless the machine's setting General\UpdateKeys names
// others. A setting from a file that the environment chooses replaces no built-in keys. Returns
// false with the reason if a key is malformed.
[[nodiscard]] bool TryReadUpdateKeys(std::vector<signature::PublicKey>& keys, std::string& reason);

// The same for other built-in keys; several are separated by blanks, commas or semicolons.
[[nodiscard]] bool TryReadUpdateKeys(std::string_view built_in,
                                     std::vector<signature::PublicKey>& keys, std::string& reason);

}  // namespace tmw
