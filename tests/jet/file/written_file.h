#pragma once

#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <optional>
#include <random>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "jet/file/checker.h"
#include "jet/file/database_writer.h"
#include "jet/file/layout_builder.h"
#include "tests/fakes/memory_page_file.h"

// Files that the tests have written, in memory.
namespace tests {

inline constexpr std::uint32_t kGeneralOrder = 0x409;
inline constexpr double kMoment = 45000.5;

// Stored bytes by the places of the layout's columns, long values whole.
using StoredRow = std::vector<std::optional<std::string>>;

struct NewTable {
  std::string name;
  jet::file::TableLayout layout;
  std::vector<StoredRow> rows;
  std::vector<jet::file::PropertySet> properties;
};

class RowsAtHand final : public jet::file::RowSource {
 public:
  explicit RowsAtHand(const std::vector<StoredRow>& rows) : rows_(rows) {}

  bool Next(std::vector<std::optional<std::string_view>>& row) override {
    if (next_ == rows_.size()) return false;
    const StoredRow& given = rows_[next_++];
    row.assign(given.begin(), given.end());
    return true;
  }

 private:
  const std::vector<StoredRow>& rows_;
  std::size_t next_ = 0;
};

inline jet::file::Header TestHeader() {
  jet::file::HeaderFacts facts;
  facts.creation_date = kMoment;
  return jet::file::MakeHeader(facts);
}

// Where sorting may put its files.
inline std::string& ScratchPath() {
  static std::string path = "unused";
  return path;
}

inline void WriteTo(const std::shared_ptr<MemoryPageFile>& target,
                    const std::vector<NewTable>& tables,
                    const std::vector<jet::file::Relation>& relations = {}) {
  jet::file::DatabaseWriter writer({target, ScratchPath()}, TestHeader(), kMoment);
  for (const NewTable& table : tables) {
    RowsAtHand rows(table.rows);
    writer.WriteTable({table.name, table.layout, table.properties, kMoment}, rows);
  }
  for (const jet::file::Relation& relation : relations)
    writer.WriteRelation(relation, kMoment);
  writer.Finish();
}

inline std::string Written(const std::vector<NewTable>& tables,
                           const std::vector<jet::file::Relation>& relations = {}) {
  const auto target = std::make_shared<MemoryPageFile>();
  WriteTo(target, tables, relations);
  return std::move(target->bytes);
}

inline std::string Copied(jet::file::DatabaseReader& source, jet::file::Copying copying) {
  const auto target = std::make_shared<MemoryPageFile>();
  jet::file::DatabaseWriter writer({target, ScratchPath()}, source);
  writer.CopyAll(copying);
  writer.Finish();
  return std::move(target->bytes);
}

inline jet::file::DatabaseReader OpenWritten(std::string bytes) {
  return {std::make_shared<MemoryPageFile>(std::move(bytes)), "written"};
}

// The check has neither faults nor notes.
inline void ExpectSound(const std::string& bytes) {
  const auto report = jet::file::CheckDatabase(std::make_shared<MemoryPageFile>(bytes), "written");
  for (const jet::file::Finding& finding : report.findings.Kept())
    ADD_FAILURE() << finding.Text();
}

inline std::vector<StoredRow> RowsOf(jet::file::DatabaseReader& reader, const std::string& name) {
  std::vector<StoredRow> rows;
  const jet::file::TableLayout layout = reader.Definition(*reader.FindTable(name));
  jet::file::TableCursor cursor(reader.Pages(), layout);
  while (cursor.Next()) {
    const jet::file::RowView row = cursor.Row();
    StoredRow values;
    for (const jet::file::ColumnLayout& column : layout.columns) {
      const auto stored = row.Stored(column);
      values.emplace_back(stored);
      if (stored && jet::file::IsLong(column.type))
        values.back() = ReadLongValue(reader.Pages(), {row.Record().Page(), *stored});
    }
    rows.push_back(std::move(values));
  }
  return rows;
}

inline jet::file::ColumnLayout Column(const std::string& name, jet::file::ColumnType type,
                                      std::uint16_t size = 0) {
  return jet::file::NewColumn(name, type, size, kGeneralOrder);
}

// A table of those columns, numbered from 1 in the order given; more than one may be of a type.
inline NewTable TableOf(const std::string& name,
                        const std::vector<jet::file::ColumnLayout>& columns) {
  NewTable table;
  table.name = name;
  table.layout.page = 0x700000;
  table.layout.columns = columns;
  jet::file::PlaceColumns(table.layout);
  return table;
}

// The number of the failure; 0 without one.
inline std::int32_t ErrorOf(const std::function<void()>& call) {
  try {
    call();
  } catch (const ports::DatabaseError& error) {
    return error.Number;
  }
  return 0;
}

class Dice {
 public:
  explicit Dice(unsigned seed) : engine_(seed) {}

  std::size_t Below(std::size_t limit) { return engine_() % limit; }
  bool OneIn(std::size_t times) { return Below(times) == 0; }

  template <typename T, std::size_t N>
  const T& Of(const T (&choices)[N]) {
    return choices[Below(N)];
  }

  std::string Bytes(std::size_t length) {
    std::string bytes(length, '\0');
    for (char& byte : bytes)
      byte = static_cast<char>(engine_());
    return bytes;
  }

  // Characters of one and of two bytes, accented ones, and such as count last.
  std::string Text(std::size_t characters) {
    static constexpr const char* kLetters[] = {"a", "B", "z", " ", "-", "'", "9", "я", "Ё", "Ж"};
    const bool is_latin = OneIn(2);
    std::string text;
    for (std::size_t i = 0; i < characters; ++i)
      text += kLetters[is_latin ? Below(7) : Below(10)];
    return text;
  }

 private:
  std::minstd_rand engine_;
};

}  // namespace tests
