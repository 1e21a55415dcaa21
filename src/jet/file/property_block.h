#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "jet/file/page_view.h"

namespace jet::file {

// One property with its value as it is stored; the type is numbered like a column's.
struct StoredProperty {
  std::string name;
  std::uint8_t type = 0;
  std::uint8_t flag = 0;  // 1: part of the definition
  std::string value;
  bool operator==(const StoredProperty&) const = default;
};

// The properties of a table or query, of one of its columns, or of an index.
struct PropertySet {
  std::uint16_t kind = 0;  // properties::kOfObject, kOfColumn; others are kept as they are
  std::string owner;       // the column's name; empty for the object itself
  std::vector<StoredProperty> properties;
  bool operator==(const PropertySet&) const = default;
};

// Throws Damage when the lengths contradict each other. An empty value has no sets.
std::vector<PropertySet> ParseProperties(ByteView block);

}  // namespace jet::file
