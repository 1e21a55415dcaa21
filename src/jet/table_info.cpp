#include "jet/table_info.h"

#include "foundation/encodings.h"
#include "jet/errors.h"
#include "jet/storage_sql.h"

namespace jet {

const FieldInfo* TableInfo::FindField(std::string_view field_name) const {
  const std::string lower = tmw::LowerCase(field_name);
  for (const FieldInfo& field : fields) {
    if (field.lower_name == lower) return &field;
  }
  return nullptr;
}

const IndexInfo* TableInfo::FindIndex(std::string_view index_name) const {
  const std::string lower = tmw::LowerCase(index_name);
  for (const IndexInfo& index : indexes) {
    if (index.lower_name == lower) return &index;
  }
  return nullptr;
}

const IndexInfo* TableInfo::PrimaryIndex() const {
  for (const IndexInfo& index : indexes) {
    if (index.definition.primary) return &index;
  }
  return nullptr;
}

const FieldInfo& RequireField(const TableInfo& table, std::string_view name,
                              std::int32_t error_number) {
  const FieldInfo* const field = table.FindField(name);
  if (field == nullptr) Fail(error_number, name, table.name);
  return *field;
}

std::int32_t StoredSize(const ports::FieldDefinition& definition) {
  if (definition.type != ports::DataType::kDecimal) return definition.size;
  return DecimalSize(definition.precision, definition.scale);
}

Target TargetOf(const ports::FieldDefinition& definition, bool in_primary_key) {
  return {definition.name,
          definition.type,
          StoredSize(definition),
          definition.required,
          definition.allow_zero_length || !IsTextType(definition.type),
          in_primary_key};
}

std::string IndexOrder(const TableInfo& table, const IndexInfo& index) {
  std::string order;
  for (std::size_t i = 0; i < index.positions.size(); ++i) {
    const FieldInfo& field = table.fields[index.positions[i]];
    if (!order.empty()) order += ", ";
    order += field.column;
    order += CollationOfField(field.definition.type);
    if (index.definition.fields[i].descending) order += " DESC";
  }
  return order;
}

std::string IndexedRows(const TableInfo& table, const IndexInfo& index) {
  std::string present;
  for (const std::size_t position : index.positions)
    Append(present, table.fields[position].column + " IS NOT NULL", " OR ");
  return present;
}

bool IsTextType(ports::DataType type) {
  return type == ports::DataType::kText || type == ports::DataType::kMemo;
}

const char* CollationOfField(ports::DataType type) {
  if (type == ports::DataType::kDecimal) return kCollateDecimal;
  return IsTextType(type) ? kCollate : "";
}

}  // namespace jet
