#pragma once

#include <deque>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "ports/database.h"

namespace tests {

// A database that hands everything on to a real one, and fails statements by script.
class ScriptedDatabase final : public ports::Database {
 public:
  ScriptedDatabase(std::unique_ptr<ports::Database> real, std::deque<std::int32_t>& failures)
      : real_(std::move(real)), failures_(failures) {}

  std::vector<ports::TableSummary> Tables() override { return real_->Tables(); }
  ports::TableDefinition Table(const std::string& name) override { return real_->Table(name); }
  void CreateTable(const ports::TableDefinition& table) override { real_->CreateTable(table); }
  void DeleteTable(const std::string& name) override { real_->DeleteTable(name); }
  void CreateField(const std::string& table, const ports::FieldDefinition& field) override {
    real_->CreateField(table, field);
  }
  void CreateIndex(const std::string& table, const ports::IndexDefinition& index) override {
    real_->CreateIndex(table, index);
  }
  std::vector<ports::RelationDefinition> Relations() override { return real_->Relations(); }
  void CreateRelation(const ports::RelationDefinition& relation) override {
    real_->CreateRelation(relation);
  }
  void DeleteRelation(const std::string& name) override { real_->DeleteRelation(name); }
  void SetFieldProperty(const std::string& table, const std::string& field,
                        const std::string& property, ports::DataType type,
                        const ports::DatabaseValue& value) override {
    real_->SetFieldProperty(table, field, property, type, value);
  }
  std::optional<ports::DatabaseValue> FieldProperty(const std::string& table,
                                                    const std::string& field,
                                                    const std::string& property) override {
    return real_->FieldProperty(table, field, property);
  }
  std::int64_t Execute(const std::string& sql, bool fail_on_error) override {
    if (!failures_.empty()) {
      const std::int32_t number = failures_.front();
      failures_.pop_front();
      throw ports::DatabaseError(number, "отказ", "tests");
    }
    return real_->Execute(sql, fail_on_error);
  }
  std::unique_ptr<ports::DatabaseRecordset> OpenRecordset(const std::string& source,
                                                          ports::RecordsetType type) override {
    return real_->OpenRecordset(source, type);
  }
  void Close() override { real_->Close(); }

 private:
  std::unique_ptr<ports::Database> real_;
  std::deque<std::int32_t>& failures_;
};

// An engine that hands everything on to a real one. It notes what is opened and compacted and when
// it idles, and fails by script.
class ScriptedEngine final : public ports::DatabaseEngine {
 public:
  explicit ScriptedEngine(ports::DatabaseEngine& real) : real_(real) {}

  std::unique_ptr<ports::Database> OpenDatabase(const std::string& path, bool exclusive,
                                                bool read_only) override {
    log.push_back("open " + path);
    if (!open_failures.empty()) {
      const std::int32_t number = open_failures.front();
      open_failures.pop_front();
      throw ports::DatabaseError(number, "отказ", "tests");
    }
    return std::make_unique<ScriptedDatabase>(real_.OpenDatabase(path, exclusive, read_only),
                                              statement_failures);
  }
  std::unique_ptr<ports::Database> CreateDatabase(const std::string& path) override {
    return real_.CreateDatabase(path);
  }
  void CompactDatabase(const std::string& source, const std::string& target) override {
    log.push_back("compact " + source);
    real_.CompactDatabase(source, target);
  }
  void Idle(ports::IdleOption option) override {
    log.push_back("idle " + std::to_string(static_cast<int>(option)));
    real_.Idle(option);
  }
  void BeginTrans() override { real_.BeginTrans(); }
  void CommitTrans() override { real_.CommitTrans(); }
  void Rollback() override { real_.Rollback(); }
  bool TakesDefinitionsBack() const override { return real_.TakesDefinitionsBack(); }

  std::vector<std::string> log;
  std::deque<std::int32_t> open_failures;       // numbers of the next openings' failures
  std::deque<std::int32_t> statement_failures;  // ... of the next statements'

 private:
  ports::DatabaseEngine& real_;
};

}  // namespace tests
