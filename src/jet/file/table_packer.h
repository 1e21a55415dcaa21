#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "jet/file/index_key.h"
#include "jet/file/key_sorter.h"
#include "jet/file/long_value_packer.h"
#include "jet/file/page_sink.h"
#include "jet/file/row_packer.h"
#include "jet/file/row_view.h"
#include "jet/file/usage_map_packer.h"

namespace jet::file {

// Writes the rows, long values and indexes of one table; its definition is left to whoever knows
// what it refers to.
class TablePacker {
 public:
  // The layout says what the table is like; its page is the one reserved for the definition.
  // Counts, maps and roots come from here. The name is for the words of errors. Sink and file must
  // outlive the packer.
  TablePacker(PageSink& sink, ScratchFile& scratch, TableLayout layout, std::string name);
  TablePacker(const TablePacker&) = delete;
  TablePacker& operator=(const TablePacker&) = delete;

  // A row whose long values are at hand, whole. 3047 when its record or a key is longer than the
  // format allows.
  void AddRow(StoredValues values);

  // A row of another file with the same columns; its values are not looked into. The pages are
  // those of that file. Throws Damage.
  void CopyRow(PageSource& pages, const RowView& row, const TableLayout& source);

  // The greatest autonumber among the rows; nothing when the table has no such column or no row.
  std::optional<std::int32_t> GreatestAutonumber() const { return greatest_autonumber_; }

  // Writes what is left, and the maps. The layout as the definition is to describe it.
  TableLayout Finish(UsageMapPacker& maps);

 private:
  struct Index {
    IndexKey key;
    KeySorter keys;
  };

  void AddRecord(StoredValues values);
  void AddKeys(StoredValues values, RowPointer row);
  void NoteAutonumber(StoredValues values);
  RowPointer Place(std::string_view record);
  void BuildIndex(std::size_t index);

  PageSink* sink_;
  ScratchFile* scratch_;
  TableLayout layout_;
  std::string name_;
  RowPacker packer_;
  std::map<std::size_t, LongValuePacker> long_values_;  // by place in layout_.columns
  std::vector<Index> indexes_;
  std::vector<bool> is_in_key_;  // by place: a long column that an index needs
  PageSet pages_;
  std::vector<PageSet> index_pages_;
  std::optional<PageNumber> page_;
  DataPagePacker rows_;
  std::optional<std::size_t> autonumber_place_;
  std::optional<std::int32_t> greatest_autonumber_;
  // Of the row at hand.
  std::vector<std::optional<std::string_view>> cells_;
  std::vector<std::optional<std::string_view>> key_cells_;
  std::vector<std::string> references_;
  std::vector<std::string> beginnings_;
  std::string entry_;
};

}  // namespace jet::file
