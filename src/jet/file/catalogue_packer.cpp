#include "jet/file/catalogue_packer.h"

#include <array>
#include <memory>

#include "foundation/encodings.h"
#include "jet/file/definition_packer.h"

namespace jet::file {
namespace {

enum TableNumber : std::size_t { kObjects, kRights, kQueries, kRelations };

struct Described {
  const SystemTable* table;
  PageNumber page;
};

const std::array kTables{
    Described{&kObjectsTable, system_page::kObjects},
    Described{&kRightsTable, system_page::kRights},
    Described{&kQueriesTable, system_page::kQueries},
    Described{&kRelationsTable, system_page::kRelations},
};

std::string StoredText(std::string_view text) {
  return tmw::Utf16ToBytes(tmw::Utf8ToUtf16(text));
}

std::optional<std::string> UnlessEmpty(std::string bytes) {
  if (bytes.empty()) return std::nullopt;
  return bytes;
}

}  // namespace

class CataloguePacker::Table {
 public:
  Table(PageSink& sink, ScratchFile& scratch, TableLayout layout, const SystemTable& table)
      : places_(layout.columns.size()),
        values_(layout.columns.size()),
        packer_(sink, scratch, layout, table.name) {
    for (std::size_t place = 0; place < places_.size(); ++place)
      places_[layout.columns[place].id] = place;
  }

  void AddRow(const std::vector<std::optional<std::string>>& by_id) {
    for (std::size_t id = 0; id < places_.size(); ++id)
      values_[places_[id]] = by_id.at(id);
    packer_.AddRow(values_);
  }

  TablePacker& Packer() { return packer_; }

 private:
  std::vector<std::size_t> places_;  // in the definition, by column id
  std::vector<std::optional<std::string_view>> values_;
  TablePacker packer_;
};

CataloguePacker::CataloguePacker(PageSink& sink, ScratchFile& scratch, const Header& header)
    : sink_(&sink), accounts_(header) {
  while (sink.PageCount() <= system_page::kMaps)
    sink.Reserve();
  for (const Described& described : kTables) {
    tables_.push_back(std::make_unique<Table>(
        sink, scratch, SystemLayout(*described.table, described.page, header.SortOrder()),
        *described.table));
  }
}

CataloguePacker::~CataloguePacker() = default;

void CataloguePacker::AddStandardObjects(double moment) {
  for (const StandardObject& object : StandardObjects()) {
    ObjectValues values(objects_column::kCount);
    values[objects_column::kId] = StoredNumber(object.id);
    values[objects_column::kParentId] = StoredNumber(object.parent);
    values[objects_column::kName] = StoredText(object.name);
    values[objects_column::kType] = StoredNumber(object.type);
    values[objects_column::kDateCreate] = StoredNumber(moment);
    values[objects_column::kDateUpdate] = StoredNumber(moment);
    values[objects_column::kOwner] = accounts_.Stored(object.owner);
    values[objects_column::kFlags] = StoredNumber(object_flags::kSystem);
    AddObject(values);
  }
  for (const Right& right : StandardRights())
    AddRight(right.object, right.rights, accounts_.Stored(right.account), right.is_inheritable);
}

void CataloguePacker::AddObject(const ObjectValues& values) {
  tables_[kObjects]->AddRow(values);
}

void CataloguePacker::AddNewObject(const NewObject& object, std::span<const Right> rights) {
  ObjectValues values(objects_column::kCount);
  values[objects_column::kId] = StoredNumber(object.id);
  values[objects_column::kParentId] = StoredNumber(object.parent);
  values[objects_column::kName] = StoredText(object.name);
  values[objects_column::kType] = StoredNumber(object.type);
  values[objects_column::kDateCreate] = StoredNumber(object.moment);
  values[objects_column::kDateUpdate] = StoredNumber(object.moment);
  values[objects_column::kOwner] = accounts_.Stored(Account::kAdmin);
  values[objects_column::kFlags] = StoredNumber(object.flags);
  values[objects_column::kLvProp] = UnlessEmpty(object.properties);
  AddObject(values);
  for (const Right& right : rights)
    AddRight(object.id, right.rights, accounts_.Stored(right.account), right.is_inheritable);
}

void CataloguePacker::AddRight(std::uint32_t object, std::uint32_t rights, std::string_view account,
                               bool is_inheritable) {
  std::vector<std::optional<std::string>> values(rights_column::kCount);
  values[rights_column::kObjectId] = StoredNumber(object);
  values[rights_column::kSid] = std::string(account);
  values[rights_column::kRights] = StoredNumber(rights);
  values[rights_column::kIsInheritable] = std::string(1, static_cast<char>(is_inheritable));
  tables_[kRights]->AddRow(values);
}

void CataloguePacker::AddQueryRow(const std::vector<std::optional<std::string>>& values) {
  tables_[kQueries]->AddRow(values);
}

void CataloguePacker::AddRelation(const Relation& relation) {
  std::vector<std::optional<std::string>> values(relations_column::kCount);
  values[relations_column::kRelation] = StoredText(relation.name);
  values[relations_column::kFlags] = StoredNumber(relation.flags);
  values[relations_column::kColumnCount] =
      StoredNumber(static_cast<std::uint32_t>(relation.columns.size()));
  values[relations_column::kTable] = StoredText(relation.table);
  values[relations_column::kReferencedTable] = StoredText(relation.referenced_table);
  for (std::size_t i = 0; i < relation.columns.size(); ++i) {
    values[relations_column::kColumnNumber] = StoredNumber(static_cast<std::uint32_t>(i));
    values[relations_column::kColumn] = StoredText(relation.columns[i].column);
    values[relations_column::kReferencedColumn] = StoredText(relation.columns[i].referenced_column);
    tables_[kRelations]->AddRow(values);
  }
}

void CataloguePacker::Finish() {
  UsageMapPacker maps(*sink_, system_page::kMaps);
  for (const std::unique_ptr<Table>& table : tables_) {
    const TableLayout layout = table->Packer().Finish(maps);
    const std::array pages{layout.page};
    PutDefinition(*sink_, pages, PackDefinition(layout));
  }
  maps.Finish();
}

}  // namespace jet::file
