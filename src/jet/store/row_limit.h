#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include "jet/file/table_layout.h"
#include "jet/table_info.h"

// A record must fit a page of the file, while the fields of its table may allow more. Triggers
// refuse a row that is too long (3047) when it is made, rather than when the file is written.
namespace jet {

// The statements that make the triggers of a table that is to lie like this; empty where no row can
// be too long.
std::string RowLimitTriggers(const TableInfo& table, const file::TableLayout& layout);

std::string DropRowLimitTriggers(std::int64_t table);

// The bytes that a value of that field type takes up among the variable ones of a record. Texts may
// be stored compressed.
std::size_t StoredTextLength(std::string_view text, ports::DataType type, bool may_compress);
std::size_t StoredBytesLength(std::size_t length, ports::DataType type);

}  // namespace jet
