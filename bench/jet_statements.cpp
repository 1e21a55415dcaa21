// Statements of the engine's dialect beside the same ones written by hand for plain SQLite: tables
// of 200,000 rows with the same columns and indexes, the same durability and cache. Prints wall
// times (the best of five rounds, taken in turn) and the ratios of these and of processor times,
// which a busy machine disturbs less; then what walking the rows of a recordset takes.
#include <sqlite3.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <filesystem>
#include <fstream>
#include <limits>
#include <string>

#include "jet/engine.h"
#include "ports/host.h"
#include "ports/ports.h"

namespace {

namespace fs = std::filesystem;

constexpr int kRounds = 5;

class Plain {
 public:
  explicit Plain(const std::string& path) {
    sqlite3_open(path.c_str(), &handle_);
    Run("PRAGMA cache_size = -16000; PRAGMA locking_mode = EXCLUSIVE");
  }
  Plain(const Plain&) = delete;
  Plain& operator=(const Plain&) = delete;
  ~Plain() { sqlite3_close(handle_); }

  void Run(const std::string& sql) {
    char* message = nullptr;
    if (sqlite3_exec(handle_, sql.c_str(), nullptr, nullptr, &message) == SQLITE_OK) return;
    std::fprintf(stderr, "%s: %s\n", message, sql.c_str());
    std::exit(1);
  }

 private:
  sqlite3* handle_ = nullptr;
};

struct Cost {
  double wall = std::numeric_limits<double>::max();  // milliseconds
  double processor = std::numeric_limits<double>::max();
};

template <typename Call>
Cost CostOf(Call call) {
  const auto start = std::chrono::steady_clock::now();
  const std::clock_t ticks = std::clock();
  call();
  const std::chrono::duration<double, std::milli> wall = std::chrono::steady_clock::now() - start;
  return {wall.count(), 1000.0 * static_cast<double>(std::clock() - ticks) / CLOCKS_PER_SEC};
}

Cost Least(const Cost& a, const Cost& b) {
  return {std::min(a.wall, b.wall), std::min(a.processor, b.processor)};
}

std::size_t ResidentKilobytes() {
  std::size_t pages = 0;
  std::ifstream("/proc/self/statm") >> pages >> pages;
  return pages * 4;
}

struct Pair {
  const char* name;
  const char* jet;
  const char* plain;
  const char* jet_undo;
  const char* plain_undo;
};

constexpr Pair kPairs[] = {
    {"UPDATE of a number", "update Документы set Вес = Вес * 1.5 + Вид",
     "update d set e = e * 1.5 + g", nullptr, nullptr},
    {"UPDATE of an amount", "update Документы set Сумма = Сумма * 1.01",
     "update d set f = round(f * 1.01, 4)", nullptr, nullptr},
    {"UPDATE of a text", "update Документы set Имя = Номер & '-' & Вид where Вид < 900",
     "update d set c = b || '-' || g where g < 900", nullptr, nullptr},
    {"UPDATE through a join, one to one",
     "update Документы inner join Итоги on Документы.Ид = Итоги.Ид set Вес = Итог + 1",
     "update d set e = s.total + 1 from s where d.a = s.a", nullptr, nullptr},
    {"UPDATE through a join, many to one",
     "update Документы inner join Виды on Документы.Вид = Виды.Ид set Документы.Имя = Виды.Имя, "
     "Вес = Доля",
     "update d set c = k.name, e = k.part from k where d.g = k.a", nullptr, nullptr},
    {"INSERT ... SELECT, whole rows", "insert into Копия select * from Документы",
     "insert into copy select * from d", "delete from Копия", "delete from copy"},
    {"INSERT ... SELECT, computed",
     "insert into Копия (Ид, Номер, Имя, Вес) select Ид + 1, Номер & '', Имя, Вес * 2 from "
     "Документы where Вид >= 0",
     "insert into copy(a, b, c, e) select a + 1, b || '', c, e * 2 from d where g >= 0",
     "delete from Копия", "delete from copy"},
};

constexpr const char* kJetTables[] = {
    "create table Документы (Ид long, Номер text(20), Имя text(60), Дата datetime, Вес double, "
    "Сумма currency, Вид long)",
    "create table Копия (Ид long, Номер text(20), Имя text(60), Дата datetime, Вес double, "
    "Сумма currency, Вид long)",
    "create table Итоги (Ид long, Итог double)",
    "create table Виды (Ид long, Имя text(60), Доля double)",
    "create table Цифры (д long)",
    "insert into Цифры values (0)",
    "insert into Цифры select д + 1 as д from Цифры",
    "insert into Цифры select д + 2 as д from Цифры",
    "insert into Цифры select д + 4 as д from Цифры",
    "insert into Цифры select д + 8 as д from Цифры where д < 2",
    "insert into Документы select ф.д*100000+а.д*10000+б.д*1000+в.д*100+г.д*10+д.д as Ид, "
    "'Док-' & Ид as Номер, 'Общество «Ромашка» №' & (Ид mod 977) as Имя, 38000 + Ид / 24 as Дата, "
    "Ид / 7 as Вес, Ид / 100 as Сумма, Ид mod 1000 as Вид "
    "from Цифры ф, Цифры а, Цифры б, Цифры в, Цифры г, Цифры д where ф.д < 2 "
    "order by ф.д*100000+а.д*10000+б.д*1000+в.д*100+г.д*10+д.д",
    "insert into Итоги select Ид, Вес * 2 as Итог from Документы",
    "insert into Виды select Ид, 'Вид ' & Ид as Имя, Вес as Доля from Документы where Ид < 1000",
    "create unique index Ключ on Документы (Ид)",
    "create unique index Ключ on Копия (Ид)",
    "create unique index Ключ on Итоги (Ид)",
    "create unique index Ключ on Виды (Ид)",
};

constexpr const char* kPlainTables =
    "create table d(a integer, b text, c text, h real, e real, f real, g integer);"
    "create table copy(a integer, b text, c text, h real, e real, f real, g integer);"
    "create table s(a integer, total real); create table k(a integer, name text, part real);"
    "with recursive n(a) as (select 0 union all select a + 1 from n where a < 199999) "
    "insert into d select a, 'Док-' || a, 'Общество «Ромашка» №' || (a % 977), 38000 + a / 24.0, "
    "a / 7.0, a / 100.0, a % 1000 from n;"
    "insert into s select a, e * 2 from d;"
    "insert into k select a, 'Вид ' || a, e from d where a < 1000;"
    "create unique index pd on d(a); create unique index pc on copy(a);"
    "create unique index ps on s(a); create unique index pk on k(a);";

void Compare(ports::Database& db, Plain& plain, const Pair& pair) {
  Cost jet;
  Cost hand;
  std::int64_t touched = 0;
  for (int round = 0; round < kRounds; ++round) {
    jet = Least(jet, CostOf([&] { touched = db.Execute(pair.jet, true); }));
    if (pair.jet_undo != nullptr) db.Execute(pair.jet_undo, true);
    hand = Least(hand, CostOf([&] { plain.Run(pair.plain); }));
    if (pair.plain_undo != nullptr) plain.Run(pair.plain_undo);
  }
  std::printf("%-35s %lld rows: %5.0f ms, plain %5.0f ms, ratio %.2f (at most 2); processor %.2f\n",
              pair.name, static_cast<long long>(touched), jet.wall, hand.wall, jet.wall / hand.wall,
              jet.processor / hand.processor);
}

// What walking all rows of a recordset costs; values are read and dropped.
void Walk(ports::Database& db, const char* name, const char* select) {
  const std::size_t before = ResidentKilobytes();
  std::size_t most = before;
  std::size_t count = 0;
  const Cost cost = CostOf([&] {
    const auto rows = db.OpenRecordset(select, ports::RecordsetType::kDynaset);
    for (; !rows->AtEnd(); rows->MoveNext()) {
      if (++count % 10000 == 0) most = std::max(most, ResidentKilobytes());
      rows->Value(2);
    }
  });
  std::printf("%-36s %zu rows: %6.0f ms, memory +%zu KB\n", name, count, cost.wall, most - before);
}

}  // namespace

int main(int argc, char** argv) {
  const auto host = ports::MakeHost(argc, argv);
  ports::CurrentPorts() = host->MakePorts();
  const fs::path folder = fs::temp_directory_path() / "tmw_jet_statements";
  fs::remove_all(folder);
  fs::create_directories(folder);
  try {
    const auto engine = jet::MakeEngine();
    const auto db = engine->CreateDatabase((folder / "jet.mdb").string());
    for (const char* const statement : kJetTables)
      db->Execute(statement, true);
    Plain plain((folder / "plain.db").string());
    plain.Run(kPlainTables);
    for (const Pair& pair : kPairs)
      Compare(*db, plain, pair);
    Walk(*db, "Walking one table", "select * from Документы order by Имя");
    Walk(*db, "Walking a join",
         "select Документы.*, Итоги.*, Документы.Имя & ' и ещё много слов, одинаковых в каждой "
         "записи' as Слова from Документы inner join Итоги on Документы.Ид = Итоги.Ид");
  } catch (const ports::DatabaseError& error) {
    std::fprintf(stderr, "%s\n", error.what());
    return 1;
  }
  fs::remove_all(folder);
  return 0;
}
