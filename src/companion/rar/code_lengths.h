#pragma once

#include <cstdint>
#include <span>

#include "companion/rar/bit_reader.h"

namespace companion::rar {

// Reads the code lengths of all tables of a block, which are packed with a code of their own. The
// form is the same in RAR 3 and 5, but RAR 3 may store differences: then `add` is set and `lengths`
// holds those of the previous block.
void ReadCodeLengths(BitReader& reader, bool add, std::span<std::uint8_t> lengths);

}  // namespace companion::rar
