#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "ports/database_types.h"

// The database engine: as much of DAO 3.6 over Jet files as the program uses. Every call throws
// DatabaseError on failure; the numbers in the comments are those that callers may expect. To be
// used from one thread. Names compare without regard to case.
namespace ports {

enum class RecordsetType {
  kTable,    // the rows of one table, in the order of its current index
  kDynaset,  // the rows of a table or of a SELECT statement
};

// An open set of rows with a current row. Closing the database closes it.
class DatabaseRecordset {
 public:
  virtual ~DatabaseRecordset() = default;

  // kTable only: orders the rows by that index and makes the first one current. 3015 if there is no
  // such index.
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

// One open database. Whoever changed it calls Close: destroying it frees the file, but the changes
// may be lost. Recordsets and definitions asked of it die with it.
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

  // In name order.
  virtual std::vector<RelationDefinition> Relations() = 0;
  // 3012: the name is taken; 3366: no fields; 3001: an inherited one; 3265: a table or field is
  // unknown. An enforced one also: 3368: the fields' types differ; 3609: those referred to have no
  // unique index; 3284: the foreign table has an index of that name; 3201: a row refers to none.
  // DAO may give other numbers for the same (3371, 3379 …).
  virtual void CreateRelation(const RelationDefinition& relation) = 0;
  virtual void DeleteRelation(const std::string& name) = 0;  // with its index; 3265

  // Properties that a field may have beside those of its definition (Description, Caption …).
  virtual void SetFieldProperty(const std::string& table, const std::string& field,
                                const std::string& property, DataType type,
                                const DatabaseValue& value) = 0;
  virtual std::optional<DatabaseValue> FieldProperty(const std::string& table,
                                                     const std::string& field,
                                                     const std::string& property) = 0;

  // Runs an action statement and returns the number of rows affected. With fail_on_error a
  // statement that fails for any row is rolled back as a whole; without it DAO silently skips the
  // failing rows (the embedded engine fails nevertheless).
  virtual std::int64_t Execute(const std::string& sql, bool fail_on_error) = 0;

  // The source is a table's name or (kDynaset) a SELECT statement.
  virtual std::unique_ptr<DatabaseRecordset> OpenRecordset(const std::string& source,
                                                           RecordsetType type) = 0;

  // Brings the changes to the disk, those of an open transaction left out, and frees the file. Any
  // other call afterwards: 3420. When it fails (3026, 3043 …), the file is as it was when it was
  // opened, and the database stays open, so that it may be tried again.
  virtual void Close() = 0;
};

enum class IdleOption : std::int32_t { kFreeLocks = 1, kRefreshCache = 8 };

class DatabaseEngine {
 public:
  virtual ~DatabaseEngine() = default;

  // 3024 if there is no such file, 3045 if it is open elsewhere and exclusive access is requested,
  // 3356 if it is open exclusively elsewhere, 3051 without permission, 3343 if it is no database
  // that this engine reads or, opened for changes, none that it can rewrite, 3031 if it has a
  // password. The first change through a shared database may need the file for itself (3045, 3218).
  virtual std::unique_ptr<Database> OpenDatabase(const std::string& path, bool exclusive,
                                                 bool read_only) = 0;

  // Creates an empty database and opens it exclusively. 3204 if the file exists.
  virtual std::unique_ptr<Database> CreateDatabase(const std::string& path) = 0;

  // Copies a database that is not open anywhere into a new file without its free space; rows are
  // stored in the order of the primary key. 3204 if the target exists; a failure leaves no target
  // behind.
  virtual void CompactDatabase(const std::string& source, const std::string& target) = 0;

  virtual void Idle(IdleOption option) = 0;

  // Transactions cover all databases open in this process and nest to five levels (3003, 3034). A
  // database that is closed rolls its part back.
  virtual void BeginTrans() = 0;
  virtual void CommitTrans() = 0;
  virtual void Rollback() = 0;
  // True if a rollback undoes changes of definitions (tables, fields, indexes, relations) too, and
  // one transaction may hold them together with rows. DAO refuses some of that.
  virtual bool TakesDefinitionsBack() const = 0;
};

}  // namespace ports
