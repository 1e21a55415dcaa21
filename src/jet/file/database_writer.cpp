#include "jet/file/database_writer.h"

#include <algorithm>
#include <utility>

#include "foundation/encodings.h"
#include "jet/errors.h"
#include "jet/file/definition_packer.h"
#include "jet/file/door.h"
#include "jet/file/layout_limits.h"
#include "jet/file/property_packer.h"
#include "jet/file/row_order.h"
#include "jet/file/system_rows.h"
#include "ports/file_system.h"
#include "ports/ports.h"

namespace jet::file {
namespace {

constexpr std::uint32_t kFirstObjectId = 0x80000000;  // of objects that are no tables
constexpr const char* kKeysEnding = ".keys";
constexpr const char* kCatalogueEnding = ".names";

// Where the system tables stand is the same in every file that is written here.
Header WithSystemPages(Header header) {
  header.Set(header::kObjectsTable, system_page::kObjects);
  header.Set(header::kRightsTable, system_page::kRights);
  header.Set(header::kQueriesTable, system_page::kQueries);
  header.Set(header::kRelationsTable, system_page::kRelations);
  return header;
}

std::uint32_t NextObjectId(const DatabaseReader* source) {
  std::uint32_t next = kFirstObjectId;
  if (source == nullptr) return next;
  for (const CatalogueObject& object : source->Objects()) {
    if (object.id >= next) next = object.id + 1;
  }
  return next;
}

std::uint32_t SystemPageFor(const Header& header, std::uint32_t id) {
  if (id == header.ObjectsTable()) return system_page::kObjects;
  if (id == header.RightsTable()) return system_page::kRights;
  if (id == header.QueriesTable()) return system_page::kQueries;
  if (id == header.RelationsTable()) return system_page::kRelations;
  return id;
}

// What a row of a system table holds, the long values whole.
template <typename Rows>
std::vector<std::optional<std::string>> WholeValues(PageSource& pages, const Rows& rows,
                                                    const SystemTable& table) {
  std::vector<std::optional<std::string>> values;
  for (std::uint16_t id = 0; id < table.columns.size(); ++id) {
    const auto stored = rows.Stored(id);
    if (!stored) {
      values.emplace_back();
    } else if (IsLong(table.columns[id].type)) {
      values.emplace_back(ReadLongValue(pages, ByteView(rows.Home().page, *stored)));
    } else {
      values.emplace_back(*stored);
    }
  }
  return values;
}

}  // namespace

void RemoveScratch(const std::string& scratch_path) {
  for (const char* const ending : {kKeysEnding, kCatalogueEnding})
    static_cast<void>(ports::CurrentPorts().files->RemoveFile(scratch_path + ending));
}

bool IsSystemTable(const Header& header, std::uint32_t id) {
  return id == header.ObjectsTable() || id == header.RightsTable() || id == header.QueriesTable() ||
         id == header.RelationsTable();
}

DatabaseWriter::DatabaseWriter(WriterFiles files, const Header& header, double moment)
    : DatabaseWriter(std::move(files), header, nullptr) {
  catalogue_.AddStandardObjects(moment);
}

DatabaseWriter::DatabaseWriter(WriterFiles files, DatabaseReader& source)
    : DatabaseWriter(std::move(files), source.FileHeader(), &source) {
  source.RequireRewritable();
}

DatabaseWriter::DatabaseWriter(WriterFiles files, const Header& header, DatabaseReader* source)
    : source_(source),
      header_(WithSystemPages(header)),
      sink_(std::move(files.target)),
      scratch_(files.scratch_path + kKeysEnding),
      catalogue_scratch_(files.scratch_path + kCatalogueEnding),
      catalogue_(sink_, catalogue_scratch_, header_),
      next_object_id_(NextObjectId(source)) {}

DatabaseWriter::~DatabaseWriter() = default;

template <typename Call>
void DatabaseWriter::Guard(Call&& call) {
  ThroughDoor(kDatabaseDamaged, source_ == nullptr ? std::string() : source_->FileName(),
              std::forward<Call>(call));
}

CataloguePacker::ObjectValues DatabaseWriter::ValuesOf(const CatalogueObject& object) {
  CataloguePacker::ObjectValues values = object.stored;
  for (std::size_t id = 0; id < values.size(); ++id) {
    if (values[id] && IsLong(kObjectsTable.columns[id].type))
      values[id] = ReadLongValue(source_->Pages(), ByteView(object.place.page, *values[id]));
  }
  return values;
}

void DatabaseWriter::AddCarried(std::uint32_t old_id, std::uint32_t new_id) {
  ids_[old_id] = new_id;
}

void DatabaseWriter::CarryObject(const CatalogueObject& object) {
  Guard([&] {
    CataloguePacker::ObjectValues values = ValuesOf(object);
    const std::uint32_t id = SystemPageFor(source_->FileHeader(), object.id);
    values[objects_column::kId] = StoredNumber(id);
    AddCarried(object.id, id);
    catalogue_.AddObject(values);
  });
}

std::vector<PageNumber> DatabaseWriter::ReserveDefinition(TableLayout& layout) {
  for (ColumnLayout& column : layout.columns)
    column.long_maps = IsLong(column.type) ? std::optional(LongColumnMaps{}) : std::nullopt;
  std::vector<PageNumber> pages(DefinitionPageCount(PackDefinition(layout).size()));
  for (PageNumber& page : pages)
    page = sink_.Reserve();
  layout.page = pages.front();
  return pages;
}

void DatabaseWriter::FinishTable(TablePacker& packer, std::vector<PageNumber> pages,
                                 PageNumber source_page, bool restart_autonumber) {
  // No other table's maps stand on the same pages: the format's own engine makes it so, and may
  // take the pages back with the table.
  UsageMapPacker maps(sink_);
  TableLayout layout = packer.Finish(maps);
  maps.Finish();
  if (restart_autonumber && static_cast<std::int32_t>(layout.autonumber_step) > 0)
    layout.last_autonumber = static_cast<std::uint32_t>(packer.GreatestAutonumber().value_or(0));
  AddCarried(source_page, layout.page);
  definitions_.push_back({std::move(layout), std::move(pages)});
}

void DatabaseWriter::CopyTable(const CatalogueObject& table, Copying copying,
                               std::optional<TableLayout> layout) {
  Guard([&] {
    const TableLayout source = source_->Definition(table);
    TableLayout target = layout ? std::move(*layout) : source;
    JudgeLayout(table.name, target);
    std::vector<PageNumber> pages = ReserveDefinition(target);
    TablePacker packer(sink_, scratch_, std::move(target), table.name);
    CopyRows(source, packer, copying);
    FinishTable(packer, std::move(pages), source.page, copying == Copying::kCompacted);
    const PageNumber page = definitions_.back().layout.page;
    AddCarried(table.id, page);
    CataloguePacker::ObjectValues values = ValuesOf(table);
    values[objects_column::kId] = StoredNumber(page);
    catalogue_.AddObject(values);
  });
}

void DatabaseWriter::CopyRows(const TableLayout& source, TablePacker& packer, Copying copying) {
  PageSource& pages = source_->Pages();
  const IndexLayout* const key = copying == Copying::kCompacted ? PrimaryKey(source) : nullptr;
  if (key != nullptr && !LiesInOrder(pages, source, *key)) {
    CopyRowsByKey(source, *key, packer);
    return;
  }
  TableCursor cursor(pages, source);
  while (cursor.Next())
    packer.CopyRow(pages, cursor.Row(), source);
}

void DatabaseWriter::CopyRowsByKey(const TableLayout& source, const IndexLayout& key,
                                   TablePacker& packer) {
  PageSource& pages = source_->Pages();
  OrderedRows rows(pages, source, key, scratch_);
  while (rows.Next())
    packer.CopyRow(pages, rows.Row(), source);
}

void DatabaseWriter::WriteTable(const WrittenTable& table, RowSource& rows) {
  Guard([&] {
    JudgeLayout(table.name, table.layout);
    TableLayout target = table.layout;
    std::vector<PageNumber> pages = ReserveDefinition(target);
    const PageNumber page = target.page;
    TablePacker packer(sink_, scratch_, std::move(target), table.name);
    std::vector<std::optional<std::string_view>> row(table.layout.columns.size());
    while (rows.Next(row))
      packer.AddRow(row);
    FinishTable(packer, std::move(pages), table.layout.page, false);
    const std::string properties = PackProperties(table.properties);
    if (table.carried == nullptr) {
      CataloguePacker::NewObject object;
      object.id = page;
      object.parent = object_id::kTables;
      object.name = table.name;
      object.type = object_type::kTable;
      object.moment = table.moment;
      object.properties = properties;
      catalogue_.AddNewObject(object, RightsOfNewTable());
      return;
    }
    AddCarried(table.carried->id, page);
    CataloguePacker::ObjectValues values = ValuesOf(*table.carried);
    values[objects_column::kId] = StoredNumber(page);
    values[objects_column::kName] = tmw::Utf16ToBytes(tmw::Utf8ToUtf16(table.name));
    values[objects_column::kDateUpdate] = StoredNumber(table.moment);
    values[objects_column::kLvProp] = properties.empty() ? std::nullopt : std::optional(properties);
    catalogue_.AddObject(values);
  });
}

void DatabaseWriter::WriteRelation(const Relation& relation, std::optional<double> moment) {
  JudgeName(relation.name);
  catalogue_.AddRelation(relation);
  if (!moment) return;
  CataloguePacker::NewObject object;
  object.id = next_object_id_++;
  object.parent = object_id::kRelationships;
  object.name = relation.name;
  object.type = object_type::kRelation;
  object.moment = *moment;
  catalogue_.AddNewObject(object, RightsOfNewRelation());
}

void DatabaseWriter::CopyAll(Copying copying) {
  for (const CatalogueObject& object : source_->Objects()) {
    if (IsStoredTable(object) && !IsSystemTable(source_->FileHeader(), object.id)) {
      CopyTable(object, copying);
    } else {
      CarryObject(object);
    }
  }
  for (const Relation& relation : source_->Relations())
    WriteRelation(relation);
}

void DatabaseWriter::CarryRights() {
  SystemRows rows(source_->Pages(), source_->FileHeader().RightsTable(), kRightsTable);
  while (rows.Next()) {
    const auto found = ids_.find(rows.Number(rights_column::kObjectId));
    if (found == ids_.end()) continue;
    catalogue_.AddRight(found->second, rows.Number(rights_column::kRights),
                        rows.Stored(rights_column::kSid).value_or(std::string_view{}),
                        rows.Stored(rights_column::kIsInheritable)->front() != 0);
  }
}

void DatabaseWriter::CarryQueries() {
  SystemRows rows(source_->Pages(), source_->FileHeader().QueriesTable(), kQueriesTable);
  while (rows.Next()) {
    const auto found = ids_.find(rows.Number(queries_column::kObjectId));
    if (found == ids_.end()) continue;
    auto values = WholeValues(source_->Pages(), rows, kQueriesTable);
    values[queries_column::kObjectId] = StoredNumber(found->second);
    catalogue_.AddQueryRow(values);
  }
}

void DatabaseWriter::PutDefinitions() {
  for (Definition& definition : definitions_) {
    for (LogicalIndexLayout& index : definition.layout.logical_indexes) {
      if (!index.relation) continue;
      const auto other = ids_.find(index.relation->other_table);
      if (other == ids_.end()) throw Damage(definition.layout.page, texts::kBadRelation);
      index.relation->other_table = other->second;
    }
    PutDefinition(sink_, definition.pages, PackDefinition(definition.layout));
  }
}

void DatabaseWriter::Finish() {
  Guard([&] {
    if (source_ != nullptr) {
      CarryRights();
      CarryQueries();
    }
    PutDefinitions();
    catalogue_.Finish();
    PutFreePages(sink_);
    sink_.Flush();
    sink_.Put(header::kPage, PackHeader(header_));
    sink_.Flush();
  });
}

}  // namespace jet::file
