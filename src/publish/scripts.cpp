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

namespace publish {
namespace {

using tmw::XmlNode;

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

  // Nothing for a script that is not to be run.
  std::optional<UpdateScript> Read(const XmlNode& document) {
    const auto& children = document.children;
    // The updater takes the second node for the root, so nothing but the declaration precedes it.
    if (children.size() < 2 || children[0]->kind != tmw::XmlNodeKind::kDeclaration ||
        children[1]->kind != tmw::XmlNodeKind::kElement) {
      Blame("It does not begin with an XML declaration and the root element behind it.");
      return std::nullopt;
    }
    const XmlNode& root = *children[1];
    if (root.name != std::string(tmw::names::kProductCode) + std::string(kRootEnding)) {
      if (!root.name.ends_with(kRootEnding))
        Blame("The root element has a wrong name: " + root.name + ".");
      return std::nullopt;
    }
    script_.from_text = Attribute(root, "db_version_from");
    const auto from = ReadVersion(script_.from_text);
    const auto to = ReadVersion(Attribute(root, "db_version_to"));
    if (!from) Blame("db_version_from is not a version of three numbers.");
    if (!to) Blame("db_version_to is not a version of three numbers.");
    for (const XmlNode* const action : tmw::XmlGetChildElements(root, "Action"))
      CheckAction(*action);
    if (!from || !to) return std::nullopt;
    script_.from = *from;
    script_.to = *to;
    if (script_.to <= script_.from) Blame("It ends at no later version than it starts from.");
    if (VersionText(script_.from) != script_.from_text) {
      Blame("The updater looks for the script of version " + VersionText(script_.from) +
            ", and db_version_from is written otherwise: " + script_.from_text + ".");
    }
    return script_;
  }

 private:
  void Blame(const std::string& text) { faults_.Add(script_.file, text); }

  std::string Attribute(const XmlNode& node, const char* name) {
    std::string value = tmw::XmlGetStringAttributeDef(node, name, "");
    if (value.empty()) Blame(tmw::XmlGetNodePath(node) + " has no " + name + ".");
    return value;
  }

  void CheckAction(const XmlNode& action) {
    const std::string type = Attribute(action, "type");
    if (type == "addfield") {
      Attribute(action, "Table");
      Attribute(action, "FieldName");
      const std::string field_type = Attribute(action, "Type");
      if (!field_type.empty() && !kFieldTypes.contains(field_type))
        Blame("Unknown type of a field: " + field_type + ".");
    } else if (type == "customscript") {
      const std::string name = Attribute(action, "Name");
      if (!name.empty() && !kMigrations.contains(name)) Blame("Unknown migration: " + name + ".");
    } else if (type != "sql" && !type.empty()) {
      Blame("Unknown type of an action: " + type + ".");
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
    std::string reason;
    const std::unique_ptr<tmw::XmlDocument> document = tmw::XmlCreateDocument(reason);
    if (document == nullptr) tmw::RaiseProgramError("No XML component: " + reason);
    if (!tmw::XmlLoadDocumentSafe(*document, tmw::JoinPath(folder, file), reason)) {
      faults.Add(file, "Cannot be read:\n" + reason);
      continue;
    }
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
    return;  // somebody else's fault
  std::map<std::string, const UpdateScript*> by_start;
  for (const UpdateScript& script : scripts) {
    const auto [first, is_new] = by_start.emplace(script.from_text, &script);
    if (!is_new)
      faults.Add(script.file,
                 "Starts from " + script.from_text + ", as " + first->second->file + " does.");
  }
  const auto require_step = [&](const DatabaseVersion& version, const std::string& who) {
    if (version >= target || by_start.contains(VersionText(version))) return;
    faults.Add(who, "No script leads on from version " + VersionText(version) + " to " +
                        VersionText(target) + ".");
  };
  if (const auto version = ReadVersion(oldest)) require_step(*version, "scripts");
  for (const UpdateScript& script : scripts)
    require_step(script.to, script.file);
}

std::string VersionText(const DatabaseVersion& version) {
  return std::to_string(version[0]) + "." + std::to_string(version[1]) + "." +
         std::to_string(version[2]);
}

}  // namespace publish
