#include "publish/rehearsal_report.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <utility>

#include "foundation/encodings.h"
#include "publish/rehearsal_texts.h"
#include "tools/fill.h"

namespace publish {
namespace {

using tools::Fill;
using tools::Json;

constexpr std::size_t kColumns = 4;
using Cells = std::array<std::string, kColumns>;

std::string Seconds(std::int64_t milliseconds) {
  const std::int64_t hundredths = milliseconds / 10;
  const std::string fraction = std::to_string(hundredths % 100);
  return std::to_string(hundredths / 100) + (fraction.size() < 2 ? ".0" : ".") + fraction;
}

std::string PartName(tmw::StructurePart part) {
  return texts::kPartNames[static_cast<std::size_t>(part)];
}

// What of which table: "Документы.Сумма", "index Дата of Документы".
std::string Subject(const tmw::StructureDifference& difference) {
  if (difference.part == tmw::StructurePart::kField)
    return difference.table + "." + difference.name;
  std::string subject = PartName(difference.part);
  if (!difference.name.empty()) subject += " " + difference.name;
  return subject + (difference.part == tmw::StructurePart::kTable ? " " : " of ") +
         difference.table;
}

std::string OrAbsent(const std::string& definition) {
  return definition.empty() ? texts::kAbsent : definition;
}

// Columns as wide as their longest cell, the last one as it is.
std::string TableText(const std::vector<Cells>& rows) {
  std::array<std::size_t, kColumns> widths{};
  for (const Cells& row : rows) {
    for (std::size_t i = 0; i < kColumns; ++i)
      widths[i] = std::max(widths[i], tmw::CountCharacters(row[i]));
  }
  std::string text;
  for (const Cells& row : rows) {
    text += "    ";
    for (std::size_t i = 0; i < kColumns; ++i) {
      text += row[i];
      if (i + 1 < kColumns) text.append(widths[i] - tmw::CountCharacters(row[i]) + 2, ' ');
    }
    text += '\n';
  }
  return text;
}

Cells HeadOf(const char* const (&names)[kColumns]) {
  Cells cells;
  std::copy(std::begin(names), std::end(names), cells.begin());
  return cells;
}

std::string Number(std::int64_t rows) {
  return rows < 0 ? texts::kAbsent : std::to_string(rows);
}

std::string ScriptWords(const ScriptRun& script) {
  std::string words = Fill(texts::kScriptLine,
                           {script.file, script.from, script.to, std::to_string(script.statements),
                            std::to_string(script.rows), Seconds(script.milliseconds)});
  for (const PassedOver& failed : script.passed_over) {
    const std::string line =
        failed.line == 0 ? "" : Fill(texts::kAtLine, {std::to_string(failed.line)});
    words += Fill(texts::kPassedOver, {line, failed.sql, failed.error});
  }
  return words;
}

Json ObjectOf(const ScriptRun& script) {
  Json passed_over = Json::array();
  for (const PassedOver& failed : script.passed_over)
    passed_over.push_back({{"line", failed.line}, {"sql", failed.sql}, {"error", failed.error}});
  return {{"file", script.file},
          {"from", script.from},
          {"to", script.to},
          {"statements", script.statements},
          {"rows", script.rows},
          {"milliseconds", script.milliseconds},
          {"passed_over", std::move(passed_over)}};
}

Json ObjectOf(const Deviation& deviation) {
  return {{"part", PartName(deviation.difference.part)}, {"table", deviation.difference.table},
          {"name", deviation.difference.name},           {"reference", deviation.difference.left},
          {"working", deviation.difference.right},       {"matters", deviation.is_fault}};
}

}  // namespace

Json ObjectOf(const TriedDatabase& tried) {
  Json scripts = Json::array();
  for (const ScriptRun& script : tried.scripts)
    scripts.push_back(ObjectOf(script));
  Json rows = Json::array();
  for (const RowChange& change : tried.rows) {
    rows.push_back({{"table", change.table},
                    {"dictionary", change.is_dictionary},
                    {"before", change.before},
                    {"after", change.after}});
  }
  Json structure = Json::array();
  for (const Deviation& deviation : tried.deviations)
    structure.push_back(ObjectOf(deviation));
  return {{"file", tried.file},
          {"old_version", tried.old_version},
          {"new_version", tried.new_version},
          {"failure", tried.failure},
          {"reference_milliseconds", tried.reference_milliseconds},
          {"working_milliseconds", tried.working_milliseconds},
          {"dictionaries_replaced", tried.replaced},
          {"dictionaries_kept", tried.kept},
          {"scripts", std::move(scripts)},
          {"rows_before", tried.rows_before},
          {"rows_after", tried.rows_after},
          {"rows", std::move(rows)},
          {"structure", std::move(structure)}};
}

std::string WordsOf(const TriedDatabase& tried) {
  if (tried.old_version.empty()) return Fill(texts::kTriedUnread, {tried.file});
  const bool is_done = !tried.new_version.empty();
  std::string words =
      is_done ? Fill(texts::kTriedOk, {tried.file, tried.old_version, tried.new_version})
              : Fill(texts::kTriedBad, {tried.file, tried.old_version, tried.failure});
  for (const ScriptRun& script : tried.scripts)
    words += ScriptWords(script);
  if (!is_done) return words;
  if (tried.scripts.empty()) words += texts::kNoScripts;
  words += Fill(texts::kDictionaries,
                {std::to_string(tried.replaced.size()), std::to_string(tried.kept)});
  words += Fill(texts::kTimes,
                {Seconds(tried.reference_milliseconds), Seconds(tried.working_milliseconds)});
  words += Fill(texts::kRowsTogether,
                {std::to_string(tried.rows_before), std::to_string(tried.rows_after)});
  if (!tried.rows.empty()) {
    std::vector<Cells> rows = {HeadOf(texts::kColumnsOfRows)};
    for (const RowChange& change : tried.rows)
      rows.push_back({"", change.table, Number(change.before), Number(change.after)});
    words += texts::kRowsHead + TableText(rows);
  }
  if (tried.deviations.empty()) return words + texts::kSameStructure;
  std::vector<Cells> rows = {HeadOf(texts::kColumnsOfStructure)};
  for (const Deviation& deviation : tried.deviations) {
    rows.push_back({deviation.is_fault ? texts::kMatters : "", Subject(deviation.difference),
                    OrAbsent(deviation.difference.left), OrAbsent(deviation.difference.right)});
  }
  return words + texts::kStructureHead + TableText(rows);
}

std::string AddTo(Json& answer, const std::vector<TriedDatabase>& tried) {
  if (tried.empty()) return {};
  std::string words;
  Json list = Json::array();
  for (const TriedDatabase& database : tried) {
    list.push_back(ObjectOf(database));
    words += WordsOf(database);
  }
  answer["tried"] = std::move(list);
  return words;
}

}  // namespace publish
