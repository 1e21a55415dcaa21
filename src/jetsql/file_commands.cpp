#include "jetsql/file_commands.h"

#include <cstdint>
#include <cstdio>
#include <iostream>
#include <set>
#include <string>
#include <vector>

#include "foundation/date_parts.h"
#include "foundation/text.h"
#include "jet/file/checker.h"
#include "jet/file/database_reader.h"
#include "jet/file/format.h"
#include "jet/file/system_tables.h"
#include "jetsql/database_access.h"
#include "jetsql/jetsql_texts.h"
#include "tools/json.h"
#include "tools/program.h"

namespace jetsql {
namespace {

namespace file = jet::file;

constexpr int kFoundFaults = 1;

std::string MomentText(double days) {
  if (!tmw::IsDateInRange(days)) return Say(texts::kNoDate);
  const tmw::DateParts parts = tmw::PartsOfDate(days);
  char text[32];
  std::snprintf(text, sizeof(text), "%04d-%02d-%02d %02d:%02d:%02d", parts.year, parts.month,
                parts.day, parts.hour, parts.minute, parts.second);
  return text;
}

constexpr std::uint32_t kLocaleMask = 0xFFFF;
constexpr std::uint32_t kVersionShift = 24;

void PrintHeader(const file::Header& header, const file::CheckReport& report) {
  std::cout << Say(texts::kVersion, {std::to_string(header.BuildNumber())})
            << Say(texts::kCreated, {MomentText(header.CreationDate())})
            << Say(texts::kCodePage, {std::to_string(header.CodePage())})
            << Say(texts::kSortOrder, {std::to_string(header.SortOrder() & kLocaleMask),
                                       std::to_string(header.SortOrder() >> kVersionShift)})
            << Say(texts::kPages,
                   {std::to_string(report.page_count), std::to_string(file::kPageSize),
                    std::to_string(report.free_page_count)});
}

void PrintTables(const file::CheckReport& report) {
  std::cout << Say(texts::kTablesTitle);
  for (const file::CheckedTable& table : report.tables) {
    if (table.is_system) continue;
    std::cout << Say(texts::kTableLine, {table.name, std::to_string(table.row_count),
                                         std::to_string(table.page_count * file::kPageSize)});
  }
}

struct ColumnNames {
  std::vector<std::string> own;
  std::vector<std::string> referenced;
};

ColumnNames NamesOf(const file::Relation& relation) {
  ColumnNames names;
  for (const file::RelationColumn& column : relation.columns) {
    names.own.push_back(column.column);
    names.referenced.push_back(column.referenced_column);
  }
  return names;
}

void PrintRelations(file::DatabaseReader& reader) {
  std::cout << Say(texts::kRelationsTitle);
  for (const file::Relation& relation : reader.Relations()) {
    const ColumnNames names = NamesOf(relation);
    std::cout << Say(texts::kRelationLine,
                     {relation.name, relation.table, tmw::Joined(names.own, ", "),
                      relation.referenced_table, tmw::Joined(names.referenced, ", ")});
  }
}

std::vector<std::string> QueriesOf(const file::DatabaseReader& reader) {
  std::vector<std::string> names;
  for (const file::CatalogueObject& object : reader.Objects()) {
    if (object.type == file::object_type::kQuery) names.push_back(object.name);
  }
  return names;
}

void PrintObjects(const file::DatabaseReader& reader) {
  std::cout << Say(texts::kQueriesTitle);
  for (const std::string& query : QueriesOf(reader))
    std::cout << Say(texts::kObjectLine, {query});
  std::cout << Say(texts::kForeignTitle);
  for (const file::ForeignObject& object : reader.ForeignObjects())
    std::cout << Say(texts::kForeignLine, {object.kind, object.name});
}

tools::Json InfoJson(file::DatabaseReader& reader, const file::CheckReport& report) {
  const file::Header& header = reader.FileHeader();
  tools::Json json = {{"format", "Jet 4"},
                      {"build", header.BuildNumber()},
                      {"created", MomentText(header.CreationDate())},
                      {"code_page", header.CodePage()},
                      {"sort_order", header.SortOrder() & kLocaleMask},
                      {"sort_version", header.SortOrder() >> kVersionShift},
                      {"pages", report.page_count},
                      {"free_pages", report.free_page_count},
                      {"faults", report.findings.FaultCount()}};
  for (const char* const list : {"tables", "relations", "queries", "other_objects"})
    json[list] = tools::Json::array();
  for (const file::CheckedTable& table : report.tables) {
    if (!table.is_system)
      json["tables"].push_back({{"name", table.name},
                                {"rows", table.row_count},
                                {"bytes", table.page_count * file::kPageSize}});
  }
  for (const file::Relation& relation : reader.Relations()) {
    ColumnNames names = NamesOf(relation);
    json["relations"].push_back({{"name", relation.name},
                                 {"table", relation.table},
                                 {"fields", std::move(names.own)},
                                 {"referenced_table", relation.referenced_table},
                                 {"referenced_fields", std::move(names.referenced)}});
  }
  json["queries"] = QueriesOf(reader);
  for (const file::ForeignObject& object : reader.ForeignObjects())
    json["other_objects"].push_back({{"kind", object.kind}, {"name", object.name}});
  return json;
}

void PrintFindings(const file::CheckReport& report) {
  std::set<std::string> kinds;
  for (const file::Finding& finding : report.findings.Kept()) {
    const bool is_fault = finding.severity == file::Severity::kFault;
    std::cout << Say(is_fault ? texts::kFaultLine : texts::kNoteLine) << finding.Text() << '\n';
    kinds.insert(finding.kind);
  }
  for (const std::string& kind : kinds) {
    const std::uint64_t count = report.findings.CountOf(kind);
    if (count > file::FindingList::kKept)
      std::cout << Say(texts::kMoreOfAKind,
                       {kind, std::to_string(count - file::FindingList::kKept)});
  }
  std::cout << Say(texts::kCheckSummary, {std::to_string(report.findings.FaultCount()),
                                          std::to_string(report.findings.NoteCount()),
                                          std::to_string(report.page_count)});
}

tools::Json CheckJson(const file::CheckReport& report) {
  tools::Json findings = tools::Json::array();
  for (const file::Finding& finding : report.findings.Kept()) {
    findings.push_back({{"severity", finding.severity == file::Severity::kFault ? "fault" : "note"},
                        {"text", finding.Text()},
                        {"page", finding.page}});
  }
  return {{"faults", report.findings.FaultCount()},
          {"notes", report.findings.NoteCount()},
          {"pages", report.page_count},
          {"findings", std::move(findings)}};
}

}  // namespace

int Info(const tools::Arguments& arguments) {
  const std::string& path = arguments.Words()[0];
  const SharedFile shared = OpenShared(path);
  file::DatabaseReader reader(shared.pages, path, false);
  const file::CheckReport report = file::CheckDatabase(shared.pages, path);
  if (arguments.Has(tools::kJsonOption)) {
    std::cout << tools::JsonLine(InfoJson(reader, report));
    return tools::kDone;
  }
  PrintHeader(reader.FileHeader(), report);
  PrintTables(report);
  PrintRelations(reader);
  PrintObjects(reader);
  if (!report.IsClean())
    std::cout << Say(texts::kDamaged, {std::to_string(report.findings.FaultCount())});
  return tools::kDone;
}

int Check(const tools::Arguments& arguments) {
  const std::string& path = arguments.Words()[0];
  const SharedFile shared = OpenShared(path);
  const file::CheckReport report = file::CheckDatabase(shared.pages, path);
  if (arguments.Has(tools::kJsonOption)) {
    std::cout << tools::JsonLine(CheckJson(report));
  } else {
    PrintFindings(report);
  }
  return report.IsClean() ? tools::kDone : kFoundFaults;
}

}  // namespace jetsql
