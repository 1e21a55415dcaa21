#include "jet/file/header.h"

#include <gtest/gtest.h>

#include <cmath>
#include <functional>
#include <memory>
#include <string>

#include "jet/errors.h"
#include "jet/file/account_ids.h"
#include "jet/file/database_reader.h"
#include "tests/fakes/memory_page_file.h"

namespace {

namespace file = jet::file;

constexpr double kDate = 42329.94480300926;

std::string Reason(const std::function<void(file::PageBuffer&)>& change) {
  file::PageBuffer page = file::PackHeader(file::MakeHeader({kDate}));
  change(page);
  const auto memory = std::make_shared<tests::MemoryPageFile>(std::string(page.Bytes()));
  try {
    const file::DatabaseReader reader(memory, "a.mdb");
  } catch (const ports::DatabaseError& error) {
    return std::to_string(error.Number) + " " + error.Description;
  }
  return "opened";
}

// Sets a field below the mask.
template <typename T>
void SetMasked(file::PageBuffer& page, file::Field<T> field, T value) {
  file::Header header = file::MakeHeader({kDate});
  header.Set(field, value);
  page = file::PackHeader(header);
}

TEST(JetFileHeader, IsRefusedWithItsReason) {
  namespace header = file::header;
  using Page = file::PageBuffer;
  const std::string unknown = "3343 Неизвестный формат базы данных \"a.mdb\": ";
  const struct {
    std::function<void(Page&)> change;
    std::string words;
  } cases[] = {
      {[](Page& page) { page.Put(0, "SQLite format 3"); },
       unknown + "это файл прежнего вида: выгрузите его таблицы предыдущей версией jetsql (export) "
                 "и загрузите их этой версией (import)."},
      {[](Page& page) { page.Put(0, "PK"); }, unknown + "это не файл базы данных."},
      {[](Page& page) { page.Put(4, "Standard ACE DB"); },
       unknown + "формат более новый, поддерживается только Jet 4."},
      {[](Page& page) { page.Put(4, "Standard Jet XY"); }, unknown + "это не файл базы данных."},
      {[](Page& page) { page.Set(header::kVersion, 0U); },
       unknown + "формат слишком старый (Jet 3), поддерживается только Jet 4."},
      {[](Page& page) { page.Set(header::kVersion, 2U); }, unknown + "неизвестная версия формата."},
      {[](Page& page) { SetMasked(page, header::kPageKey, 7U); }, unknown + "файл закодирован."},
      {[](Page& page) { SetMasked(page, file::Field<std::uint8_t>{header::kPassword + 8}, {1}); },
       "3031 Неверный пароль: база данных защищена паролем."},
      // Another date without the bytes that stand for an empty password.
      {[](Page& page) { SetMasked(page, header::kCreationDate, kDate + 1); },
       "3031 Неверный пароль: база данных защищена паролем."},
      {[](Page& page) { page.Set(file::Field<std::uint16_t>{header::kCommitArea + 6}, {0}); },
       unknown + "файл не был закрыт правильно: в нём осталось незавершённое изменение."},
      {[](Page&) {}, unknown + "ссылка на страницу, которой в файле нет: 2."},
  };
  for (const auto& c : cases)
    EXPECT_EQ(Reason(c.change), c.words);
}

TEST(JetFileHeader, IsBoundToTheAccountIds) {
  const file::AccountIds ids(file::MakeHeader({kDate}));
  // As they stand in a file of that date, which the engine made.
  EXPECT_EQ(ids.Stored(file::Account::kAdmin), "\x64\x8B");
  EXPECT_EQ(ids.Stored(file::Account::kUsers), "\x65\x8B");
  EXPECT_EQ(ids.Stored(file::Account::kEngine), "\x65\x89");
  EXPECT_EQ(ids.Stored(file::Account::kCreator), "\x65\x8E");
  EXPECT_EQ(ids.Combine(ids.Stored(file::Account::kCreator)),
            file::PlainId(file::Account::kCreator));
  for (const file::HeaderFacts& other :
       {file::HeaderFacts{kDate + 1.0 / 86400}, file::HeaderFacts{kDate, 1252, 0x419},
        file::HeaderFacts{kDate, 1252, 0x409, 4518}}) {
    EXPECT_NE(file::AccountIds(file::MakeHeader(other)).Stored(file::Account::kAdmin),
              ids.Stored(file::Account::kAdmin));
  }
}

TEST(JetFileHeader, MissesWhatTheFileDoesNotGive) {
  using tests::MemoryPageFile;
  const std::string page(file::PackHeader(file::MakeHeader({kDate})).Bytes());
  const struct {
    std::function<void(MemoryPageFile&)> change;
    std::int32_t number;
  } cases[] = {
      {[](MemoryPageFile& memory) { memory.bytes.clear(); }, jet::kUnknownFormat},
      {[](MemoryPageFile& memory) { memory.bytes.resize(4095); }, jet::kUnknownFormat},
      {[](MemoryPageFile& memory) { memory.claimed_size = 0x80000000; }, jet::kUnknownFormat},
      // Longer than it is: pages behind the end are damage, not zeros.
      {[](MemoryPageFile& memory) { memory.claimed_size = 40960; }, jet::kUnknownFormat},
      {[](MemoryPageFile& memory) { memory.readable_bytes = 100; }, jet::kDiskError},
  };
  for (const auto& c : cases) {
    auto memory = std::make_shared<MemoryPageFile>(page);
    c.change(*memory);
    try {
      const file::DatabaseReader reader(memory, "a.mdb");
      ADD_FAILURE() << "opened";
    } catch (const ports::DatabaseError& error) {
      EXPECT_EQ(error.Number, c.number) << error.Description;
    }
  }
}

}  // namespace
