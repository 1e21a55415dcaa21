#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "jet/file/table_layout.h"

namespace jet::file {

// Values of one row by the places of TableLayout::columns: bytes as the record holds them, nothing
// for Null. A Boolean is one byte, 0 or 1.
using StoredValues = std::span<const std::optional<std::string_view>>;

// Makes records of one table.
class RowPacker {
 public:
  // The table must outlive the packer.
  explicit RowPacker(const TableLayout& table);

  // Valid until the next call. May be longer than a record is allowed to be.
  std::string_view Pack(StoredValues values);

 private:
  void PutFixed(const ColumnLayout& column, std::string_view value);

  const TableLayout* table_;
  std::size_t column_ids_ = 0;
  std::size_t fixed_length_ = 0;
  std::size_t mask_width_ = 0;
  std::vector<std::size_t> variable_;  // places in TableLayout::columns by slot; kNoColumn if none
  std::vector<std::uint16_t> offsets_;
  std::string record_;
  std::string mask_;
};

}  // namespace jet::file
