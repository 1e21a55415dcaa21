#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "jet/file/catalogue_packer.h"
#include "jet/file/database_reader.h"
#include "jet/file/table_packer.h"
#include "ports/page_file.h"

// The door for writing a file: always a whole fresh one. The caller makes it, beside its target
// under another name, and renames it when it is finished; one that is not finished is no database,
// for its first page is written last. The bytes follow from what is asked for and from nothing
// else. Fails with ports::DatabaseError only: 3026 or 3043 when the file cannot be written, 3049
// when the source is damaged, and the numbers of what the format does not allow.
namespace jet::file {

// The rows of a table, one after the other.
class RowSource {
 public:
  virtual ~RowSource() = default;

  // By the places of TableLayout::columns, long values whole, valid until the next call; false
  // behind the last row.
  virtual bool Next(std::vector<std::optional<std::string_view>>& row) = 0;
};

// How a table is copied.
enum class Copying {
  kAsItStands,
  kCompacted,  // rows in the order of the primary key, autonumbers to go on from the greatest left
};

// A table whose rows do not come from the source as they stand there. The page of its layout is
// what the relation ends of other layouts call it by: its page in the source, or any number that no
// table has there.
struct WrittenTable {
  std::string name;
  TableLayout layout;
  std::vector<PropertySet> properties;
  double moment = 0;  // of its making or change, in days since 1899-12-30
  // What it was in the source; the rest of that object is carried. Null for a new table.
  const CatalogueObject* carried = nullptr;
};

struct WriterFiles {
  std::shared_ptr<ports::PageFile> target;  // new and empty
  std::string scratch_path;                 // beginning of the names of files for sorting
};

// Removes the files for sorting that a writer of that scratch path has left when it was killed.
void RemoveScratch(const std::string& scratch_path);

// Whether the id is that of one of the four tables in which a file describes itself.
bool IsSystemTable(const Header& header, std::uint32_t id);

class DatabaseWriter {
 public:
  // A database of its own, with the objects that every one has.
  DatabaseWriter(WriterFiles files, const Header& header, double moment);

  // A rewrite of the source, which must outlive the writer. What is not asked for is left out. 3343
  // when the source has objects that cannot be carried (DatabaseReader::ForeignObjects).
  DatabaseWriter(WriterFiles files, DatabaseReader& source);

  DatabaseWriter(const DatabaseWriter&) = delete;
  DatabaseWriter& operator=(const DatabaseWriter&) = delete;
  ~DatabaseWriter();

  // An object of the source, with its rights, and for a query its rows. No user's table.
  void CarryObject(const CatalogueObject& object);

  // A user's table of the source; a layout may be given that differs in indexes.
  void CopyTable(const CatalogueObject& table, Copying copying,
                 std::optional<TableLayout> layout = std::nullopt);

  void WriteTable(const WrittenTable& table, RowSource& rows);

  // The rows of a relation. Its object is carried; with a moment it is new and made here. Both
  // definitions know of the relation by their layouts.
  void WriteRelation(const Relation& relation, std::optional<double> moment = std::nullopt);

  // Everything that the source has.
  void CopyAll(Copying copying);

  // Writes what is left and brings it to the disk. To be called once, nothing may follow.
  void Finish();

 private:
  struct Definition {
    TableLayout layout;
    std::vector<PageNumber> pages;
  };

  DatabaseWriter(WriterFiles files, const Header& header, DatabaseReader* source);

  template <typename Call>
  void Guard(Call&& call);

  std::vector<PageNumber> ReserveDefinition(TableLayout& layout);
  void CopyRows(const TableLayout& source, TablePacker& packer, Copying copying);
  void CopyRowsByKey(const TableLayout& source, const IndexLayout& key, TablePacker& packer);
  void FinishTable(TablePacker& packer, std::vector<PageNumber> pages, PageNumber source_page,
                   bool restart_autonumber);
  CataloguePacker::ObjectValues ValuesOf(const CatalogueObject& object);
  void AddCarried(std::uint32_t old_id, std::uint32_t new_id);
  void CarryRights();
  void CarryQueries();
  void PutDefinitions();

  DatabaseReader* source_;
  Header header_;
  PageSink sink_;
  ScratchFile scratch_;
  ScratchFile catalogue_scratch_;  // the catalogue's keys wait until all tables are written
  CataloguePacker catalogue_;
  std::vector<Definition> definitions_;
  std::map<std::uint32_t, std::uint32_t> ids_;  // of the source's objects that are in the new file
  std::uint32_t next_object_id_;
};

}  // namespace jet::file
