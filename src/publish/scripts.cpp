#include "publish/scripts.h"

#include <algorithm>
#include <map>
#include <memory>
#include <optional>
#include <set>
#include <string_view>

#include "database/engine_failures.h"
#include "database/statement_cutter.h"
#include "database/wu_db_upd_node.h"
#include "foundation/contract_names.h"
#include "foundation/error_handling.h"
#include "foundation/file_names.h"
#include "foundation/file_utils.h"
#include "foundation/program_error.h"
#include "foundation/text.h"
#include "foundation/version.h"
#include "foundation/xml_helpers.h"
#include "publish/fault_texts.h"
#include "publish/located_xml.h"
#include "publish/statement_check.h"

namespace publish {
namespace {

using tmw::XmlNode;

constexpr const char* kFrom = "db_version_from";
constexpr const char* kTo = "db_version_to";
constexpr std::string_view kRootEnding = "_Database_Update";

const std::set<std::string_view> kFieldTypes = {"text", "date", "integer",  "boolean",
                                                "byte", "char", "currency", "double",
                                                "long", "memo", "single"};
const std::set<std::string_view> kActionAttributes = {
    "type",        "SuppressErrors",  "Name",         "Table",   "FieldName", "Type",
    "Size",        "AllowZeroString", "DefaultValue", "NotNull", "Counter",   "UnicodeCompression",
    "Description", "Caption",         "Format"};
const std::set<std::string_view> kMigrations = {
    "NormalizePfrNumbers",  "ConvertNonImnsAccStreams", "NormalizePfrNumbers2",
    "ConvertAuthorityDocs", "ConvertPfrCitizenship",    "ConvertPfrMultiMainRates"};

std::optional<DatabaseVersion> ReadVersion(const std::string& text) {
  DatabaseVersion version{};
  std::int32_t fourth = 0;
  std::int32_t count = 0;
  if (!tmw::ParseVersionString(text, version[0], version[1], version[2], fourth, count) ||
      count != 3)
    return std::nullopt;
  return version;
}

class ScriptReader {
 public:
  // statements: null if they are not to be checked.
  ScriptReader(const LocatedXml& xml, StatementCheck* statements, Faults& faults)
      : xml_(xml), statements_(statements), faults_(faults) {}

  // Returns nothing for a script that is not to be run.
  std::optional<UpdateScript> Read() {
    script_.place = xml_.PlaceOf(xml_.Node());
    const auto& children = xml_.Node().children;
    // The updater takes the second node as the root, so only the declaration may precede it.
    if (children.size() < 2 || children[0]->kind != tmw::XmlNodeKind::kDeclaration ||
        children[1]->kind != tmw::XmlNodeKind::kElement) {
      Blame(texts::kNoScriptHead);
      return std::nullopt;
    }
    const XmlNode& root = *children[1];
    script_.place = xml_.PlaceOf(root);
    if (root.name != std::string(tmw::names::kProductCode) + std::string(kRootEnding)) {
      if (!root.name.ends_with(kRootEnding)) Blame(texts::kWrongScriptRoot, {root.name});
      return std::nullopt;
    }
    script_.from_text = Attribute(root, kFrom);
    const auto from = ReadVersion(script_.from_text);
    const auto to = ReadVersion(Attribute(root, kTo));
    if (!from) Blame(texts::kNoScriptVersion, {kFrom});
    if (!to) Blame(texts::kNoScriptVersion, {kTo});
    ExpectAttributes(root, {kFrom, kTo});
    for (const auto& child : root.children) {
      if (child->kind != tmw::XmlNodeKind::kElement) continue;
      if (child->name == "Action") {
        ReadAction(*child);
      } else {
        script_.place = xml_.PlaceOf(*child);
        Blame(texts::kIgnored, {child->name});
      }
    }
    script_.place = xml_.PlaceOf(root);
    if (!from || !to) return std::nullopt;
    script_.from = *from;
    script_.to = *to;
    if (script_.to <= script_.from) Blame(texts::kStandingStep);
    if (VersionText(script_.from) != script_.from_text)
      Blame(texts::kFromWrittenOtherwise, {VersionText(script_.from), script_.from_text});
    return script_;
  }

 private:
  void Blame(const char* text, const std::vector<std::string>& values = {}) {
    faults_.Add(script_.place, text, values);
  }

  // The updater passes over what it does not know.
  void ExpectAttributes(const XmlNode& node, const std::set<std::string_view>& names) {
    for (const ports::XmlAttribute& attribute : node.attributes) {
      if (!names.contains(attribute.name)) Blame(texts::kIgnored, {attribute.name});
    }
  }

  std::string Attribute(const XmlNode& node, const char* name) {
    std::string value = tmw::XmlGetStringAttributeDef(node, name, "");
    if (value.empty()) Blame(texts::kHasNo, {tmw::XmlGetNodePath(node), name});
    return value;
  }

  // What only its own loading finds, is found by that.
  void ReadAction(const XmlNode& action) {
    script_.place = xml_.PlaceOf(action);
    const std::size_t before = faults_.All().size();
    ExpectAttributes(action, kActionAttributes);
    CheckAction(action);
    if (faults_.All().size() > before) return;
    try {
      tmw::WuDbUpdNode().LoadFromNode(action);
    } catch (const tmw::ProgramError& error) {
      Blame(texts::kRefused, {error.Description});
    }
  }

  void CheckStatements(const XmlNode& action) {
    if (statements_ == nullptr) return;
    std::size_t number = 0;
    for (const std::string& statement : tmw::CutStatements(tmw::XmlGetText(action))) {
      ++number;
      if (const auto reason = statements_->Judge(statement))
        Blame(texts::kMalformedStatement,
              {std::to_string(number), *reason, tmw::OneLine(statement)});
    }
  }

  void CheckAction(const XmlNode& action) {
    const std::string type = Attribute(action, "type");
    if (type == "addfield") {
      Attribute(action, "Table");
      Attribute(action, "FieldName");
      const std::string field_type = Attribute(action, "Type");
      if (!field_type.empty() && !kFieldTypes.contains(field_type))
        Blame(texts::kUnknownFieldType, {field_type});
    } else if (type == "customscript") {
      const std::string name = Attribute(action, "Name");
      if (!name.empty() && !kMigrations.contains(name)) Blame(texts::kUnknownMigration, {name});
    } else if (type == "sql") {
      CheckStatements(action);
    } else if (!type.empty()) {
      Blame(texts::kUnknownAction, {type});
    }
  }

  const LocatedXml& xml_;
  StatementCheck* statements_;
  UpdateScript script_;
  Faults& faults_;
};

}  // namespace

std::vector<UpdateScript> ReadScripts(const std::string& folder, Faults& faults) {
  std::vector<UpdateScript> scripts;
  std::unique_ptr<StatementCheck> statements;
  try {
    statements = std::make_unique<StatementCheck>();
  } catch (const ports::DatabaseError& error) {
    if (tmw::IsResourceFailure(error.Number)) throw tmw::CurrentError();
    faults.Warn(texts::kInScripts, texts::kStatementsNotRead, {error.Description});
  }
  for (const std::string& file :
       tmw::CollectFileNamesInFolder(folder, std::string(tmw::names::kScriptMask))) {
    const auto xml = LocatedXml::Open(tmw::JoinPath(folder, file), file, faults);
    if (!xml) continue;
    if (auto script = ScriptReader(*xml, statements.get(), faults).Read())
      scripts.push_back(std::move(*script));
  }
  return scripts;
}

void CheckChain(const std::vector<UpdateScript>& scripts, const Located& oldest,
                const std::string& release_version, Faults& faults) {
  std::int32_t revision = 0;
  std::int32_t count = 0;
  DatabaseVersion target{};
  if (!tmw::ParseVersionString(release_version, target[0], target[1], target[2], revision, count))
    return;  // reported by ReadDescription or ReadDigest
  std::map<std::string, const UpdateScript*> by_start;
  for (const UpdateScript& script : scripts) {
    const auto [first, is_new] = by_start.emplace(script.from_text, &script);
    if (!is_new)
      faults.Add(script.place, texts::kSameStart, {script.from_text, first->second->place});
    if (script.from >= target)
      faults.Warn(script.place, texts::kNeverRun, {script.from_text, VersionText(target)});
    if (script.from < target && script.to > target) {
      faults.Add(script.place, texts::kBeyond,
                 {VersionText(script.from), VersionText(script.to), VersionText(target)});
    }
  }
  const auto require_step = [&](const DatabaseVersion& version, const std::string& who) {
    if (version >= target || by_start.contains(VersionText(version))) return;
    faults.Add(who, texts::kGap, {VersionText(version), VersionText(target)});
  };
  if (const auto version = ReadVersion(oldest.text)) {
    require_step(*version, oldest.place);
    if (*version > target)
      faults.Add(oldest.place, texts::kFromTooNew, {oldest.text, VersionText(target)});
  }
  for (const UpdateScript& script : scripts)
    require_step(script.to, script.place);
}

std::string VersionText(const DatabaseVersion& version) {
  return std::to_string(version[0]) + "." + std::to_string(version[1]) + "." +
         std::to_string(version[2]);
}

}  // namespace publish
