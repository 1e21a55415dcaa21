#pragma once

#include <memory>
#include <vector>

#include "jet/file/database_reader.h"
#include "jet/store/catalogue.h"
#include "jet/store/sqlite.h"

namespace jet {

// Notes the relations of the file in the catalogue, before anything has been changed: those between
// tables that this engine reads, and the names of the others (of helper tables of other programs,
// of linked ones).
void BringRelations(const std::shared_ptr<Connection>& storage, file::DatabaseReader& reader,
                    Catalogue& catalogue);

// The relations of the file: those that were brought into the catalogue, in the names of their
// definitions as far as these still exist, and the others as they stand.
struct FileRelations {
  std::vector<file::Relation> known;
  std::vector<file::Relation> carried;
};

FileRelations ReadFileRelations(const std::shared_ptr<Connection>& storage,
                                file::DatabaseReader& reader, Catalogue& catalogue);

}  // namespace jet
