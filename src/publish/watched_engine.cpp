#include "publish/watched_engine.h"

#include <utility>

#include "database/structure_sql.h"

namespace publish {
namespace {

using ports::DatabaseValue;

class WatchedRecordset final : public ports::DatabaseRecordset {
 public:
  WatchedRecordset(std::unique_ptr<ports::DatabaseRecordset> rows, EngineListener& listener)
      : rows_(std::move(rows)), listener_(listener) {}

  void SetIndex(const std::string& name) override { rows_->SetIndex(name); }
  bool AtBeginning() const override { return rows_->AtBeginning(); }
  bool AtEnd() const override { return rows_->AtEnd(); }
  void MoveFirst() override { rows_->MoveFirst(); }
  void MoveLast() override { rows_->MoveLast(); }
  void MoveNext() override {
    listener_.OnWork();
    rows_->MoveNext();
  }
  void MovePrevious() override { rows_->MovePrevious(); }
  std::vector<std::string> FieldNames() const override { return rows_->FieldNames(); }
  std::size_t FieldPosition(const std::string& name) const override {
    return rows_->FieldPosition(name);
  }
  DatabaseValue Value(std::size_t position) const override { return rows_->Value(position); }
  void SetValue(std::size_t position, const DatabaseValue& value) override {
    rows_->SetValue(position, value);
  }
  void Edit() override { rows_->Edit(); }
  void AddNew() override { rows_->AddNew(); }
  void Update() override {
    listener_.OnWork();
    rows_->Update();
    listener_.OnRow();
  }
  void Delete() override {
    rows_->Delete();
    listener_.OnRow();
  }

 private:
  std::unique_ptr<ports::DatabaseRecordset> rows_;
  EngineListener& listener_;
};

class WatchedDatabase final : public ports::Database {
 public:
  WatchedDatabase(std::unique_ptr<ports::Database> database, EngineListener& listener)
      : database_(std::move(database)), listener_(listener) {}

  std::vector<ports::TableSummary> Tables() override { return database_->Tables(); }
  ports::TableDefinition Table(const std::string& name) override { return database_->Table(name); }
  void CreateTable(const ports::TableDefinition& table) override { database_->CreateTable(table); }
  void DeleteTable(const std::string& name) override { database_->DeleteTable(name); }
  void CreateField(const std::string& table, const ports::FieldDefinition& field) override {
    const std::string sql = "ALTER TABLE " + tmw::SqlName(table) + " ADD COLUMN " +
                            tmw::SqlName(field.name) + " " + tmw::FieldSql(field);
    Watch({sql, field.name}, [&] {
      database_->CreateField(table, field);
      return 0;
    });
  }
  void CreateIndex(const std::string& table, const ports::IndexDefinition& index) override {
    listener_.OnWork();
    database_->CreateIndex(table, index);
  }
  std::vector<ports::RelationDefinition> Relations() override { return database_->Relations(); }
  void CreateRelation(const ports::RelationDefinition& relation) override {
    listener_.OnWork();
    database_->CreateRelation(relation);
  }
  void DeleteRelation(const std::string& name) override { database_->DeleteRelation(name); }
  void SetFieldProperty(const std::string& table, const std::string& field,
                        const std::string& property, ports::DataType type,
                        const DatabaseValue& value) override {
    database_->SetFieldProperty(table, field, property, type, value);
  }
  std::optional<DatabaseValue> FieldProperty(const std::string& table, const std::string& field,
                                             const std::string& property) override {
    return database_->FieldProperty(table, field, property);
  }
  std::int64_t Execute(const std::string& sql, bool fail_on_error) override {
    return Watch({sql, ""}, [&] { return database_->Execute(sql, fail_on_error); });
  }
  std::unique_ptr<ports::DatabaseRecordset> OpenRecordset(const std::string& source,
                                                          ports::RecordsetType type) override {
    listener_.OnWork();
    return std::make_unique<WatchedRecordset>(database_->OpenRecordset(source, type), listener_);
  }
  void Close() override { database_->Close(); }

 private:
  template <typename Work>
  std::int64_t Watch(const WatchedStatement& statement, Work work) {
    listener_.OnWork();
    try {
      const std::int64_t rows = work();
      listener_.OnStatement(statement, rows, nullptr);
      return rows;
    } catch (const ports::DatabaseError& error) {
      listener_.OnStatement(statement, 0, &error);
      throw;
    }
  }

  std::unique_ptr<ports::Database> database_;
  EngineListener& listener_;
};

class WatchedEngine final : public ports::DatabaseEngine {
 public:
  WatchedEngine(ports::DatabaseEngine& engine, EngineListener& listener)
      : engine_(engine), listener_(listener) {}

  std::unique_ptr<ports::Database> OpenDatabase(const std::string& path, bool exclusive,
                                                bool read_only) override {
    return Watched(engine_.OpenDatabase(path, exclusive, read_only));
  }
  std::unique_ptr<ports::Database> CreateDatabase(const std::string& path) override {
    return Watched(engine_.CreateDatabase(path));
  }
  void CompactDatabase(const std::string& source, const std::string& target) override {
    listener_.OnWork();
    engine_.CompactDatabase(source, target);
  }
  void Idle(ports::IdleOption option) override { engine_.Idle(option); }
  void BeginTrans() override { engine_.BeginTrans(); }
  void CommitTrans() override { engine_.CommitTrans(); }
  void Rollback() override { engine_.Rollback(); }
  bool TakesDefinitionsBack() const override { return engine_.TakesDefinitionsBack(); }

 private:
  std::unique_ptr<ports::Database> Watched(std::unique_ptr<ports::Database> database) {
    return std::make_unique<WatchedDatabase>(std::move(database), listener_);
  }

  ports::DatabaseEngine& engine_;
  EngineListener& listener_;
};

}  // namespace

std::unique_ptr<ports::DatabaseEngine> MakeWatchedEngine(ports::DatabaseEngine& engine,
                                                         EngineListener& listener) {
  return std::make_unique<WatchedEngine>(engine, listener);
}

}  // namespace publish
