#include "jet/file/relation_indexes.h"

#include <algorithm>
#include <cstdint>
#include <string>
#include <utility>
#include <vector>

#include "foundation/text.h"
#include "jet/errors.h"
#include "jet/file/layout_builder.h"

namespace jet::file {
namespace {

const ColumnLayout& Column(const TableLayout& table, const std::string& name,
                           const std::string& table_name) {
  for (const ColumnLayout& column : table.columns) {
    if (tmw::EqualIgnoringCase(column.name, name)) return column;
  }
  Fail(kFieldNotFound, name, table_name);
}

// The tree over exactly these columns; as many as there are trees when there is none.
std::size_t FindTree(const TableLayout& table, const std::vector<KeyColumn>& columns,
                     bool must_be_unique) {
  std::size_t found = table.indexes.size();
  for (std::size_t i = 0; i < table.indexes.size(); ++i) {
    const IndexLayout& index = table.indexes[i];
    if (index.columns != columns || (must_be_unique && !index.IsUnique())) continue;
    // The primary key is the first choice.
    const bool is_primary = std::any_of(
        table.logical_indexes.begin(), table.logical_indexes.end(),
        [i](const LogicalIndexLayout& logical) {
          return logical.real_index == i && logical.kind == definition::logical_index::kPrimary;
        });
    if (is_primary) return i;
    if (found == table.indexes.size()) found = i;
  }
  return found;
}

// ".rB" for number 1, and so on; behind the letters, digits as well.
std::string HiddenName(std::uint32_t number) {
  constexpr std::uint32_t kLetters = 26;
  std::string name = ".r";
  if (number >= kLetters) name += std::to_string(number / kLetters);
  name.push_back(static_cast<char>('A' + number % kLetters));
  return name;
}

}  // namespace

void RemoveRelationIndexes(TableLayout& table) {
  std::erase_if(table.logical_indexes,
                [](const LogicalIndexLayout& index) { return index.relation.has_value(); });
  for (std::size_t i = table.indexes.size(); i-- > 0;) {
    const bool is_named =
        std::any_of(table.logical_indexes.begin(), table.logical_indexes.end(),
                    [i](const LogicalIndexLayout& index) { return index.real_index == i; });
    if (is_named) continue;
    table.indexes.erase(table.indexes.begin() + static_cast<std::ptrdiff_t>(i));
    for (LogicalIndexLayout& index : table.logical_indexes)
      index.real_index -= index.real_index > i ? 1 : 0;
  }
}

void AddRelationIndexes(TableLayout& referencing, TableLayout& referenced,
                        const Relation& relation) {
  if ((relation.flags & relation_flags::kNotEnforced) != 0) return;
  for (const LogicalIndexLayout& index : referencing.logical_indexes) {
    if (tmw::EqualIgnoringCase(index.name, relation.name)) Fail(kIndexExists, relation.name);
  }
  std::vector<KeyColumn> own;
  std::vector<KeyColumn> other;
  for (const RelationColumn& column : relation.columns) {
    own.push_back({Column(referencing, column.column, relation.table).id, false});
    other.push_back(
        {Column(referenced, column.referenced_column, relation.referenced_table).id, false});
  }
  const std::size_t referenced_tree = FindTree(referenced, other, true);
  if (referenced_tree == referenced.indexes.size())
    Fail(kNoUniqueReference, relation.referenced_table);
  const bool is_unique = (relation.flags & relation_flags::kUnique) != 0;
  const std::size_t own_tree = FindTree(referencing, own, is_unique);
  if (own_tree == referencing.indexes.size()) {
    IndexLayout index;
    index.columns = std::move(own);
    index.flags = definition::real_index::kAlways;
    if (is_unique) index.flags |= definition::real_index::kUnique;
    referencing.indexes.push_back(std::move(index));
  }
  LogicalIndexLayout outgoing;
  outgoing.name = relation.name;
  outgoing.number = NextIndexNumber(referencing);
  outgoing.real_index = static_cast<std::uint32_t>(own_tree);
  outgoing.kind = definition::logical_index::kForeign;
  LogicalIndexLayout incoming;
  // A table that refers to itself gets two numbers.
  incoming.number = NextIndexNumber(referenced) + (&referencing == &referenced ? 1 : 0);
  incoming.name = HiddenName(incoming.number);
  incoming.real_index = static_cast<std::uint32_t>(referenced_tree);
  incoming.kind = definition::logical_index::kForeign;
  RelationEnd end;
  end.cascades_updates = (relation.flags & relation_flags::kCascadesUpdates) != 0;
  end.cascades_deletions = (relation.flags & relation_flags::kCascadesDeletions) != 0;
  end.side = definition::logical_index::kReferencingSide;
  end.other_number = incoming.number;
  end.other_table = referenced.page;
  outgoing.relation = end;
  end.side = definition::logical_index::kReferencedSide;
  end.other_number = outgoing.number;
  end.other_table = referencing.page;
  incoming.relation = end;
  InsertByName(referencing, std::move(outgoing));
  InsertByName(referenced, std::move(incoming));
}

}  // namespace jet::file
