#pragma once

#include <cstdint>

#include "jet/file/catalogue_reader.h"
#include "jet/file/table_layout.h"

// A relation stands in the definitions of both its tables: as a named index over the referencing
// columns, and as a hidden one over those that they refer to.
namespace jet::file {

// Relation::flags.
namespace relation_flags {
inline constexpr std::uint32_t kUnique = 0x0001;  // at most one referencing row each
inline constexpr std::uint32_t kNotEnforced = 0x0002;
inline constexpr std::uint32_t kCascadesUpdates = 0x0100;
inline constexpr std::uint32_t kCascadesDeletions = 0x1000;
}  // namespace relation_flags

// Takes out the indexes that only relations asked for. Trees that nothing names any more go too.
void RemoveRelationIndexes(TableLayout& table);

// Nothing happens for a relation that is not enforced. Both layouts may be the same one. Each one's
// page stands for its table at the other's end. 3609 when the referenced columns have no unique
// index, 3381 for a column that is not there, 3284 when the relation's name is that of an index.
void AddRelationIndexes(TableLayout& referencing, TableLayout& referenced,
                        const Relation& relation);

}  // namespace jet::file
