#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "jet/file/database_reader.h"
#include "jet/file/row_list.h"
#include "jet/store/catalogue.h"
#include "jet/store/container.h"
#include "jet/store/sqlite.h"
#include "jet/table_info.h"

namespace jet {

// A stretch of statements that is undone whole unless it is finished.
class LoadingStep {
 public:
  explicit LoadingStep(Connection& storage);
  LoadingStep(const LoadingStep&) = delete;
  LoadingStep& operator=(const LoadingStep&) = delete;
  ~LoadingStep();

  void Finish();

 private:
  Connection& storage_;
  bool is_done_ = false;
};

// Notes all tables of the file in the empty catalogue, by name only.
void ListTables(const std::shared_ptr<Connection>& storage, const file::DatabaseReader& reader);

// Brings tables from the file into the working store.
class TableLoader final : public TableDefiner {
 public:
  TableLoader(std::shared_ptr<Connection> storage, Container& container)
      : storage_(std::move(storage)), container_(container) {}

  void Define(std::int64_t table) override;

  // Its rows, unless they are there, and its indexes, without which statements find them slowly and
  // duplicates are not refused. Nothing for a table that has been dropped.
  void Load(const TablePtr& table);
  void LoadRows(const TablePtr& table);

  // It lacks an index, which the next loading builds.
  void LackIndex(std::int64_t table) { loaded_.erase(table); }

  // Its rows are to be changed: those that the file could not hold are refused from now on.
  void LimitRows(const TableInfo& table);

  // The number of its rows, as long as they lie in the file only.
  std::optional<std::int64_t> CountInFile(const TableInfo& table);

  // The rows themselves, likewise.
  std::optional<file::RowList> RowsInFile(const TableInfo& table);

  // A transaction was taken back, and what it had loaded with it.
  void Forget();
  // Loads again what Forget found loaded: somebody may be reading it.
  void Restore();

 private:
  void InsertFields(std::int64_t table, const file::TableLayout& layout,
                    const std::vector<file::PropertySet>& properties);
  void InsertIndexes(std::int64_t table, const file::TableLayout& layout);
  void InsertRows(const TableInfo& table, const file::TableLayout& layout);
  void BuildIndexes(const TableInfo& table);
  std::optional<TableState> StateOf(std::int64_t table);
  void SetState(std::int64_t table, TableState state);
  Statement Prepare(const std::string& sql) { return {storage_, sql}; }

  std::shared_ptr<Connection> storage_;
  Container& container_;
  std::map<std::int64_t, TablePtr> loaded_;  // with their indexes
  std::map<std::int64_t, TablePtr> lost_;
};

}  // namespace jet
