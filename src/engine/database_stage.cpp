#include "engine/engine_texts.h"
#include "engine/ks_updater.h"
#include "foundation/error_handling.h"
#include "foundation/program_error.h"

// This build updates program files only. Each stage of the database update ends the run before
// anything of the user's database has been touched.
namespace tmw {
namespace {

constexpr const char* kModule = "KsUpdater";

}  // namespace

bool KsUpdater::BuildEtalonDB() try {
  RaiseProgramError(engine_texts::kNoDatabaseUpdate);
} catch (...) {
  ReRaiseError(kModule, "BuildEtalonDB");
}

bool KsUpdater::BuildWorkingDB() try {
  RaiseProgramError(engine_texts::kNoDatabaseUpdate);
} catch (...) {
  ReRaiseError(kModule, "BuildWorkingDB");
}

bool KsUpdater::BackupUserDB() try {
  RaiseProgramError(engine_texts::kNoDatabaseUpdate);
} catch (...) {
  ReRaiseError(kModule, "BackupUserDB");
}

bool KsUpdater::CopyNewUserDB() try {
  RaiseProgramError(engine_texts::kNoDatabaseUpdate);
} catch (...) {
  ReRaiseError(kModule, "CopyNewUserDB");
}

}  // namespace tmw
