#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "jet/file/account_ids.h"
#include "jet/file/catalogue_reader.h"
#include "jet/file/page_sink.h"
#include "jet/file/scratch_file.h"
#include "jet/file/system_definitions.h"
#include "jet/file/table_packer.h"

namespace jet::file {

// Writes the four system tables.
class CataloguePacker {
 public:
  // Reserves the first pages of the file, so nothing else may have been reserved yet. Sink and file
  // must outlive the packer.
  CataloguePacker(PageSink& sink, ScratchFile& scratch, const Header& header);
  CataloguePacker(const CataloguePacker&) = delete;
  CataloguePacker& operator=(const CataloguePacker&) = delete;
  ~CataloguePacker();

  // The objects and rights of an empty database; the moment is in days since 1899-12-30.
  void AddStandardObjects(double moment);

  // One row of MSysObjects: values by objects_column, long ones whole.
  using ObjectValues = std::vector<std::optional<std::string>>;
  void AddObject(const ObjectValues& values);

  // A new object's row and its rights.
  struct NewObject {
    std::uint32_t id = 0;
    std::uint32_t parent = 0;
    std::string name;
    std::int16_t type = 0;
    std::uint32_t flags = 0;
    double moment = 0;       // of its making
    std::string properties;  // the packed block
  };
  void AddNewObject(const NewObject& object, std::span<const Right> rights);

  void AddRight(std::uint32_t object, std::uint32_t rights, std::string_view account,
                bool is_inheritable);

  // One row of MSysQueries: values by queries_column.
  void AddQueryRow(const std::vector<std::optional<std::string>>& values);

  void AddRelation(const Relation& relation);

  // Writes everything that is left, the definitions too.
  void Finish();

 private:
  // One system table, its rows given by the columns' ids.
  class Table;

  PageSink* sink_;
  AccountIds accounts_;
  std::vector<std::unique_ptr<Table>> tables_;  // in the order of their definition pages
};

// Bytes of a number as a record holds them.
template <typename T>
std::string StoredNumber(T value) {
  std::string bytes;
  AppendLittle(bytes, value);
  return bytes;
}

}  // namespace jet::file
