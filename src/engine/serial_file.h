#pragma once

#include <cstdint>

// The highest serial number of a digest that this installation has accepted, in a file of the
// updater's own in the product's root folder. An older digest than that is a replayed one.
namespace tmw {

// 0 if the file is missing, damaged or cannot be read.
std::int64_t HighestSerial();

// Writes the number unless the file has it or a higher one already. A folder that this user may not
// write to keeps its old number: a later run, which installs, has the rights.
void RememberSerial(std::int64_t serial);

}  // namespace tmw
