#include "jet/file/catalogue_check.h"

#include <algorithm>
#include <set>
#include <utility>

#include "foundation/encodings.h"
#include "foundation/text.h"
#include "jet/file/account_ids.h"
#include "jet/file/check_texts.h"
#include "jet/file/system_rows.h"
#include "ports/database_types.h"

namespace jet::file {
namespace {

// Longer ids belong to accounts of a workgroup, which the file does not describe.
bool IsKnownAccount(const AccountIds& ids, std::string_view stored) {
  const std::string plain = ids.Combine(stored);
  if (plain.size() != PlainId(Account::kAdmin).size()) return true;
  for (const Account account :
       {Account::kAdmin, Account::kUsers, Account::kEngine, Account::kCreator}) {
    if (plain == PlainId(account)) return true;
  }
  return false;
}

bool HasColumn(const TableLayout& table, const std::string& name) {
  return std::any_of(
      table.columns.begin(), table.columns.end(),
      [&name](const ColumnLayout& column) { return tmw::EqualIgnoringCase(column.name, name); });
}

}  // namespace

CatalogueCheck::CatalogueCheck(CheckContext& context, const Header& header,
                               const std::vector<CatalogueObject>& objects)
    : context_(context), header_(header), objects_(objects) {}

void CatalogueCheck::AddTable(const std::string& name, const TableLayout& layout) {
  for (const LogicalIndexLayout& index : layout.logical_indexes) {
    if (index.relation) ends_[{layout.page, index.number}] = {name, *index.relation};
  }
}

void CatalogueCheck::Run() {
  CheckObjects();
  CheckEnds();
  using Part = void (CatalogueCheck::*)();
  for (const Part part : {&CatalogueCheck::CheckRights, &CatalogueCheck::CheckRelations,
                          &CatalogueCheck::CheckQueries}) {
    try {
      (this->*part)();
    } catch (const Damage& damage) {
      context_.findings.AddDamage({}, damage);
    }
  }
}

void CatalogueCheck::CheckObjects() {
  std::set<std::uint32_t> ids;
  std::set<std::pair<std::uint32_t, std::string>> names;
  for (const CatalogueObject& object : objects_) {
    const std::string words = check_texts::Object(object.name);
    if (!ids.insert(object.id).second)
      context_.findings.AddFault(check_texts::kSameId, words, object.place.page);
    if (!names.emplace(object.parent, tmw::LowerCase(object.name)).second)
      context_.findings.AddFault(check_texts::kSameName, words, object.place.page);
    CheckOwner(object);
  }
  for (const CatalogueObject& object : objects_) {
    if (object.parent != object_id::kRoot && !ids.contains(object.parent))
      context_.findings.AddFault(check_texts::kNoParent, check_texts::Object(object.name),
                                 object.place.page);
  }
  for (const SystemTable* const table :
       {&kObjectsTable, &kRightsTable, &kQueriesTable, &kRelationsTable}) {
    if (!HasObject(table->name, object_type::kTable))
      context_.findings.AddFault(check_texts::kMissingTable, check_texts::Table(table->name),
                                 header_.ObjectsTable());
  }
}

void CatalogueCheck::CheckOwner(const CatalogueObject& object) {
  const auto& owner = object.stored[objects_column::kOwner];
  if (!owner || !IsKnownAccount(AccountIds(header_), *owner))
    context_.findings.AddFault(check_texts::kUnknownOwner, check_texts::Object(object.name),
                               object.place.page);
}

void CatalogueCheck::CheckRights() {
  const AccountIds accounts(header_);
  std::map<std::uint32_t, std::size_t> left;  // rows still to be expected
  for (const CatalogueObject& object : objects_) {
    const bool is_user_table =
        object.type == object_type::kTable && (object.flags & ports::kSystemObject) == 0;
    left[object.id] = is_user_table ? 2 : 0;
  }
  SystemRows rows(context_.source, header_.RightsTable(), kRightsTable);
  while (rows.Next()) {
    const PageNumber page = rows.Home().page;
    const std::uint32_t id = rows.Number(rights_column::kObjectId);
    const auto found = left.find(id);
    if (found == left.end()) {
      context_.findings.AddFault(check_texts::kRightsOfNothing, kRightsTable.name, page,
                                 std::to_string(id));
    } else if (found->second > 0) {
      --found->second;
    }
    if (!IsKnownAccount(accounts, rows.Stored(rights_column::kSid).value_or("")))
      context_.findings.AddFault(check_texts::kUnknownAccount, kRightsTable.name, page);
  }
  for (const CatalogueObject& object : objects_) {
    if (left[object.id] != 0)
      context_.findings.AddFault(check_texts::kNoRights, check_texts::Object(object.name),
                                 object.place.page);
  }
}

void CatalogueCheck::CheckEnds() {
  for (const auto& [key, end] : ends_) {
    const auto other = ends_.find({end.relation.other_table, end.relation.other_number});
    const bool fits = other != ends_.end() && other->second.relation.other_table == key.first &&
                      other->second.relation.other_number == key.second &&
                      other->second.relation.side != end.relation.side;
    if (!fits)
      context_.findings.AddFault(check_texts::kRelationEnds, check_texts::Table(end.table),
                                 key.first);
  }
}

bool CatalogueCheck::HasObject(const std::string& name, std::int16_t type) const {
  return std::any_of(objects_.begin(), objects_.end(), [&](const CatalogueObject& object) {
    return object.type == type && tmw::EqualIgnoringCase(object.name, name);
  });
}

const CatalogueObject* CatalogueCheck::FindTable(const std::string& name) const {
  const auto found =
      std::find_if(objects_.begin(), objects_.end(), [&name](const CatalogueObject& object) {
        return object.type == object_type::kTable && tmw::EqualIgnoringCase(object.name, name);
      });
  return found == objects_.end() ? nullptr : &*found;
}

bool CatalogueCheck::HasColumns(const Relation& relation) {
  const auto layout = [this](const std::string& name) {
    const CatalogueObject* const table = FindTable(name);
    if (table == nullptr) throw Damage(header_.RelationsTable(), check_texts::kRelationOfNothing);
    return ReadLayout(context_.source, table->id & object_id::kMaskOfPage, table->place.page);
  };
  const TableLayout table = layout(relation.table);
  const TableLayout referenced = layout(relation.referenced_table);
  return std::all_of(relation.columns.begin(), relation.columns.end(),
                     [&table, &referenced](const RelationColumn& column) {
                       return HasColumn(table, column.column) &&
                              HasColumn(referenced, column.referenced_column);
                     });
}

void CatalogueCheck::CheckRelations() {
  const PageNumber page = header_.RelationsTable();
  for (const Relation& relation : ReadRelations(context_.source, header_)) {
    const std::string words = check_texts::Relation(relation.name);
    if (!HasObject(relation.name, object_type::kRelation))
      context_.findings.AddFault(check_texts::kRelationObject, words, page);
    try {
      if (!HasColumns(relation))
        context_.findings.AddFault(check_texts::kRelationOfNothing, words, page);
    } catch (const Damage& damage) {
      context_.findings.AddDamage(words, damage);
    }
  }
}

void CatalogueCheck::CheckQueries() {
  std::set<std::uint32_t> queries;
  for (const CatalogueObject& object : objects_) {
    if (object.type == object_type::kQuery) queries.insert(object.id);
  }
  SystemRows rows(context_.source, header_.QueriesTable(), kQueriesTable);
  while (rows.Next()) {
    const std::uint32_t id = rows.Number(queries_column::kObjectId);
    if (!queries.contains(id))
      context_.findings.AddFault(check_texts::kQueryOfNothing, kQueriesTable.name, rows.Home().page,
                                 std::to_string(id));
  }
}

}  // namespace jet::file
