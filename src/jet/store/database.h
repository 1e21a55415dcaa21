#pragma once

#include <memory>
#include <string>
#include <vector>

#include "jet/store/definitions.h"
#include "jet/store/session.h"
#include "platform/database.h"

namespace jet {

class Database final : public platform::Database {
 public:
  explicit Database(std::shared_ptr<Session> session)
      : session_(std::move(session)), definitions_(*session_) {}
  Database(const Database&) = delete;
  Database& operator=(const Database&) = delete;
  ~Database() override { session_->Close(); }

  std::vector<platform::TableSummary> Tables() override;
  platform::TableDefinition Table(const std::string& name) override;
  void CreateTable(const platform::TableDefinition& table) override;
  void DeleteTable(const std::string& name) override;
  void CreateField(const std::string& table, const platform::FieldDefinition& field) override;
  void CreateIndex(const std::string& table, const platform::IndexDefinition& index) override;
  void SetFieldProperty(const std::string& table, const std::string& field,
                        const std::string& property, platform::DataType type,
                        const platform::DatabaseValue& value) override;
  std::optional<platform::DatabaseValue> FieldProperty(const std::string& table,
                                                       const std::string& field,
                                                       const std::string& property) override;
  std::int64_t Execute(const std::string& sql, bool fail_on_error) override;
  std::unique_ptr<platform::DatabaseRecordset> OpenRecordset(const std::string& source,
                                                             platform::RecordsetType type) override;
  void Close() override { session_->Close(); }

 private:
  TablePtr Require(const std::string& name);

  std::shared_ptr<Session> session_;
  Definitions definitions_;
};

}  // namespace jet
