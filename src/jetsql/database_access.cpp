#include "jetsql/database_access.h"

#include <utility>

#include "foundation/api_errors.h"
#include "foundation/program_error.h"
#include "foundation/text.h"
#include "jet/engine.h"
#include "jetsql/jetsql_texts.h"
#include "ports/page_file.h"
#include "ports/ports.h"

namespace jetsql {

ports::DatabaseEngine& Engine() {
  return *ports::CurrentPorts().database;
}

const tools::Option& EngineOption() {
  static const tools::Option kOption = {"--engine", "embedded", texts::kEngineHelp};
  return kOption;
}

void SelectEngine(const tools::Arguments& arguments) {
  const auto name = arguments.Value("--engine");
  if (!name) return;
  if (*name != "embedded") throw tools::UsageError(Say(texts::kUnknownEngine, {*name}));
  static const std::unique_ptr<ports::DatabaseEngine> kEngine = jet::MakeEngine();
  ports::CurrentPorts().database = kEngine.get();
}

std::unique_ptr<ports::Database> OpenToRead(const std::string& path) {
  return Engine().OpenDatabase(path, false, true);
}

std::unique_ptr<ports::Database> OpenToChange(const std::string& path) {
  return Engine().OpenDatabase(path, true, false);
}

SharedFile OpenShared(const std::string& path) {
  SharedFile shared;
  auto locked = ports::CurrentPorts().file_locks->TryLock(path, ports::FileLockMode::kShared);
  if (locked && locked.value.verdict == ports::FileLockVerdict::kHeldExclusively)
    tmw::RaiseProgramError(Say(texts::kHeldByAnother, {tmw::Quoted(path)}));
  if (locked) shared.lock = std::move(locked.value.lock);
  auto opened = ports::CurrentPorts().page_files->Open(path, ports::PageFileMode::kRead);
  if (!opened)
    tmw::RaiseApiErrorWithMessage(Say(texts::kCannotRead, {tmw::Quoted(path)}), opened.code);
  shared.pages = std::move(opened.value);
  return shared;
}

}  // namespace jetsql
