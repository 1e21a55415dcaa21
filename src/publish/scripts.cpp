#include "publish/scripts.h"

#include <algorithm>
#include <map>
#include <memory>
#include <optional>
#include <set>
#include <string_view>

#include "foundation/contract_names.h"
#include "foundation/file_names.h"
#include "foundation/file_utils.h"
#include "foundation/program_error.h"
#include "foundation/version.h"
#include "foundation/xml_helpers.h"
#include "publish/fault_texts.h"

namespace publish {
namespace {

using tmw::XmlNode;

constexpr const char* kFrom = "db_version_from";
constexpr const char* kTo = "db_version_to";
constexpr std::string_view kRootEnding = "_Database_Update";

const std::set<std::string_view> kFieldTypes = {"text", "date", "integer",  "boolean",
                                                "byte", "char", "currency", "double",
                                                "long", "memo", "single"};
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
  ScriptReader(std::string file, Faults& faults) : faults_(faults) {
    script_.file = std::move(file);
  }

  // Returns nothing for a script that is not to be run.
  std::optional<UpdateScript> Read(const XmlNode& document) {
    const auto& children = document.children;
    // The updater takes the second node as the root, so only the declaration may precede it.
    if (children.size() < 2 || children[0]->kind != tmw::XmlNodeKind::kDeclaration ||
        children[1]->kind != tmw::XmlNodeKind::kElement) {
      Blame(texts::kNoScriptHead);
      return std::nullopt;
    }
    const XmlNode& root = *children[1];
    if (root.name != std::string(tmw::names::kProductCode) + std::string(kRootEnding)) {
      if (!root.name.ends_with(kRootEnding)) Blame(texts::kWrongScriptRoot, {root.name});
      return std::nullopt;
    }
    script_.from_text = Attribute(root, kFrom);
    const auto from = ReadVersion(script_.from_text);
    const auto to = ReadVersion(Attribute(root, kTo));
    if (!from) Blame(texts::kNoScriptVersion, {kFrom});
    if (!to) Blame(texts::kNoScriptVersion, {kTo});
    for (const XmlNode* const action : tmw::XmlGetChildElements(root, "Action"))
      CheckAction(*action);
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
    faults_.Add(script_.file, text, values);
  }

  std::string Attribute(const XmlNode& node, const char* name) {
    std::string value = tmw::XmlGetStringAttributeDef(node, name, "");
    if (value.empty()) Blame(texts::kHasNo, {tmw::XmlGetNodePath(node), name});
    return value;
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
    } else if (type != "sql" && !type.empty()) {
      Blame(texts::kUnknownAction, {type});
    }
  }

  UpdateScript script_;
  Faults& faults_;
};

}  // namespace

std::vector<UpdateScript> ReadScripts(const std::string& folder, Faults& faults) {
  std::vector<UpdateScript> scripts;
  for (const std::string& file :
       tmw::CollectFileNamesInFolder(folder, std::string(tmw::names::kScriptMask))) {
    const auto document = OpenXml(tmw::JoinPath(folder, file), file, faults);
    if (document == nullptr) continue;
    if (auto script = ScriptReader(file, faults).Read(document->Node()))
      scripts.push_back(std::move(*script));
  }
  return scripts;
}

void CheckChain(const std::vector<UpdateScript>& scripts, const std::string& oldest,
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
      faults.Add(script.file, texts::kSameStart, {script.from_text, first->second->file});
  }
  const auto require_step = [&](const DatabaseVersion& version, const std::string& who) {
    if (version >= target || by_start.contains(VersionText(version))) return;
    faults.Add(who, texts::kGap, {VersionText(version), VersionText(target)});
  };
  if (const auto version = ReadVersion(oldest)) require_step(*version, texts::kInScripts);
  for (const UpdateScript& script : scripts)
    require_step(script.to, script.file);
}

std::string VersionText(const DatabaseVersion& version) {
  return std::to_string(version[0]) + "." + std::to_string(version[1]) + "." +
         std::to_string(version[2]);
}

}  // namespace publish
