#include "tests/platform/windows/dao/definitions.h"

#include <algorithm>
#include <cstddef>

#include "foundation/encodings.h"
#include "foundation/text.h"
#include "platform/windows/dao/dao_values.h"

namespace tests {
namespace {

using platform::ComPointer;
using ports::DataType;
using Source = Collection::Source;

// Bits of a field's attributes.
constexpr std::int32_t kFixedSize = 1;
constexpr std::int32_t kVariableSize = 2;
constexpr std::int32_t kUpdatable = 32;
constexpr std::int32_t kOwnBits = kFixedSize | kVariableSize | kUpdatable;
constexpr std::int32_t kAllBits = kOwnBits | ports::kAutoIncrementField | 8192 | 32768;
constexpr std::int32_t kDescending = 1;

bool HasVariableSize(DataType type) {
  return type == DataType::kText || type == DataType::kMemo || type == DataType::kLongBinary;
}

ComPointer<Definition> Appended(const char* class_name, const char* owner,
                                Definition::Values values) {
  auto made = MakeServed<Definition>(class_name, owner, std::move(values));
  made->is_appended = true;
  return made;
}

void PutCollection(Definition& item, const char* name, const char* item_class, Source source) {
  item.collections[name] = MakeServed<Collection>(name, item_class, std::move(source));
}

// Reads parts of an index or a relation into the collection of its fields.
void PutFields(Definition& item, std::vector<Definition::Values> fields) {
  PutCollection(item, "Fields", "Field",
                {.list = [owner = item.Class(), fields = std::move(fields)] {
                  Definitions items;
                  for (const auto& values : fields)
                    items.push_back(Appended("Field", owner.c_str(), values));
                  return items;
                }});
}

DataType TypeOf(const ports::DatabaseValue& value) {
  if (std::holds_alternative<bool>(value)) return DataType::kBoolean;
  if (std::holds_alternative<std::uint8_t>(value)) return DataType::kByte;
  if (std::holds_alternative<std::int16_t>(value)) return DataType::kInteger;
  if (std::holds_alternative<std::int32_t>(value)) return DataType::kLong;
  if (std::holds_alternative<double>(value)) return DataType::kDouble;
  if (std::holds_alternative<std::string>(value)) return DataType::kText;
  Fail(kConversionFailed);
}

// An object that is in no collection yet; for a Field the owner is the class whose field it is.
ComPointer<Definition> MakeNew(const std::string& class_name, const std::string& owner) {
  const std::string none;
  Definition::Values values = {{"Name", none}};
  if (class_name == "Field" && owner == "TableDef") {
    values = ValuesOf({}, 0);
    values["Type"] = std::int16_t{0};
    values["Attributes"] = std::int32_t{0};
  } else if (class_name == "Field" && owner == "Index") {
    values["Attributes"] = std::int32_t{0};
  } else if (class_name == "Field") {
    values["ForeignName"] = none;
  } else if (class_name == "TableDef") {
    values["Attributes"] = std::int32_t{0};
  } else if (class_name == "Index") {
    for (const char* const name : {"Primary", "Unique", "Required", "IgnoreNulls", "Foreign"})
      values[name] = false;
  } else if (class_name == "Relation") {
    values["Table"] = values["ForeignTable"] = none;
    values["Attributes"] = std::int32_t{0};
  } else {
    values["Type"] = std::int16_t{0};
    values["Value"] = ports::EmptyValue{};
    values["DDL"] = false;
  }
  auto made = MakeServed<Definition>(class_name, owner, std::move(values));
  if (class_name == "TableDef" || class_name == "Index" || class_name == "Relation")
    PutCollection(*made.Get(), "Fields", "Field", {});
  if (class_name == "TableDef") PutCollection(*made.Get(), "Indexes", "Index", {});
  return made;
}

Source PropertiesSource(const SharedDatabase& shared, const std::string& table,
                        const std::string& field) {
  const auto set = [=](const std::string& name, const ports::DatabaseValue& value) {
    shared->database->SetFieldProperty(table, field, name, TypeOf(value), value);
  };
  const auto get = [=](const std::string& name) {
    return shared->database->FieldProperty(table, field, name);
  };
  return {.find =
              [=](const std::string& name) {
                const auto value = get(name);
                if (!value) return ComPointer<Definition>();
                auto property = MakeNew("Property", "");
                property->values["Name"] = name;
                property->values["Type"] = static_cast<std::int16_t>(TypeOf(*value));
                property->is_appended = true;
                property->read_value = [=] { return get(name).value(); };
                property->write_value = [=](const auto& changed) { set(name, changed); };
                return property;
              },
          .append =
              [=](const Definition& item) {
                if (item.Text("Name").empty() || get(item.Text("Name"))) Fail(kCannotAppend);
                const ports::DatabaseValue& value = item.values.at("Value");
                if (item.Number("Type") != static_cast<std::int32_t>(TypeOf(value)))
                  Fail(kConversionFailed);
                set(item.Text("Name"), value);
              }};
}

ports::FieldDefinition FieldOf(const Definition& item) {
  ports::FieldDefinition field;
  field.name = item.Text("Name");
  field.type = static_cast<DataType>(item.Number("Type"));
  field.size = item.Number("Size");
  field.attributes = item.Number("Attributes") & ~kOwnBits;
  field.required = item.Truth("Required");
  field.allow_zero_length = item.Truth("AllowZeroLength");
  field.default_value = item.Text("DefaultValue");
  return field;
}

ports::IndexDefinition IndexOf(const Definition& item) {
  ports::IndexDefinition index;
  index.name = item.Text("Name");
  index.primary = item.Truth("Primary");
  index.unique = item.Truth("Unique");
  index.required = item.Truth("Required");
  index.ignore_nulls = item.Truth("IgnoreNulls");
  for (const Definition* const field : item.Items("Fields"))
    index.fields.push_back({field->Text("Name"), field->Number("Attributes") == kDescending});
  return index;
}

ports::TableDefinition TableOf(const Definition& item) {
  ports::TableDefinition table;
  table.name = item.Text("Name");
  table.attributes = static_cast<std::uint32_t>(item.Number("Attributes"));
  // By their positions; equal ones by name.
  std::vector<Definition*> fields = item.Items("Fields");
  std::stable_sort(fields.begin(), fields.end(), [](const auto* a, const auto* b) {
    const std::int32_t first = a->Number("OrdinalPosition");
    const std::int32_t second = b->Number("OrdinalPosition");
    if (first != second) return first < second;
    return tmw::LowerCase(a->Text("Name")) < tmw::LowerCase(b->Text("Name"));
  });
  for (const Definition* const field : fields)
    table.fields.push_back(FieldOf(*field));
  for (const Definition* const index : item.Items("Indexes"))
    table.indexes.push_back(IndexOf(*index));
  return table;
}

// A field that has come into that table.
void PutProperties(Definition& field, const SharedDatabase& shared, const std::string& table) {
  PutCollection(field, "Properties", "Property",
                PropertiesSource(shared, table, field.Text("Name")));
}

Source FieldsSource(const SharedDatabase& shared, const std::string& table) {
  return {.list =
              [=] {
                Definitions items;
                for (const ports::FieldDefinition& field : shared->database->Table(table).fields) {
                  items.push_back(Appended("Field", "TableDef", ValuesOf(field, items.size())));
                  PutProperties(*items.back().Get(), shared, table);
                }
                return items;
              },
          .append =
              [=](Definition& item) {
                CheckComplete(item);
                // The embedded engine cannot put a field between others, where DAO would.
                const auto count = shared->database->Table(table).fields.size();
                if (static_cast<std::size_t>(item.Number("OrdinalPosition")) < count)
                  Fail(kNotSupportedHere);
                shared->database->CreateField(table, FieldOf(item));
                PutProperties(item, shared, table);
              }};
}

Source IndexesSource(const SharedDatabase& shared, const std::string& table) {
  return {.list =
              [=] {
                Definitions items;
                for (const ports::IndexDefinition& index : shared->database->Table(table).indexes) {
                  items.push_back(Appended("Index", "",
                                           {{"Name", index.name},
                                            {"Primary", index.primary},
                                            {"Unique", index.unique},
                                            {"Required", index.required},
                                            {"IgnoreNulls", index.ignore_nulls},
                                            {"Foreign", index.foreign}}));
                  std::vector<Definition::Values> fields;
                  for (const ports::IndexFieldDefinition& field : index.fields)
                    fields.push_back(
                        {{"Name", field.name}, {"Attributes", field.descending ? kDescending : 0}});
                  PutFields(*items.back().Get(), std::move(fields));
                }
                return items;
              },
          .append =
              [=](const Definition& item) {
                CheckComplete(item);
                shared->database->CreateIndex(table, IndexOf(item));
              }};
}

// A table on either side of a relation cannot go.
void CheckUnrelated(ports::Database& database, const std::string& table) {
  constexpr std::int32_t kUsedInRelation = 3281;
  for (const ports::RelationDefinition& relation : database.Relations()) {
    if (tmw::EqualIgnoringCase(relation.table, table) ||
        tmw::EqualIgnoringCase(relation.foreign_table, table))
      Fail(kUsedInRelation);
  }
}

}  // namespace

Definition::Values ValuesOf(const ports::FieldDefinition& field, std::size_t position) {
  const std::int32_t size_bit = HasVariableSize(field.type) ? kVariableSize : kFixedSize;
  return {{"Name", field.name},
          {"Type", static_cast<std::int16_t>(field.type)},
          {"Size", field.size},
          {"Attributes", field.attributes | size_bit | kUpdatable},
          {"OrdinalPosition", static_cast<std::int16_t>(position)},
          {"Required", field.required},
          {"AllowZeroLength", field.allow_zero_length},
          {"DefaultValue", field.default_value}};
}

ComPointer<Definition> Create(const DaoMember& method, const std::string& owner,
                              const ServedObject::Arguments& arguments) {
  auto made = MakeNew(method.result_object, owner);
  for (std::size_t i = 0; i < arguments.size(); ++i) {
    const auto place = made->values.find(method.parameters[i].name);
    if (place == made->values.end()) Fail(kNotSupportedHere);
    place->second = platform::FromVariant(*arguments[i]);
  }
  return made;
}

void CheckNewValue(const Definition& item, const std::string& owner, const std::string& property,
                   const ports::DatabaseValue& value) {
  if (item.Class() != "Field") return;
  if (property == "Attributes") {
    const std::int32_t allowed = owner == "Index" ? kDescending : kAllBits;
    if ((platform::LongOf(value) & ~allowed) != 0) Fail(kInvalidArgument);
  }
  if (property == "AllowZeroLength") {
    const auto type = static_cast<DataType>(item.Number("Type"));
    if (type != DataType::kText && type != DataType::kMemo) Fail(kInvalidOperation);
  }
}

void CheckComplete(const Definition& item) {
  if (item.values.contains("Type") && item.Number("Type") == 0) Fail(kInvalidFieldType);
  if (item.collections.contains("Fields") && item.Items("Fields").empty()) Fail(kNoFieldsDefined);
}

ComPointer<Collection> TablesOf(const SharedDatabase& shared) {
  Source source;
  source.keeps_items = true;
  source.list = [=] {
    Definitions items;
    for (const ports::TableSummary& table : shared->database->Tables()) {
      items.push_back(Appended(
          "TableDef", "",
          {{"Name", table.name}, {"Attributes", static_cast<std::int32_t>(table.attributes)}}));
      Definition& item = *items.back().Get();
      PutCollection(item, "Fields", "Field", FieldsSource(shared, table.name));
      PutCollection(item, "Indexes", "Index", IndexesSource(shared, table.name));
    }
    return items;
  };
  source.append = [=](Definition& item) {
    CheckComplete(item);
    shared->database->CreateTable(TableOf(item));
    for (Definition* const field : item.Items("Fields"))
      PutProperties(*field, shared, item.Text("Name"));
    item.collections["Fields"]->TakeOver(FieldsSource(shared, item.Text("Name")));
    item.collections["Indexes"]->TakeOver(IndexesSource(shared, item.Text("Name")));
  };
  source.remove = [=](const std::string& name) {
    CheckUnrelated(*shared->database, name);
    shared->database->DeleteTable(name);
  };
  return MakeServed<Collection>("TableDefs", "TableDef", std::move(source));
}

ComPointer<Collection> RelationsOf(const SharedDatabase& shared) {
  Source source;
  source.list = [=] {
    Definitions items;
    for (const ports::RelationDefinition& relation : shared->database->Relations()) {
      items.push_back(Appended("Relation", "",
                               {{"Name", relation.name},
                                {"Table", relation.table},
                                {"ForeignTable", relation.foreign_table},
                                {"Attributes", relation.attributes}}));
      std::vector<Definition::Values> fields;
      for (const ports::RelationFieldPair& pair : relation.fields)
        fields.push_back({{"Name", pair.name}, {"ForeignName", pair.foreign_name}});
      PutFields(*items.back().Get(), std::move(fields));
    }
    return items;
  };
  source.append = [=](const Definition& item) {
    ports::RelationDefinition relation{item.Text("Name"),
                                       item.Text("Table"),
                                       item.Text("ForeignTable"),
                                       item.Number("Attributes"),
                                       {}};
    for (const Definition* const field : item.Items("Fields"))
      relation.fields.push_back({field->Text("Name"), field->Text("ForeignName")});
    shared->database->CreateRelation(relation);
  };
  source.remove = [=](const std::string& name) { shared->database->DeleteRelation(name); };
  return MakeServed<Collection>("Relations", "Relation", std::move(source));
}

}  // namespace tests
