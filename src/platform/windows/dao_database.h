#pragma once

#include <utility>

#include "platform/database.h"
#include "platform/windows/dao_object.h"

namespace platform {

class DaoDatabase final : public Database {
 public:
  explicit DaoDatabase(DaoObject database) : database_(std::move(database)) {}
  DaoDatabase(const DaoDatabase&) = delete;
  DaoDatabase& operator=(const DaoDatabase&) = delete;
  ~DaoDatabase() override;

  std::vector<TableSummary> Tables() override;
  TableDefinition Table(const std::string& name) override;
  void CreateTable(const TableDefinition& table) override;
  void DeleteTable(const std::string& name) override;
  void CreateField(const std::string& table, const FieldDefinition& field) override;
  void CreateIndex(const std::string& table, const IndexDefinition& index) override;
  void SetFieldProperty(const std::string& table, const std::string& field,
                        const std::string& property, DataType type,
                        const DatabaseValue& value) override;
  std::optional<DatabaseValue> FieldProperty(const std::string& table, const std::string& field,
                                             const std::string& property) override;
  std::int64_t Execute(const std::string& sql, bool fail_on_error) override;
  std::unique_ptr<DatabaseRecordset> OpenRecordset(const std::string& source,
                                                   RecordsetType type) override;
  void Close() override;

 private:
  DaoObject TableObject(const std::string& name) const;
  DaoObject FieldObject(const std::string& table, const std::string& field) const;

  DaoObject database_;
  bool is_open_ = true;
};

}  // namespace platform
