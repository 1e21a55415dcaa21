#pragma once

#include <map>

#include "jet/file/checker.h"
#include "jet/file/database_reader.h"
#include "tests/jet/file/samples.h"

namespace tests {

namespace file = jet::file;
using file::Field;
using file::PageNumber;

// A sample with what a fault needs to find its place.
class Patient {
 public:
  explicit Patient(const std::string& name) : memory_(tests::OpenSample(name)), source_(memory_) {
    file::DatabaseReader reader(memory_, name);
    for (const auto& object : reader.Objects()) {
      if (!file::IsStoredTable(object)) continue;
      tables_[object.name] = reader.Definition(object);
      places_[object.name] = object.place;
    }
    header_ = reader.FileHeader();
  }

  const file::TableLayout& Table(const std::string& name) const { return tables_.at(name); }
  const file::Header& Header() const { return header_; }
  file::PageSource& Source() { return source_; }

  template <typename T>
  T Get(PageNumber page, Field<T> field, std::size_t base = 0) const {
    return file::LoadLittle<T>(At(page, field.offset + base));
  }
  template <typename T>
  void Set(PageNumber page, Field<T> field, T value, std::size_t base = 0) {
    file::StoreLittle(At(page, field.offset + base), value);
  }

  // The bytes of a row: of a usage map, a record, a piece of a long value.
  std::size_t RowOffset(file::RowPointer row) {
    return file::DataPage(source_.Read(row.page)).At(row.row).offset;
  }

  void FlipMapBit(file::RowPointer map, PageNumber page) {
    *At(map.page, RowOffset(map) + file::usage_map::kBits + page / 8) ^=
        static_cast<char>(1U << (page % 8));
  }

  PageNumber FirstPage(file::RowPointer map) {
    return file::UsageMap(source_, map, 0).Next(0).value_or(0);
  }

  // A record of the table.
  file::RowPointer Row(const std::string& table, std::size_t number = 0) {
    file::TableCursor cursor(source_, Table(table));
    for (std::size_t i = 0; i <= number; ++i)
      EXPECT_TRUE(cursor.Next());
    return cursor.Home();
  }

  // Where a stored value of that row begins on its page.
  std::size_t ValueOffset(const std::string& table, file::RowPointer row, const char* column) {
    const auto placed =
        file::RecordAt(source_, Table(table), file::DataPage(source_.Read(row.page)), row.row);
    const file::RowShape shape = file::ShapeOf(Table(table));
    for (const auto& layout : Table(table).columns) {
      if (layout.name != column) continue;
      const auto stored = file::RowView(placed->record, shape).Stored(layout);
      return static_cast<std::size_t>(stored->data() - placed->page.Page().Bytes().data());
    }
    ADD_FAILURE() << column;
    return 0;
  }

  char* At(PageNumber page, std::size_t offset) const {
    return memory_->bytes.data() + std::size_t{page} * file::kPageSize + offset;
  }

  std::string& Bytes() { return memory_->bytes; }

  file::DatabaseReader Reader() const { return file::DatabaseReader(memory_, "a.mdb"); }
  file::CheckReport Check() const { return file::CheckDatabase(memory_, "a.mdb"); }

 private:
  std::shared_ptr<tests::MemoryPageFile> memory_;
  file::PageSource source_;
  std::map<std::string, file::TableLayout> tables_;
  std::map<std::string, file::RowPointer> places_;
  file::Header header_;
};

}  // namespace tests
