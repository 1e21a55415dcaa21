#include "publish/rehearsal.h"

#include <algorithm>
#include <map>
#include <memory>
#include <optional>
#include <utility>

#include "database/database_build.h"
#include "database/database_paths.h"
#include "database/database_texts.h"
#include "database/engine_failures.h"
#include "database/etalon_db.h"
#include "database/table_export.h"
#include "database/table_lookup.h"
#include "database/working_db.h"
#include "foundation/contract_names.h"
#include "foundation/encodings.h"
#include "foundation/error_handling.h"
#include "foundation/file_names.h"
#include "foundation/file_utils.h"
#include "foundation/text.h"
#include "foundation/version.h"
#include "packages/hash_api.h"
#include "packages/rar_archive.h"
#include "ports/clock.h"
#include "ports/file_lock.h"
#include "ports/file_system.h"
#include "ports/ports.h"
#include "publish/file_tree.h"
#include "publish/rehearsal_ports.h"
#include "publish/rehearsal_texts.h"
#include "publish/script_lines.h"
#include "publish/watched_engine.h"
#include "services/updater_events.h"
#include "tools/fill.h"
#include "tools/stop.h"

namespace publish {
namespace {

using tmw::JoinPath;

std::int64_t Now() {
  return ports::CurrentPorts().clock->TickCount();
}

std::unique_ptr<ports::Database> OpenBuilt(const std::string& path) {
  return ports::CurrentPorts().database->OpenDatabase(path, true, true);
}

// Copies a database that others may have open, but none of them exclusively.
bool CopyDatabase(const std::string& file, const std::string& copy, Faults& faults) {
  if (!tmw::IsFileExists(file)) {
    faults.Add(file, texts::kNoSuchDatabase);
    return false;
  }
  const auto locked = ports::CurrentPorts().file_locks->TryLock(file, ports::FileLockMode::kShared);
  if (locked && locked.value.verdict == ports::FileLockVerdict::kHeldExclusively) {
    faults.Add(file, texts::kHeldByAnother);
    return false;
  }
  if (locked && locked.value.verdict == ports::FileLockVerdict::kForbidden) {
    faults.Add(file, texts::kMayNotBeRead);
    return false;
  }
  CopyContent(file, copy);
  return true;
}

// Brings packages of a release into folders that the updater would unpack them into.
class Unpacker {
 public:
  Unpacker(ReleaseSource& source, const std::string& folder, const std::string& scratch)
      : source_(source), folder_(folder), scratch_(scratch) {}

  void Unpack(const std::string& name, std::int64_t length, std::string_view target,
              Faults& faults) const {
    const std::string place = JoinPath(scratch_, target);
    tmw::CreateFolderIfAbsent(place);
    std::string reason;
    const auto fetched = source_.Fetch(folder_ + name, length, reason);
    if (fetched == nullptr) {
      faults.Add(name, texts::kNotFetched, {reason});
    } else if (!tmw::UnrarAllFiles(fetched->Path(), place, "", reason, tmw::MaxUnpacked(length),
                                   tools::GoesOn)) {
      tools::ThrowIfStopped();
      faults.Add(name, reason);
    }
  }

 private:
  ReleaseSource& source_;
  const std::string& folder_;
  const std::string& scratch_;
};

// A table's text does not say which field counts by itself, so the reference database has none.
bool IsCounterOnly(const tmw::StructureDifference& difference) {
  constexpr std::string_view kCounter = "COUNTER";
  return difference.part == tmw::StructurePart::kField && difference.right.starts_with(kCounter) &&
         difference.left == "LONG" + difference.right.substr(kCounter.size());
}

bool IsFault(const tmw::StructureDifference& difference) {
  return difference.part != tmw::StructurePart::kFieldOrder &&
         difference.part != tmw::StructurePart::kRelation && !difference.left.empty();
}

}  // namespace

// One database, from its copy to the comparison.
class Rehearsal::Run final : public tmw::SilentEvents, public EngineListener {
 public:
  Run(const Rehearsal& rehearsal, const std::string& file, tools::Progress& progress,
      Faults& faults)
      : file_(file),
        place_(JoinPath(rehearsal.scratch_, "database")),
        progress_(progress),
        faults_(faults),
        tables_(rehearsal.tables_) {
    build_.ProductCode = std::string(tmw::names::kProductCode);
    build_.TargetVersion = rehearsal.target_;
    build_.LoadedFolder = JoinPath(rehearsal.scratch_, tmw::names::kLoadedFolder);
    build_.ScriptsFolder = JoinPath(rehearsal.scratch_, tmw::names::kScriptsFolder);
    build_.StructuresFolder = JoinPath(rehearsal.scratch_, tmw::names::kStructuresFolder);
    build_.Tables = &tables_;
    tried_.file = file;
  }

  TriedDatabase Execute() {
    tmw::CreateFolderIfAbsent(place_);
    const std::string copy = JoinPath(place_, tmw::names::kUserDatabase);
    tmw::DeleteFile(copy);
    if (!CopyDatabase(file_, copy, faults_)) return std::move(tried_);
    const RehearsalPorts ports(place_, *this);
    ports_ = &ports;
    const std::string reference = tmw::BuiltReferencePath(build_.StructuresFolder);
    const std::string working = tmw::BuiltWorkingPath(build_.ScriptsFolder);
    if (Judge(copy) && Build()) Compare(reference, working);
    for (const std::string& built : {reference, working, copy})
      tmw::DeleteFile(built);
    return std::move(tried_);
  }

 private:
  // Reads the old database: its version, its rows, and which dictionaries are out of date.
  bool Judge(const std::string& copy) {
    std::unique_ptr<ports::Database> database;
    const char* text = texts::kNotOpened;
    try {
      database = OpenBuilt(copy);
      text = texts::kNoVersionOf;
      const tmw::DbVersion version = tmw::GetDataBaseVersion(*database);
      tried_.old_version = tmw::DbVersionText(version);
      if (version > build_.TargetVersion) {
        Blame(texts::kNewerThanRelease,
              {tried_.old_version, tmw::DbVersionText(build_.TargetVersion)});
        return false;
      }
      text = texts::kUpdateFails;
      for (tmw::WuTableNode& table : tables_)
        JudgeTable(table, *database);
      before_ = tmw::CountAllRows(*database);
    } catch (...) {
      tools::ThrowIfStopped();
      Blame(text, {Cleaned(tmw::CurrentError().Description)});
      return false;
    }
    return true;
  }

  void JudgeTable(tmw::WuTableNode& table, ports::Database& database) {
    if (table.IsUser) return;
    table.NeedUpdate = !tmw::TableExists(table.TableName, database) ||
                       tmw::GetStringHash(tmw::ExportTableToString(table.TableName, false,
                                                                   &database)) != table.Hash;
    if (table.NeedUpdate) {
      tried_.replaced.push_back(table.TableName);
    } else {
      ++tried_.kept;
    }
  }

  bool Build() {
    bool is_built = false;
    std::string failure;
    try {
      const std::string name = tmw::SplitFileName(file_).FileName();
      std::int64_t start = Now();
      progress_.Begin(tools::Fill(texts::kTryingReference, {name}), tables_.size());
      is_built = tmw::BuildEtalonDB(build_, *this);
      tried_.reference_milliseconds = Now() - start;
      start = Now();
      // The steps of the working database: copying, opening, reading scripts and compacting beside
      // the dictionaries and scripts themselves.
      constexpr std::size_t kOtherSteps = 5;
      progress_.Begin(tools::Fill(texts::kTryingWorking, {name}),
                      tried_.replaced.size() + ScriptCount() + kOtherSteps);
      is_working_ = true;
      is_built = is_built && tmw::BuildWorkingDB(build_, *this);
      tried_.working_milliseconds = Now() - start;
    } catch (...) {
      is_built = false;
      failure = tmw::CurrentError().Description;
    }
    EndScript();
    tools::ThrowIfStopped();
    if (is_built) return true;
    // What this machine lacks says nothing of the release.
    if (failed_ && tmw::IsResourceFailure(failed_->Number))
      tmw::RaiseProgramError(Cleaned(failed_->Description));
    BlameFailure(failure);
    return false;
  }

  void Blame(const char* text, const std::vector<std::string>& values) {
    faults_.Add(file_, text, values);
    tried_.failure = faults_.All().back().text;
  }

  std::size_t ScriptCount() const {
    return tmw::CollectFileNamesInFolder(build_.ScriptsFolder, std::string(tmw::names::kScriptMask))
        .size();
  }

  void BlameFailure(const std::string& failure) {
    std::vector<std::string> reasons = ports_->Boxes();
    if (!failure.empty()) reasons.push_back(failure);
    const std::string reason = tmw::Joined(reasons, " ");
    const std::string script_fails =
        tried_.scripts.empty() ? ""
                               : tmw::database_texts::ScriptFailed(tried_.scripts.back().to, "");
    if (script_fails.empty() || !reason.starts_with(script_fails)) {
      Blame(texts::kUpdateFails, {Cleaned(reason)});
      return;
    }
    ScriptRun& script = tried_.scripts.back();
    if (!failed_ || script.passed_over.empty() ||
        reason.find(failed_->Description) == std::string::npos) {
      Blame(texts::kScriptFails, {script.file, Cleaned(reason.substr(script_fails.size()))});
      return;
    }
    // The failure that has ended the script is not one of those that it allows.
    const PassedOver last = script.passed_over.back();
    script.passed_over.pop_back();
    const std::string line =
        last.line == 0 ? "" : tools::Fill(texts::kOnLine, {std::to_string(last.line)});
    Blame(texts::kStatementFails, {script.file, line, last.sql, last.error});
  }

  void Compare(const std::string& reference_file, const std::string& working_file) {
    const auto reference = OpenBuilt(reference_file);
    const auto working = OpenBuilt(working_file);
    tried_.new_version = tmw::DbVersionText(tmw::GetDataBaseVersion(*working));
    std::size_t faulty = 0;
    for (tmw::StructureDifference& difference : tmw::CompareStructures(*reference, *working)) {
      if (IsCounterOnly(difference)) continue;
      const bool is_fault = IsFault(difference);
      if (is_fault) ++faulty;
      tried_.deviations.push_back({std::move(difference), is_fault});
    }
    if (faulty != 0) faults_.Add(file_, texts::kUserWouldLack, {std::to_string(faulty)});
    CompareRows(tmw::CountAllRows(*reference), tmw::CountAllRows(*working));
  }

  // Dictionaries are to have the rows of the reference database; of the user's own tables only the
  // user can say what is right, so the old numbers are shown beside the new ones.
  void CompareRows(const tmw::TableRows& reference, const tmw::TableRows& working) {
    std::map<std::string, RowChange> changes;
    for (const auto& [table, rows] : before_)
      changes[tmw::LowerCase(table)] = {table, false, rows, -1};
    for (const auto& [table, rows] : working) {
      RowChange& change = changes[tmw::LowerCase(table)];
      if (change.table.empty()) change.table = table;
      change.after = rows;
    }
    for (const tmw::WuTableNode& table : tables_) {
      const auto found = changes.find(tmw::LowerCase(table.TableName));
      if (table.IsUser || found == changes.end()) continue;
      found->second.is_dictionary = true;
      const auto wanted = std::find_if(reference.begin(), reference.end(), [&](const auto& entry) {
        return tmw::EqualIgnoringCase(entry.first, table.TableName);
      });
      if (wanted == reference.end() || wanted->second == found->second.after) continue;
      faults_.Add(file_, texts::kDictionaryRows,
                  {table.TableName, std::to_string(wanted->second),
                   std::to_string(std::max<std::int64_t>(found->second.after, 0))});
    }
    for (const auto& [key, change] : changes) {
      tried_.rows_before += std::max<std::int64_t>(change.before, 0);
      tried_.rows_after += std::max<std::int64_t>(change.after, 0);
      if (change.before != change.after) tried_.rows.push_back(change);
    }
  }

  // Sentences of the updater, on one line and without the temporary paths.
  std::string Cleaned(std::string text) const {
    const auto replace = [&text](const std::string& piece, const std::string& instead) {
      for (std::size_t at = text.find(piece); at != std::string::npos;
           at = text.find(piece, at + instead.size()))
        text.replace(at, piece.size(), instead);
    };
    replace(JoinPath(place_, tmw::names::kUserDatabase), file_);
    const char separator = ports::CurrentPorts().files->Separator();
    for (const std::string& folder :
         {build_.ScriptsFolder, build_.LoadedFolder, build_.StructuresFolder})
      replace(folder + separator, "");
    std::string line;
    for (const char c : text) {
      const bool is_break = c == '\r' || c == '\n' || c == '\1' || c == '\t';
      if (!is_break) {
        line += c;
      } else if (!line.empty() && !line.ends_with(' ')) {
        line += ' ';
      }
    }
    return tmw::Trim(line);
  }

  void EndScript() {
    if (is_script_open_) tried_.scripts.back().milliseconds = Now() - script_start_;
    is_script_open_ = false;
  }

  // UpdaterEvents.
  void OnSetSubAction(const std::string& /*text*/) override {
    EndScript();
    if (is_working_) progress_.Advance();
  }
  void OnSetProgress(std::int32_t /*value*/) override { progress_.Advance(); }
  void OnCheckCancelPressed(bool& cancel) override { cancel = tools::IsStopped(); }
  void OnRunScript(const std::string& file, const std::string& from,
                   const std::string& to) override {
    ScriptRun script;
    script.file = tmw::SplitFileName(file).FileName();
    script.from = from;
    script.to = to;
    tried_.scripts.push_back(std::move(script));
    lines_.emplace(tmw::ReadFileBytes(file));
    end_ = tmw::ParseDbVersion(to);
    script_start_ = Now();
    is_script_open_ = true;
  }

  // EngineListener.
  void OnWork() override { tools::ThrowIfStopped(); }
  void OnStatement(const WatchedStatement& statement, std::int64_t rows,
                   const ports::DatabaseError* error) override {
    failed_.reset();
    if (error != nullptr) failed_ = *error;
    if (!is_script_open_) return;
    if (end_ && statement.sql == tmw::SetDataBaseVersionSql(*end_)) return;
    ScriptRun& script = tried_.scripts.back();
    ++script.statements;
    script.rows += rows;
    const std::size_t line = lines_->Find(
        statement.field.empty() ? statement.sql : "FieldName=\"" + statement.field + "\"");
    if (error != nullptr)
      script.passed_over.push_back(
          {line, tmw::OneLine(statement.sql), Cleaned(error->Description)});
  }
  void OnRow() override {
    if (is_script_open_) ++tried_.scripts.back().rows;
  }

  const std::string& file_;
  std::string place_;  // the folder of the copy
  tools::Progress& progress_;
  Faults& faults_;
  std::vector<tmw::WuTableNode> tables_;
  tmw::DatabaseBuild build_;
  const RehearsalPorts* ports_ = nullptr;
  TriedDatabase tried_;
  tmw::TableRows before_;
  bool is_working_ = false;  // else the reference database is being built
  bool is_script_open_ = false;
  std::int64_t script_start_ = 0;
  std::optional<ScriptLines> lines_;
  std::optional<tmw::DbVersion> end_;
  std::optional<ports::DatabaseError> failed_;  // the last statement, if it has failed
};

Rehearsal::Rehearsal(ReleaseSource& source, const std::string& folder, const Manifest& manifest,
                     std::string scratch, tools::Progress& progress, Faults& faults)
    : scratch_(std::move(scratch)) {
  std::int32_t revision = 0;
  std::int32_t count = 0;
  if (!tmw::ParseVersionString(manifest.version, target_[0], target_[1], target_[2], revision,
                               count))
    faults.Add(texts::kInManifest, texts::kNoVersion);
  const Unpacker unpacker(source, folder, scratch_);
  progress.Begin(texts::kUnpacking, manifest.tables.size() + 2);
  unpacker.Unpack(manifest.scripts.server_name, manifest.scripts.length, tmw::names::kScriptsFolder,
                  faults);
  progress.Advance();
  unpacker.Unpack(manifest.structures.server_name, manifest.structures.length,
                  tmw::names::kStructuresFolder, faults);
  progress.Advance();
  for (const TableRecord& record : manifest.tables) {
    if (!record.is_user)
      unpacker.Unpack(TablePackage(record.name), record.server_length, tmw::names::kLoadedFolder,
                      faults);
    tmw::WuTableNode table;
    table.TableName = record.name;
    table.IsUser = record.is_user;
    table.Hash = record.hash;
    tables_.push_back(std::move(table));
    progress.Advance();
  }
}

TriedDatabase Rehearsal::Try(const std::string& file, tools::Progress& progress, Faults& faults) {
  return Run(*this, file, progress, faults).Execute();
}

std::vector<TriedDatabase> TryDatabases(const std::vector<std::string>& files,
                                        ReleaseSource& source, const std::string& folder,
                                        const Manifest& manifest, const std::string& scratch,
                                        tools::Progress& progress, Faults& faults) {
  std::vector<TriedDatabase> tried;
  if (files.empty() || !faults.IsEmpty()) return tried;
  Rehearsal rehearsal(source, folder, manifest, JoinPath(scratch, "rehearsal"), progress, faults);
  if (!faults.IsEmpty()) return tried;
  for (const std::string& file : files)
    tried.push_back(rehearsal.Try(file, progress, faults));
  return tried;
}

}  // namespace publish
