#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "jet/file/catalogue_reader.h"
#include "jet/file/long_value_reader.h"
#include "jet/file/table_cursor.h"
#include "jet/file/table_layout.h"
#include "ports/database_types.h"
#include "ports/page_file.h"

// The door for reading a file. Fails with ports::DatabaseError only: 3343 for what is no file of
// this format or cannot be listed, 3031 for a password, 3049 for damage found later, 3043 when the
// file cannot be read.
namespace jet::file {

// The records of one table. Its reader and layout must outlive it.
class TableRows {
 public:
  TableRows(PageSource& source, const TableLayout& table, std::string file_name);

  bool Next();

  // As the record holds it (for a long column its reference), nothing for Null; valid until the
  // next step.
  std::optional<std::string_view> Stored(const ColumnLayout& column) const;

  // The whole value, long ones too.
  ports::DatabaseValue Value(const ColumnLayout& column) const;

  RowPointer Home() const { return cursor_.Home(); }

 private:
  PageSource* source_;
  std::string file_name_;
  TableCursor cursor_;
};

struct ForeignObject {
  std::string kind;  // in the user's words
  std::string name;
};

class DatabaseReader {
 public:
  // Reads the header and the list of objects. The name is for the words of errors. With must_settle
  // a file that somebody left with an unfinished change is refused.
  DatabaseReader(std::shared_ptr<ports::PageFile> file, std::string file_name,
                 bool must_settle = true);

  const Header& FileHeader() const { return header_; }
  const std::string& FileName() const { return file_name_; }
  const std::vector<CatalogueObject>& Objects() const { return objects_; }

  // Null when there is no table of that name; letter case does not count. Linked tables are found
  // too, although their definitions lie elsewhere.
  const CatalogueObject* FindTable(std::string_view name) const;

  // Forms, reports, macros, modules and pages: what a rewritten file would lose.
  std::vector<ForeignObject> ForeignObjects() const;
  // 3343 when there are any.
  void RequireRewritable() const;

  TableLayout Definition(const CatalogueObject& table);
  std::vector<PropertySet> Properties(const CatalogueObject& object);
  std::vector<Relation> Relations();
  TableRows Rows(const TableLayout& table) { return {*source_, table, file_name_}; }

  // For the other doors of this room; what they throw is Damage.
  PageSource& Pages() { return *source_; }

 private:
  void Open(std::shared_ptr<ports::PageFile> file, bool must_settle);

  std::string file_name_;
  std::unique_ptr<PageSource> source_;
  Header header_;
  std::vector<CatalogueObject> objects_;
};

// Whether the object is a table, linked ones included.
bool IsTable(const CatalogueObject& object);

// Whether the object is a table whose definition lies in this file.
bool IsStoredTable(const CatalogueObject& object);

}  // namespace jet::file
