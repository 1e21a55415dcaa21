#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "ports/database_types.h"

// The database engine, shaped like DAO 3.6 over Jet files and no larger than what the program asks.
// Every call throws DatabaseError on failure. One thread. Names compare without regard to case.
namespace ports {

enum class RecordsetType {
  kTable,    // the rows of one table, in the order of its current index
  kDynaset,  // the rows of a table or of a SELECT statement
};

// One open set of rows with a current one. Closing the database closes it.
class DatabaseRecordset {
 public:
  virtual ~DatabaseRecordset() = default;

  // kTable only: the rows come in that index's order from now on, the first one is current. An
  // unknown index: 3015.
  virtual void SetIndex(const std::string& name) = 0;

  virtual bool AtBeginning() const = 0;  // before the first row (BOF)
  virtual bool AtEnd() const = 0;        // behind the last row (EOF)
  virtual void MoveFirst() = 0;          // without rows: 3021
  virtual void MoveLast() = 0;           // likewise
  virtual void MoveNext() = 0;           // at the end: 3021
  virtual void MovePrevious() = 0;       // at the beginning: 3021

  virtual std::vector<std::string> FieldNames() const = 0;
  // 0-based; 3265 for an unknown name.
  virtual std::size_t FieldPosition(const std::string& name) const = 0;

  // The current row, or the copy buffer between Edit or AddNew and Update. 3021 without either.
  virtual DatabaseValue Value(std::size_t position) const = 0;
  // Into the copy buffer, converted to the field's type (3421, 3163); 3020 without Edit or AddNew.
  virtual void SetValue(std::size_t position, const DatabaseValue& value) = 0;

  virtual void Edit() = 0;
  virtual void AddNew() = 0;  // the fields have their defaults
  // Stores the copy buffer (3022, 3058, 3314, 3315). After AddNew the current row is the old one.
  virtual void Update() = 0;
  virtual void Delete() = 0;  // the current row; the row behind it is reached by MoveNext
};

// One open database. Destroying it closes it; recordsets and definitions asked of it die with it.
class Database {
 public:
  virtual ~Database() = default;

  // All tables, system tables included, in name order.
  virtual std::vector<TableSummary> Tables() = 0;
  // 3265 for an unknown name.
  virtual TableDefinition Table(const std::string& name) = 0;

  virtual void CreateTable(const TableDefinition& table) = 0;  // 3010 when the name is taken
  // 3265; 3281 while another table's relation refers to it.
  virtual void DeleteTable(const std::string& name) = 0;
  virtual void CreateField(const std::string& table, const FieldDefinition& field) = 0;
  virtual void CreateIndex(const std::string& table, const IndexDefinition& index) = 0;

  // Properties that a field may have beside those of its definition (Description, Caption …).
  virtual void SetFieldProperty(const std::string& table, const std::string& field,
                                const std::string& property, DataType type,
                                const DatabaseValue& value) = 0;
  virtual std::optional<DatabaseValue> FieldProperty(const std::string& table,
                                                     const std::string& field,
                                                     const std::string& property) = 0;

  // Runs an action statement; the number of rows it touched. With fail_on_error a statement that
  // fails on any row is undone whole; without it DAO leaves the failing rows out and says nothing
  // (the embedded engine fails all the same).
  virtual std::int64_t Execute(const std::string& sql, bool fail_on_error) = 0;

  // The source is a table's name or (kDynaset) a SELECT statement.
  virtual std::unique_ptr<DatabaseRecordset> OpenRecordset(const std::string& source,
                                                           RecordsetType type) = 0;

  // Frees the file. Any other call afterwards: 3420.
  virtual void Close() = 0;
};

enum class IdleOption : std::int32_t { kFreeLocks = 1, kRefreshCache = 8 };

class DatabaseEngine {
 public:
  virtual ~DatabaseEngine() = default;

  // 3024: no such file; 3045: somebody has it open and it is wanted exclusively; 3356: somebody
  // has it exclusively; 3051: no permission; 3343: no database that this engine reads.
  virtual std::unique_ptr<Database> OpenDatabase(const std::string& path, bool exclusive,
                                                 bool read_only) = 0;

  // A new, empty database, opened exclusively. 3204 when the file exists.
  virtual std::unique_ptr<Database> CreateDatabase(const std::string& path) = 0;

  // Copies a database that nobody has open into a new file without its free space; rows are stored
  // in the order of the primary key. 3204 when the target exists; nothing of it is left on failure.
  virtual void CompactDatabase(const std::string& source, const std::string& target) = 0;

  virtual void Idle(IdleOption option) = 0;

  // Transactions cover all databases open in this process and nest to five levels (3003, 3034). A
  // database that is closed takes its part back.
  virtual void BeginTrans() = 0;
  virtual void CommitTrans() = 0;
  virtual void Rollback() = 0;
};

}  // namespace ports
