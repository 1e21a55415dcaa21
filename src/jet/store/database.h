#pragma once

#include <memory>
#include <string>
#include <vector>

#include "jet/store/definitions.h"
#include "jet/store/session.h"
#include "ports/database.h"

namespace jet {

class Database final : public ports::Database {
 public:
  explicit Database(std::shared_ptr<Session> session)
      : session_(std::move(session)), definitions_(*session_) {}
  Database(const Database&) = delete;
  Database& operator=(const Database&) = delete;
  ~Database() override { session_->Discard(); }

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
  void Close() override { session_->Close(); }

 private:
  TablePtr Require(const std::string& name);
  // A table of the system or a linked one; null for others.
  const ports::TableSummary* FindUnreadable(const std::string& name);

  std::shared_ptr<Session> session_;
  Definitions definitions_;
};

}  // namespace jet
