#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "database/imp_table.h"
#include "database/table_export.h"
#include "database/table_text.h"
#include "database/transaction.h"
#include "foundation/program_error.h"
#include "ports/ports.h"
#include "tests/support/sandbox.h"

namespace {

// Numbers that are the same in every run.
class Dice {
 public:
  explicit Dice(std::uint32_t seed) : state_(seed) {}
  std::size_t Below(std::size_t limit) {
    state_ = state_ * 1664525 + 1013904223;
    return static_cast<std::size_t>(state_ >> 8U) % limit;
  }

 private:
  std::uint32_t state_;
};

std::string Damaged(std::string text, Dice& dice) {
  const std::string pieces[] = {"|",      "\r\n", "^", "Rows\r\n", "EndTable\r\n", "S",
                                "d",      "-",    ";", "/D",       "|Unique",      "Field:",
                                "Index:", "E",    "?", "\xFF",     "9999999999"};
  for (std::size_t i = 1 + dice.Below(3); i > 0; --i) {
    const std::size_t at = dice.Below(text.size());
    switch (dice.Below(4)) {
      case 0:
        text.erase(at, 1 + dice.Below(5));
        break;
      case 1:
        text.insert(at, pieces[dice.Below(std::size(pieces))]);
        break;
      case 2:
        text[at] = static_cast<char>(dice.Below(256));
        break;
      default:
        text.erase(at);
    }
    if (text.empty()) return text;
  }
  return text;
}

// What a reader has read before the end or the fault.
std::string ReadAll(tmw::TableTextReader&& reader) {
  std::string log;
  try {
    log = reader.ReadStructure().name + std::to_string(reader.ReadRowsOpener());
    for (std::vector<std::string_view> row; reader.ReadRow(row);)
      log.append("\n").append(row.front()).append(row.back());
    reader.ReadEnd();
  } catch (const tmw::ProgramError& error) {
    log += error.Description;
  }
  return log + std::to_string(reader.Line());
}

// A damaged text is either refused and can be rolled back, or gives a table that is exported and
// imported without a change.
TEST(TableTextFuzz, DamageIsRefusedOrMakesAWholeTable) {
  const tests::Sandbox sandbox;
  const auto db = ports::CurrentPorts().database->CreateDatabase(sandbox.Path("b.mdb"));
  const std::string sound =
      "Table:Т\r\nField:Ид|Long|4|NotNull\r\nField:Имя|Text|20|AllowZero|Default:S\"x\"\r\n"
      "Field:Дата|Date|8\r\nField:Сумма|Curr|8\r\nField:Да|Bool|1\r\n"
      "Index:А|Primary|Fields:Ид;\r\nIndex:Б|Unique|IgnoreNulls|Fields:Дата/D;Имя;\r\nRows\r\n"
      "1|Sа^2б^1|d-5|12.5|T\r\n2|S||-0.0001|F\r\n3||D20050304102030||T\r\nEndRows\r\nEndTable\r\n";
  tmw::ImpTable importer;
  importer.SetTableName("Т");
  importer.ImportFromString(sound, *db);
  std::string held = tmw::ExportTableToString("Т", false, db.get());
  EXPECT_EQ(held, sound);
  Dice dice(2026);
  int refused = 0;
  constexpr int kRounds = 1500;
  for (int round = 0; round < kRounds; ++round) {
    const std::string text = Damaged(sound, dice);
    try {
      tmw::Transaction transaction;
      importer.ImportFromString(text, *db);
      transaction.Commit();
      held = tmw::ExportTableToString("Т", false, db.get());
    } catch (const tmw::ProgramError& error) {
      ++refused;
      EXPECT_TRUE(error.Description.starts_with("Ошибка в файле таблицы \"Т\" (строка "))
          << error.Description;
      EXPECT_NE(error.Number, 51) << error.Description;
    }
    ASSERT_EQ(tmw::ExportTableToString("Т", false, db.get()), held) << text;
    std::size_t given = 0;
    ASSERT_EQ(ReadAll(tmw::TableTextReader([&] {
                const auto piece = text.substr(given, 1U + static_cast<std::size_t>(round) % 97);
                given += piece.size();
                return piece;
              })),
              ReadAll(tmw::TableTextReader(text)));
    if (round % 50 == 0) {
      importer.ImportFromString(held, *db);
      ASSERT_EQ(tmw::ExportTableToString("Т", false, db.get()), held);
    }
  }
  EXPECT_GT(refused, kRounds / 2);
  EXPECT_LT(refused, kRounds);
}

}  // namespace
