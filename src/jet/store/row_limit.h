#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include "jet/file/table_layout.h"
#include "jet/table_info.h"

// What the file can hold of the values that fields and indexes allow. It is refused when the row is
// made, rather than when the file is written.
namespace jet {

// The statements that make the triggers of a table that is to lie like this. They refuse (3047) a
// record that does not fit a page and keys that are too long; empty where no row can be refused.
std::string RowLimitTriggers(const TableInfo& table, const file::TableLayout& layout);

// A condition on a row, with that prefix before its columns: its key is too long. Empty where no
// key can be.
std::string KeyTooLongSql(const TableInfo& table, const IndexInfo& index, std::string_view prefix);

std::string DropRowLimitTriggers(std::int64_t table);

// The bytes that a value of that field type takes up among the variable ones of a record. Texts may
// be stored compressed.
std::size_t StoredTextLength(std::string_view text, ports::DataType type, bool may_compress);
std::size_t StoredBytesLength(std::size_t length, ports::DataType type);

// The bytes that a value takes up in a key.
std::size_t TextKeyLength(std::string_view text);
std::size_t BytesKeyLength(std::size_t length);

// 3421 for a text that the file cannot hold in any form.
void CheckPackable(const ports::DatabaseValue& value, const Target& target);

}  // namespace jet
