#include "jetsql/file_commands.h"

#include <cstdint>
#include <cstdio>
#include <iostream>
#include <memory>
#include <set>
#include <string>
#include <vector>

#include "foundation/api_errors.h"
#include "foundation/date_parts.h"
#include "foundation/program_error.h"
#include "foundation/text.h"
#include "jet/file/checker.h"
#include "jet/file/database_reader.h"
#include "jet/file/format.h"
#include "jet/file/system_tables.h"
#include "jetsql/jetsql_texts.h"
#include "ports/file_lock.h"
#include "ports/page_file.h"
#include "ports/ports.h"
#include "tools/fill.h"
#include "tools/program.h"

namespace jetsql {
namespace {

using tools::Fill;
namespace file = jet::file;

constexpr int kFoundFaults = 1;

// The file, held against programs that change it.
struct SharedFile {
  std::unique_ptr<ports::FileLock> lock;
  std::shared_ptr<ports::PageFile> pages;
};

SharedFile OpenShared(const std::string& path) {
  SharedFile shared;
  auto locked = ports::CurrentPorts().file_locks->TryLock(path, ports::FileLockMode::kShared);
  if (locked && locked.value.verdict == ports::FileLockVerdict::kHeldExclusively)
    tmw::RaiseProgramError(Fill(texts::kHeldByAnother, {tmw::Quoted(path)}));
  if (locked) shared.lock = std::move(locked.value.lock);
  auto opened = ports::CurrentPorts().page_files->Open(path, ports::PageFileMode::kRead);
  if (!opened)
    tmw::RaiseApiErrorWithMessage(Fill(texts::kCannotRead, {tmw::Quoted(path)}), opened.code);
  shared.pages = std::move(opened.value);
  return shared;
}

std::string MomentText(double days) {
  if (!tmw::IsDateInRange(days)) return texts::kNoDate;
  const tmw::DateParts parts = tmw::PartsOfDate(days);
  char text[32];
  std::snprintf(text, sizeof(text), "%04d-%02d-%02d %02d:%02d:%02d", parts.year, parts.month,
                parts.day, parts.hour, parts.minute, parts.second);
  return text;
}

void PrintHeader(const file::Header& header, const file::CheckReport& report) {
  constexpr std::uint32_t kLocaleMask = 0xFFFF;
  constexpr std::uint32_t kVersionShift = 24;
  std::cout << Fill(texts::kVersion, {std::to_string(header.BuildNumber())})
            << Fill(texts::kCreated, {MomentText(header.CreationDate())})
            << Fill(texts::kCodePage, {std::to_string(header.CodePage())})
            << Fill(texts::kSortOrder, {std::to_string(header.SortOrder() & kLocaleMask),
                                        std::to_string(header.SortOrder() >> kVersionShift)})
            << Fill(texts::kPages,
                    {std::to_string(report.page_count), std::to_string(file::kPageSize),
                     std::to_string(report.free_page_count)});
}

void PrintTables(const file::CheckReport& report) {
  std::cout << texts::kTablesTitle;
  for (const file::CheckedTable& table : report.tables) {
    if (table.is_system) continue;
    std::cout << Fill(texts::kTableLine, {table.name, std::to_string(table.row_count),
                                          std::to_string(table.page_count * file::kPageSize)});
  }
}

void PrintRelations(file::DatabaseReader& reader) {
  std::cout << texts::kRelationsTitle;
  for (const file::Relation& relation : reader.Relations()) {
    std::vector<std::string> fields;
    std::vector<std::string> referenced;
    for (const file::RelationColumn& column : relation.columns) {
      fields.push_back(column.column);
      referenced.push_back(column.referenced_column);
    }
    std::cout << Fill(texts::kRelationLine,
                      {relation.name, relation.table, tmw::Joined(fields, ", "),
                       relation.referenced_table, tmw::Joined(referenced, ", ")});
  }
}

void PrintObjects(const file::DatabaseReader& reader) {
  std::cout << texts::kQueriesTitle;
  for (const file::CatalogueObject& object : reader.Objects()) {
    if (object.type == file::object_type::kQuery)
      std::cout << Fill(texts::kObjectLine, {object.name});
  }
  std::cout << texts::kForeignTitle;
  for (const file::ForeignObject& object : reader.ForeignObjects())
    std::cout << Fill(texts::kForeignLine, {object.kind, object.name});
}

}  // namespace

int Info(const tools::Arguments& arguments) {
  const std::string& path = arguments.Words()[0];
  const SharedFile shared = OpenShared(path);
  file::DatabaseReader reader(shared.pages, path, false);
  const file::CheckReport report = file::CheckDatabase(shared.pages, path);
  PrintHeader(reader.FileHeader(), report);
  PrintTables(report);
  PrintRelations(reader);
  PrintObjects(reader);
  if (!report.IsClean())
    std::cout << Fill(texts::kDamaged, {std::to_string(report.findings.FaultCount())});
  return tools::kDone;
}

int Check(const tools::Arguments& arguments) {
  const std::string& path = arguments.Words()[0];
  const SharedFile shared = OpenShared(path);
  const file::CheckReport report = file::CheckDatabase(shared.pages, path);
  std::set<std::string> kinds;
  for (const file::Finding& finding : report.findings.Kept()) {
    std::cout << (finding.severity == file::Severity::kFault ? texts::kFaultLine : texts::kNoteLine)
              << finding.Text() << '\n';
    kinds.insert(finding.kind);
  }
  for (const std::string& kind : kinds) {
    const std::uint64_t count = report.findings.CountOf(kind);
    if (count > file::FindingList::kKept)
      std::cout << Fill(texts::kMoreOfAKind,
                        {kind, std::to_string(count - file::FindingList::kKept)});
  }
  std::cout << Fill(texts::kCheckSummary, {std::to_string(report.findings.FaultCount()),
                                           std::to_string(report.findings.NoteCount()),
                                           std::to_string(report.page_count)});
  return report.IsClean() ? tools::kDone : kFoundFaults;
}

}  // namespace jetsql
