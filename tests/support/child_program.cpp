#include <filesystem>
#include <fstream>
#include <memory>
#include <string>
#include <vector>

#include "ports/clock.h"
#include "ports/database.h"
#include "ports/file_lock.h"
#include "ports/host.h"
#include "ports/named_mutex.h"
#include "ports/power.h"
#include "ports/processes.h"
#include "services/processes.h"
#include "tests/support/environment.h"
#include "tests/support/sandbox.h"

// A small program to start. Its arguments are a script, done in order:
//   report FILE ...    writes folder, variable TMW_TEST_VARIABLE and all arguments behind FILE, one
//                      a line, and ends the script
//   hold MUTEX FILE    takes the mutex, then writes FILE ("held" or "exists"); keeps it to the end
//   lock FILE MODE REPORT  locks the file ("shared" or "exclusive"), then writes "locked" or
//                      "refused"; keeps it to the end
//   spoil DATABASE REPORT  opens it, empties its table T in a transaction, writes REPORT with the
//                      number of rows and keeps it all open
//   awake REPORT       keeps the machine awake to the end; writes "awake" or "not"
//   mark FILE TEXT     appends a line
//   sleep MS, exit CODE
//   crash CODE         ends at once, without any clean-up
//   chain MS CODE FILE starts this program as the chain's next member: sleep MS mark FILE exit CODE
//   product MS CODE FILE   the same as a program that is no member
//   wait-for-chain     what an updater does first
namespace {

void Append(const std::string& path, const std::string& text) {
  std::ofstream(tests::ToPath(path), std::ios::binary | std::ios::app) << text << "\n";
}

void Hold(const std::string& name, const std::string& path) {
  auto created = ports::CurrentPorts().mutexes->Create(name, true);
  static std::unique_ptr<ports::NamedMutex> held;
  if (!created.value.already_existed) held = std::move(created.value.mutex);
  Append(path, !created ? "failed" : created.value.already_existed ? "exists" : "held");
}

void Lock(const std::string& file, const std::string& mode, const std::string& report) {
  auto result = ports::CurrentPorts().file_locks->TryLock(
      file, mode == "shared" ? ports::FileLockMode::kShared : ports::FileLockMode::kExclusive);
  static std::unique_ptr<ports::FileLock> held;
  held = std::move(result.value.lock);
  Append(report, held ? "locked" : "refused");
}

void StayAwake(const std::string& report) {
  static const auto awake = ports::CurrentPorts().power->KeepAwake("Кто", "Почему");
  Append(report, awake ? "awake" : "not");
}

void Spoil(const std::string& path, const std::string& report) {
  ports::DatabaseEngine& engine = *ports::CurrentPorts().database;
  static const auto database = engine.OpenDatabase(path, true, false);
  engine.BeginTrans();
  database->Execute("update T set Имя = Имя & '?'", true);
  Append(report, "spoiled " + std::to_string(database->Execute("delete from T", true)));
}

void Execute(const std::string& path, const std::string& sql) {
  const auto database = ports::CurrentPorts().database->OpenDatabase(path, true, false);
  database->Execute(sql, true);
  database->Close();
}

int Run(const std::vector<std::string>& words) {
  ports::Ports& ports = ports::CurrentPorts();
  for (std::size_t i = 0; i < words.size();) {
    const std::string& verb = words[i++];
    if (verb == "report") {
      const std::string& path = words.at(i++);
      std::string text = tests::FromPath(std::filesystem::current_path()) + "\n" +
                         tests::Variable("TMW_TEST_VARIABLE").value_or("");
      for (; i < words.size(); ++i)
        text += "\n" + words[i];
      Append(path, text);
    } else if (verb == "hold") {
      Hold(words.at(i), words.at(i + 1));
      i += 2;
    } else if (verb == "lock") {
      Lock(words.at(i), words.at(i + 1), words.at(i + 2));
      i += 3;
    } else if (verb == "spoil") {
      Spoil(words.at(i), words.at(i + 1));
      i += 2;
    } else if (verb == "execute") {
      Execute(words.at(i), words.at(i + 1));
      i += 2;
    } else if (verb == "awake") {
      StayAwake(words.at(i++));
    } else if (verb == "mark") {
      Append(words.at(i), words.at(i + 1));
      i += 2;
    } else if (verb == "sleep") {
      ports.clock->Sleep(std::stoi(words.at(i++)));
    } else if (verb == "exit") {
      return std::stoi(words.at(i));
    } else if (verb == "crash") {
      static_cast<void>(ports.processes->Terminate(std::stoi(words.at(i))));
    } else if (verb == "chain" || verb == "product") {
      const std::string own = ports.processes->OwnProgram();
      tmw::RunProcess(own,
                      "\"" + own + "\" sleep " + words.at(i) + " mark \"" + words.at(i + 2) +
                          "\" " + verb + " exit " + words.at(i + 1),
                      "", false, verb == "chain" ? tmw::kContinuesChain : 0);
      i += 3;
    } else {
      return 99;
    }
  }
  return 0;
}

}  // namespace

int main(int argc, char** argv) {
  if (argc > 1 && std::string(argv[1]) == "wait-for-chain") {
    if (const auto exit_code = ports::WaitForUpdaterChain()) return *exit_code;
    --argc;
    ++argv;
  }
  const auto host = ports::MakeHost(argc, argv);
  ports::CurrentPorts() = host->MakePorts();
  return Run(ports::CurrentPorts().processes->OwnArgumentList());
}
