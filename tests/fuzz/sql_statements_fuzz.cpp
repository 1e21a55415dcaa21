#include <sqlite3.h>

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <memory>
#include <string>
#include <string_view>

#include "jet/engine.h"
#include "ports/database.h"
#include "ports/host.h"

// Feeds the embedded database engine: the lines of an input are statements, run one after the other
// inside a transaction that is rolled back at the end. Every one either runs or fails with a
// number that is not the engine's own fault.
namespace {

// A statement may ask for more work than anybody waits for: it is interrupted.
constexpr int kStepsPerCall = 10000;
constexpr int kMostCalls = 200;
constexpr std::size_t kMostStatements = 16;
constexpr std::size_t kMostRows = 1000;
constexpr std::int32_t kInternalError = 3000;

int calls_left = 0;

extern "C" int LimitWork(sqlite3* connection, const char** /*message*/,
                         const sqlite3_api_routines* /*api*/) {
  sqlite3_progress_handler(
      connection, kStepsPerCall, [](void*) { return --calls_left > 0 ? 0 : 1; }, nullptr);
  // Nothing of this database need outlive the process.
  return sqlite3_exec(connection, "PRAGMA synchronous = OFF; PRAGMA journal_mode = MEMORY", nullptr,
                      nullptr, nullptr);
}

const char* const kTables[] = {
    "create table Группы (Ид long constraint Ключ primary key, Имя text(9) unique)",
    "create table Товары (Ид counter primary key, Группа long, Имя text(20), Кол long, "
    "Цена currency, Вес double, Дата datetime, Есть yesno, Заметка memo, Код guid)",
    "alter table Товары add constraint Связь foreign key (Группа) references Группы"
    " on update cascade on delete set null",
    "create index ПоИмени on Товары (Имя desc, Кол) with ignore null",
    "insert into Группы values (1, 'хвойные')",
    "insert into Группы values (2, 'листва')",
    "insert into Товары (Группа, Имя, Кол, Цена, Вес, Дата, Есть) "
    "values (1, 'Ёлка', 5, 10.5, 0.1, #2/1/2003#, yes)",
    "insert into Товары (Группа, Имя, Кол, Цена, Заметка) values (1, 'пихта', -7, 9e11, '')",
    "insert into Товары (Имя) values (null)"};

class Bench {
 public:
  Bench() : host_(ports::MakeHost(0, nullptr)) {
    ports::CurrentPorts() = host_->MakePorts();
    sqlite3_auto_extension(reinterpret_cast<void (*)()>(LimitWork));
    std::string folder = (std::filesystem::temp_directory_path() / "sql-fuzz-XXXXXX").string();
    if (mkdtemp(folder.data()) == nullptr) std::abort();
    folder_ = folder;
    calls_left = kMostCalls;
    database_ = engine_->CreateDatabase(folder + "/база.mdb");
    for (const char* const statement : kTables)
      database_->Execute(statement, true);
  }

  ~Bench() {
    database_.reset();
    std::filesystem::remove_all(folder_);
  }

  void RunAll(std::string_view statements) {
    engine_->BeginTrans();
    for (std::size_t count = 0; count < kMostStatements && !statements.empty(); ++count) {
      const std::size_t end = std::min(statements.find('\n'), statements.size());
      Run(std::string(statements.substr(0, end)));
      statements.remove_prefix(std::min(end + 1, statements.size()));
    }
    engine_->Rollback();
  }

 private:
  void Run(const std::string& statement) {
    calls_left = kMostCalls;
    try {
      database_->Execute(statement, true);
      return;
    } catch (const ports::DatabaseError& error) {
      Judge(error);
      if (error.Number == kInternalError) std::abort();
    }
    try {
      const auto rows = database_->OpenRecordset(statement, ports::RecordsetType::kDynaset);
      const std::size_t fields = rows->FieldNames().size();
      for (std::size_t row = 0; row < kMostRows && !rows->AtEnd(); ++row, rows->MoveNext()) {
        for (std::size_t i = 0; i < fields; ++i)
          rows->Value(i);
      }
    } catch (const ports::DatabaseError& error) {
      Judge(error);
    }
  }

  static void Judge(const ports::DatabaseError& error) {
    if (error.Number == kInternalError || error.Number == 0 || error.Description.empty())
      std::abort();
  }

  std::unique_ptr<ports::Host> host_;
  std::unique_ptr<ports::DatabaseEngine> engine_ = jet::MakeEngine();
  std::filesystem::path folder_;
  std::unique_ptr<ports::Database> database_;
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static Bench bench;
  bench.RunAll({reinterpret_cast<const char*>(data), size});
  return 0;
}
