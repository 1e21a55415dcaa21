#pragma once

#include <utility>

#include "platform/windows/dao/dao_object.h"
#include "ports/database.h"

namespace platform {

class DaoDatabase final : public ports::Database {
 public:
  explicit DaoDatabase(DaoObject database) : database_(std::move(database)) {}
  DaoDatabase(const DaoDatabase&) = delete;
  DaoDatabase& operator=(const DaoDatabase&) = delete;
  ~DaoDatabase() override;

  std::vector<ports::TableSummary> Tables() override;
  ports::TableDefinition Table(const std::string& name) override;
  void CreateTable(const ports::TableDefinition& table) override;
  void DeleteTable(const std::string& name) override;
  void CreateField(const std::string& table, const ports::FieldDefinition& field) override;
  void CreateIndex(const std::string& table, const ports::IndexDefinition& index) override;
  std::vector<ports::RelationDefinition> Relations() override;
  void CreateRelation(const ports::RelationDefinition& relation) override;
  void DeleteRelation(const std::string& name) override;
  void SetFieldProperty(const std::string& table, const std::string& field,
                        const std::string& property, ports::DataType type,
                        const ports::DatabaseValue& value) override;
  std::optional<ports::DatabaseValue> FieldProperty(const std::string& table,
                                                    const std::string& field,
                                                    const std::string& property) override;
  std::int64_t Execute(const std::string& sql, bool fail_on_error) override;
  std::unique_ptr<ports::DatabaseRecordset> OpenRecordset(const std::string& source,
                                                          ports::RecordsetType type) override;
  void Close() override;

 private:
  DaoObject TableObject(const std::string& name) const;
  DaoObject FieldObject(const std::string& table, const std::string& field) const;

  DaoObject database_;
  bool is_open_ = true;
};

}  // namespace platform
