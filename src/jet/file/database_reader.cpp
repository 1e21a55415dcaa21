#include "jet/file/database_reader.h"

#include <utility>

#include "foundation/text.h"
#include "jet/file/door.h"
#include "jet/file/stored_value.h"
#include "jet/file/system_rows.h"

namespace jet::file {
namespace {

const char* KindName(std::int16_t type) {
  switch (type) {
    case object_type::kForm:
      return texts::kForm;
    case object_type::kReport:
      return texts::kReport;
    case object_type::kMacro:
      return texts::kMacro;
    case object_type::kModule:
      return texts::kModule;
    default:
      return texts::kDataAccessPage;
  }
}

}  // namespace

TableRows::TableRows(PageSource& source, const TableLayout& table, std::string file_name)
    : source_(&source),
      file_name_(std::move(file_name)),
      cursor_(ThroughDoor(kDatabaseDamaged, file_name_,
                          [&source, &table] { return TableCursor(source, table); })) {}

bool TableRows::Next() {
  return ThroughDoor(kDatabaseDamaged, file_name_, [this] { return cursor_.Next(); });
}

std::optional<std::string_view> TableRows::Stored(const ColumnLayout& column) const {
  return ThroughDoor(kDatabaseDamaged, file_name_,
                     [this, &column] { return cursor_.Row().Stored(column); });
}

ports::DatabaseValue TableRows::Value(const ColumnLayout& column) const {
  return ThroughDoor(kDatabaseDamaged, file_name_, [this, &column] {
    const RowView row = cursor_.Row();
    const auto stored = row.Stored(column);
    if (!stored || !IsLong(column.type)) return ToValue(column, stored);
    return ToValue(column, ReadLongValue(*source_, {row.Record().Page(), *stored}));
  });
}

DatabaseReader::DatabaseReader(std::shared_ptr<ports::PageFile> file, std::string file_name,
                               bool must_settle)
    : file_name_(std::move(file_name)) {
  try {
    Open(std::move(file), must_settle);
  } catch (const Damage& damage) {
    Fail(kUnknownFormat, file_name_,
         ": " + (damage.Page == header::kPage ? std::string(damage.what())
                                              : texts::Sentence(damage.what(), damage.Page)));
  }
}

void DatabaseReader::Open(std::shared_ptr<ports::PageFile> file, bool must_settle) {
  source_ = std::make_unique<PageSource>(std::move(file));
  header_ = ParseHeader(source_->Read(header::kPage));
  if (must_settle && header_.has_pending_commit) throw Damage(header::kPage, texts::kPendingCommit);
  objects_ = ReadObjects(*source_, header_);
}

const CatalogueObject* DatabaseReader::FindTable(std::string_view name) const {
  for (const CatalogueObject& object : objects_) {
    if (IsTable(object) && tmw::EqualIgnoringCase(object.name, name)) return &object;
  }
  return nullptr;
}

std::vector<ForeignObject> DatabaseReader::ForeignObjects() const {
  std::vector<ForeignObject> found;
  for (const CatalogueObject& object : objects_) {
    if (IsForeignObject(object.type)) found.push_back({KindName(object.type), object.name});
  }
  return found;
}

void DatabaseReader::RequireRewritable() const {
  for (const ForeignObject& object : ForeignObjects())
    Fail(kUnknownFormat, file_name_, texts::WouldBeLost(object.kind, object.name));
}

TableLayout DatabaseReader::Definition(const CatalogueObject& table) {
  return ThroughDoor(kDatabaseDamaged, file_name_, [this, &table] {
    return ReadLayout(*source_, table.id & object_id::kMaskOfPage, table.place.page);
  });
}

std::vector<PropertySet> DatabaseReader::Properties(const CatalogueObject& object) {
  return ThroughDoor(kDatabaseDamaged, file_name_,
                     [this, &object] { return ReadProperties(*source_, object); });
}

std::vector<Relation> DatabaseReader::Relations() {
  return ThroughDoor(kDatabaseDamaged, file_name_,
                     [this] { return ReadRelations(*source_, header_); });
}

bool IsTable(const CatalogueObject& object) {
  return object.type == object_type::kTable || object.type == object_type::kLinkedTable ||
         object.type == object_type::kOdbcTable;
}

bool IsStoredTable(const CatalogueObject& object) {
  return object.type == object_type::kTable;
}

}  // namespace jet::file
