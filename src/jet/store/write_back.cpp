#include "jet/store/write_back.h"

#include <algorithm>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "foundation/text.h"
#include "jet/errors.h"
#include "jet/file/database_writer.h"
#include "jet/file/relation_indexes.h"
#include "jet/file/stored_value.h"
#include "jet/file/system_tables.h"
#include "jet/store/file_definitions.h"
#include "jet/store/file_relations.h"
#include "jet/store/new_file.h"
#include "jet/store/relations.h"
#include "jet/store/session.h"
#include "jet/store/stored_values.h"
#include "jet/values/calendar.h"
#include "ports/file_system.h"
#include "ports/ports.h"

namespace jet {
namespace {

using file::CatalogueObject;

// Definition pages that new tables are known by until they get theirs; no file is that long.
constexpr file::PageNumber kFirstNewPage = 0x01000000;

// The rows of a table of the working store.
class StoreRows final : public file::RowSource {
 public:
  StoreRows(const std::shared_ptr<Connection>& storage, const TableInfo& table,
            const file::TableLayout& layout)
      : table_(table), layout_(layout), values_(table.fields.size()) {
    std::string columns;
    for (const FieldInfo& field : table.fields)
      columns += (columns.empty() ? "" : ", ") + field.column;
    rows_ = Statement(storage,
                      "SELECT " + columns + " FROM " + table.StorageName() + " ORDER BY rowid");
  }

  bool Next(std::vector<std::optional<std::string_view>>& row) override {
    if (!rows_.Step()) return false;
    for (std::size_t i = 0; i < values_.size(); ++i) {
      const ports::DataType type = table_.fields[i].definition.type;
      values_[i] = file::ToStored(layout_.columns[i], ReadStored(rows_, static_cast<int>(i), type));
      row[i] = values_[i] ? std::optional<std::string_view>(*values_[i]) : std::nullopt;
    }
    return true;
  }

 private:
  const TableInfo& table_;
  const file::TableLayout& layout_;
  std::vector<std::optional<std::string>> values_;
  Statement rows_;
};

// A table on its way into the new file.
struct OutgoingTable {
  TablePtr info;
  bool is_changed = false;
  // Set where the definition differs from that of the file.
  std::optional<file::TableLayout> layout;
};

class BackWriter {
 public:
  BackWriter(Session& session, Container& container, NewFile& target)
      : session_(session),
        reader_(container.Reader()),
        moment_(LocalNow()),
        writer_({target.Pages(), target.Path()}, reader_) {}

  void Write() {
    CollectTables();
    CollectRelations();
    MakeLayouts();
    for (std::size_t i = 0; i < reader_.Objects().size(); ++i)
      WriteObject(i);
    for (const auto& [id, table] : tables_) {
      if (!ObjectOf(id)) WriteTable(table, nullptr);
    }
    for (const file::Relation& relation : in_file_.carried)
      writer_.WriteRelation(relation);
    for (const file::Relation& relation : relations_) {
      const bool is_new = !HasObject(relation.name);
      writer_.WriteRelation(relation, is_new ? std::optional(moment_) : std::nullopt);
    }
    writer_.Finish();
  }

 private:
  void CollectTables() {
    Statement rows(session_.SharedStorage(), "SELECT id, name, state FROM _jet_table");
    while (rows.Step()) {
      OutgoingTable table;
      table.is_changed = static_cast<TableState>(rows.Integer(2)) == TableState::kChanged;
      // Tables that nobody asked for stay undefined; null for those of the system.
      if (table.is_changed) table.info = session_.Tables().FindTable(rows.Text(1));
      tables_.emplace(rows.Integer(0), std::move(table));
    }
  }

  void CollectRelations() {
    in_file_ = ReadFileRelations(session_.SharedStorage(), reader_, session_.Tables());
    for (const ports::RelationDefinition& listed : Relations(session_).List()) {
      file::Relation relation;
      relation.name = listed.name;
      relation.flags = static_cast<std::uint32_t>(listed.attributes);
      relation.table = listed.foreign_table;
      relation.referenced_table = listed.table;
      for (const ports::RelationFieldPair& pair : listed.fields)
        relation.columns.push_back({pair.foreign_name, pair.name});
      relations_.push_back(std::move(relation));
    }
  }

  // A table whose definition is made anew gets other numbers of indexes, by which tables that are
  // related to it know them: their definitions are made anew as well.
  void MakeLayouts() {
    std::set<std::string> affected = TablesOfOtherRelations();
    for (const auto& [id, table] : tables_) {
      if (table.info) affected.insert(table.info->name);
    }
    for (bool grows = true; grows;) {
      grows = false;
      for (const file::Relation& relation : relations_) {
        if (affected.contains(relation.table) == affected.contains(relation.referenced_table))
          continue;
        affected.insert(relation.table);
        affected.insert(relation.referenced_table);
        grows = true;
      }
    }
    std::map<std::string, file::TableLayout*> layouts;
    for (const std::string& name : affected) {
      const TablePtr info = session_.Tables().FindTable(name);
      if (!info) continue;
      OutgoingTable& table = tables_.at(info->id);
      table.info = info;
      table.layout = MakeLayout(table);
      layouts[name] = &*table.layout;
    }
    for (const file::Relation& relation : relations_) {
      const auto own = layouts.find(relation.table);
      if (own != layouts.end())
        file::AddRelationIndexes(*own->second, *layouts.at(relation.referenced_table), relation);
    }
  }

  // Those whose relations are not what they are in the file.
  std::set<std::string> TablesOfOtherRelations() const {
    std::set<std::string> names;
    const auto add_missing = [&names](const auto& from, const auto& in) {
      for (const file::Relation& relation : from) {
        if (std::find(in.begin(), in.end(), relation) != in.end()) continue;
        names.insert(relation.table);
        names.insert(relation.referenced_table);
      }
    };
    add_missing(relations_, in_file_.known);
    add_missing(in_file_.known, relations_);
    return names;
  }

  file::TableLayout MakeLayout(const OutgoingTable& table) {
    const auto object = ObjectOf(table.info->id);
    std::optional<file::TableLayout> source;
    if (object) source = reader_.Definition(reader_.Objects()[*object]);
    if (!table.is_changed) {
      file::RemoveRelationIndexes(*source);
      return std::move(*source);
    }
    file::TableLayout layout = LayoutOf(*table.info, source ? &*source : nullptr,
                                        LoadProperties(session_.SharedStorage(), table.info->id),
                                        reader_.FileHeader().SortOrder());
    if (!source) layout.page = next_new_page_++;
    const std::int64_t next = session_.Storage().ReadInteger(
        "SELECT next_number FROM _jet_table WHERE id = " + std::to_string(table.info->id));
    layout.last_autonumber = static_cast<std::uint32_t>(next - 1);
    return layout;
  }

  void WriteObject(std::size_t position) {
    const CatalogueObject& object = reader_.Objects()[position];
    if (file::IsTable(object)) {
      const auto table = tables_.find(static_cast<std::int64_t>(position) + 1);
      if (table == tables_.end()) return;  // deleted
      if (!file::IsStoredTable(object) || file::IsSystemTable(reader_.FileHeader(), object.id)) {
        writer_.CarryObject(object);
      } else if (table->second.is_changed) {
        WriteTable(table->second, &object);
      } else {
        writer_.CopyTable(object, file::Copying::kAsItStands, table->second.layout);
      }
      return;
    }
    const bool is_relation = object.type == file::object_type::kRelation;
    if (!is_relation || IsWritten(object.name)) writer_.CarryObject(object);
  }

  void WriteTable(const OutgoingTable& table, const CatalogueObject* object) {
    const TableInfo& info = *table.info;
    file::WrittenTable written;
    written.name = info.name;
    written.layout = *table.layout;
    written.moment = moment_;
    written.carried = object;
    if (object != nullptr) {
      written.properties = reader_.Properties(*object);
      std::erase_if(written.properties, [](const file::PropertySet& set) {
        return set.kind == file::properties::kOfColumn;
      });
    }
    for (file::PropertySet& set :
         PropertySetsOf(info, LoadProperties(session_.SharedStorage(), info.id)))
      written.properties.push_back(std::move(set));
    StoreRows rows(session_.SharedStorage(), info, written.layout);
    writer_.WriteTable(written, rows);
  }

  bool HasObject(const std::string& relation) const {
    return std::any_of(reader_.Objects().begin(), reader_.Objects().end(),
                       [&relation](const CatalogueObject& object) {
                         return object.type == file::object_type::kRelation &&
                                tmw::EqualIgnoringCase(object.name, relation);
                       });
  }

  // Whether the new file has a relation of that name.
  bool IsWritten(const std::string& name) const {
    const auto is_it = [&name](const file::Relation& relation) {
      return tmw::EqualIgnoringCase(relation.name, name);
    };
    return std::any_of(relations_.begin(), relations_.end(), is_it) ||
           std::any_of(in_file_.carried.begin(), in_file_.carried.end(), is_it);
  }

  Session& session_;
  file::DatabaseReader& reader_;
  double moment_;
  file::DatabaseWriter writer_;
  std::map<std::int64_t, OutgoingTable> tables_;  // by the ids of the catalogue
  FileRelations in_file_;
  std::vector<file::Relation> relations_;  // as they are to be
  file::PageNumber next_new_page_ = kFirstNewPage;
};

}  // namespace

bool WriteBack(Session& session, Container& container) {
  NewFile target(container.Path());
  BackWriter(session, container, target).Write();
  target.TakeRightsOf(container.Path());
  container.RequireName();
  ports::Status renamed = target.Replace(false);
  if (!renamed && ports::CurrentPorts().files->MeansBusy(renamed.code)) {
    // Some systems give no name away as long as the file that bears it is open, even by us.
    container.Release();
    renamed = target.Replace(true);
    if (!renamed) container.Reopen();
  }
  if (!renamed) Fail(kDiskError);
  return target.FlushName().ok;
}

}  // namespace jet
