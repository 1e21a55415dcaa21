#pragma once

#include <gtest/gtest.h>

#include <filesystem>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "database/database_build.h"
#include "database/table_export.h"
#include "database/working_db.h"
#include "ports/ports.h"
#include "services/product_settings.h"
#include "services/updater_events.h"
#include "tests/fakes/hand_clock.h"
#include "tests/fakes/memory_settings.h"
#include "tests/fakes/scripted_front_end.h"
#include "tests/support/sandbox.h"
#include "tests/support/scoped_ports.h"

namespace tests {

// A user database and the folders of a release; listens to the building of the databases.
class BuildTest : public testing::Test, protected tmw::SilentEvents {
 protected:
  BuildTest() {
    ports->clock = &clock;
    ports->front_end = &front_end;
    ports->settings = &settings;
    settings.Set(ports::SettingsRoot::kMachine,
                 "SOFTWARE\\Kestrel Soft\\Tamrin\\General\\DataBasePath", sandbox.Path("db"));
    tmw::ForgetProductPaths();
    for (const char* const folder : {"db", "Loaded", "DBUpdates", "DBStruct"})
      std::filesystem::create_directories(ToPath(sandbox.Path(folder)));
    const auto user = ports->database->CreateDatabase(sandbox.Path("db/Tamrin.mdb"));
    Execute(*user,
            {"create table DBVersion (MajorVersion long, MinorVersion short, BuildNumber double)",
             "insert into DBVersion values (1, 0, 0)", "create table T (Ид long, Имя text(50))",
             "insert into T values (1, 'один')"});
    user->Close();
    build.ProductCode = "TMW";
    build.TargetVersion = {1, 2, 0};
    build.LoadedFolder = sandbox.Path("Loaded");
    build.ScriptsFolder = sandbox.Path("DBUpdates");
    build.StructuresFolder = sandbox.Path("DBStruct");
    build.Tables = &tables;
  }
  ~BuildTest() override { tmw::ForgetProductPaths(); }

  static void Execute(ports::Database& database, const std::vector<std::string>& statements) {
    for (const std::string& statement : statements)
      database.Execute(statement, true);
  }

  void Change(const std::string& name, const std::vector<std::string>& statements) const {
    const auto database = Open(name);
    Execute(*database, statements);
    database->Close();
  }

  std::unique_ptr<ports::Database> Open(const std::string& name) const {
    return ports::CurrentPorts().database->OpenDatabase(sandbox.Path(name), true, false);
  }

  std::string Text(const std::string& name, const std::string& table) const {
    return tmw::ExportTableToString(table, false, Open(name).get());
  }

  void OnSetMainAction(const std::string& text) override { main_action = text; }
  void OnSetSubAction(const std::string& text) override {
    sub_action = text;
    if (on_sub_action) on_sub_action(text);
  }
  void OnSetupProgress(std::int32_t max, bool /*show_count*/) override { most = max; }
  void OnSetProgress(std::int32_t value) override {
    EXPECT_LE(value, most);
    if (on_progress) on_progress(value);
  }
  void OnCheckCancelPressed(bool& cancel) override { cancel = questions_left-- == 0; }

  Sandbox sandbox;
  ScopedPorts ports;
  HandClock clock;
  ScriptedFrontEnd front_end;
  MemorySettings settings;
  std::vector<tmw::WuTableNode> tables;
  tmw::DatabaseBuild build;
  std::string main_action;
  std::string sub_action;
  std::int32_t most = 0;  // of the progress
  std::function<void(const std::string&)> on_sub_action;
  std::function<void(std::int32_t)> on_progress;
  int questions_left = -1;  // until the user cancels; below 0: they never do
};

}  // namespace tests
