#include "engine/manifest.h"

#include <cstddef>
#include <map>
#include <memory>
#include <set>
#include <utility>

#include "database/database_paths.h"
#include "engine/engine_texts.h"
#include "foundation/contract_names.h"
#include "foundation/encodings.h"
#include "foundation/error_handling.h"
#include "foundation/file_utils.h"
#include "foundation/path_guard.h"
#include "foundation/protected_names.h"
#include "foundation/xml_helpers.h"
#include "ports/file_system.h"
#include "ports/ports.h"
#include "services/product_settings.h"
#include "services/run_module.h"

namespace tmw {
namespace {

using TableKeys = std::set<std::string>;  // lower-cased names

// The folder is checked as it is written, before ".." and the like are taken out. It may be the
// root itself, written with a separator at its end.
std::string CheckedFolder(const std::string& written) {
  const std::string root = GetProductRootPath();
  const std::string expanded = ParseConsts(written, {{"p", root}});
  RequireFolderUnderRoot(expanded, root);
  if (IsUpdatersFolder(written)) RaiseProgramError(engine_texts::UpdatersFolderNamed(written));
  std::string folder = GetAbsoluteFileName(NativePath(expanded));
  const char separator = ports::CurrentPorts().files->Separator();
  while (folder.size() > 1 && folder.back() == separator)
    folder.pop_back();
  return folder;
}

WuFileNode ParseFileNode(const XmlNode& node, const std::string& folder) try {
  WuFileNode file;
  file.OrigName = XmlGetStringAttribute(node, "OrigName");
  file.Folder = folder;
  file.SrvName = XmlGetStringAttribute(node, "SrvName");
  file.OrigSize = XmlGetLongAttribute(node, "OrigSize");
  file.SrvSize = XmlGetLongAttribute(node, "SrvSize");
  file.PackType = XmlGetLongAttribute(node, "PackType");
  file.Hash = XmlGetStringAttribute(node, "Hash");
  file.IsCom = XmlGetBooleanAttributeDef(node, "IsCom", false);
  RequireFileName(file.OrigName);
  RequireRelativeName(file.SrvName);
  if (IsUserDatabaseFile(folder, file.OrigName))
    RaiseProgramError(engine_texts::UserFileNamed(file.OrigName));
  if (IsUpdatersNote(file.OrigName))
    RaiseProgramError(engine_texts::UpdatersNoteNamed(file.OrigName));
  return file;
} catch (...) {
  ReRaiseError(kRunModule, "ParseFileNode");
}

WuTableNode ParseTableNode(const XmlNode& node, bool is_user, TableKeys& keys) try {
  WuTableNode table;
  table.IsUser = is_user;
  table.TableName = XmlGetStringAttribute(node, "TableName");
  if (!is_user) {
    table.SrvFile = XmlGetStringAttribute(node, "SrvFile");
    table.SrvSize = XmlGetLongAttribute(node, "SrvSize");
    table.Hash = XmlGetStringAttribute(node, "Hash");
  }
  RequireFileName(table.TableName);
  if (IsReservedTable(table.TableName))
    RaiseProgramError(engine_texts::VersionTableNamed(table.TableName));
  if (!keys.insert(LowerCase(table.TableName)).second)
    RaiseProgramError(engine_texts::TableTwice(table.TableName));
  return table;
} catch (...) {
  ReRaiseError(kRunModule, "ParseTableNode");
}

void ParseFiles(const XmlNode& root, Manifest& manifest) {
  for (const XmlNode* const group : XmlGetChildElements(root, "Files")) {
    for (const XmlNode* const folder_node : XmlGetChildElements(*group, "Folder")) {
      const std::string folder = CheckedFolder(XmlGetStringAttribute(*folder_node, "name"));
      for (const XmlNode* const file : XmlGetChildElements(*folder_node, "File"))
        manifest.Files.push_back(ParseFileNode(*file, folder));
    }
  }
}

void ParseTables(const XmlNode& root, Manifest& manifest) {
  const XmlNode& database = XmlSelectSingleNode(root, "DataBase");
  TableKeys keys;
  for (const bool is_user : {false, true}) {
    for (const XmlNode* const node : XmlGetChildElements(database, is_user ? "User" : "Dict"))
      manifest.Tables.push_back(ParseTableNode(*node, is_user, keys));
  }
}

// All loaded files lie in one folder under their installed names, so a name means one content.
void RequireOneContentPerName(const Manifest& manifest) {
  std::map<std::string, const WuFileNode*> by_name;
  for (const WuFileNode& file : manifest.Files) {
    const auto [found, is_new] = by_name.emplace(LowerCase(file.OrigName), &file);
    const WuFileNode& first = *found->second;
    if (!is_new && (first.Hash != file.Hash || first.OrigSize != file.OrigSize)) {
      RaiseProgramError(engine_texts::FileTwice(file.OrigName));
    }
  }
  for (const WuTableNode& table : manifest.Tables) {
    const std::string name = table.TableName + std::string(names::kTableEnding);
    if (by_name.contains(LowerCase(name))) RaiseProgramError(engine_texts::FileTwice(name));
  }
}

WuPackage ParsePackage(const XmlNode& root, const char* name) {
  const XmlNode& node = XmlSelectSingleNode(root, name);
  WuPackage package;
  package.SrvName = XmlGetStringAttribute(node, "SrvName");
  package.PackSize = XmlGetLongAttribute(node, "PackSize");
  package.PackHash = XmlGetStringAttribute(node, "PackHash");
  RequireFileName(package.SrvName);
  return package;
}

}  // namespace

std::string ParseConsts(const std::string& text,
                        const std::map<std::string, std::string>& constants) try {
  std::string result = text;
  std::size_t position = 0;
  while (position < result.size()) {
    const std::size_t open = result.find('{', position);
    if (open == std::string::npos) break;
    if (result.compare(open, 2, "{{") == 0) {
      const std::size_t close = result.find("}}", open + 2);
      if (close == std::string::npos) break;
      result.replace(open, close + 2 - open, "{" + result.substr(open + 2, close - open - 2) + "}");
      position = close;
      continue;
    }
    const std::size_t close = result.find('}', open + 1);
    if (close == std::string::npos) break;
    const std::string name = result.substr(open + 1, close - open - 1);
    const auto found = constants.find(name);
    if (found == constants.end()) RaiseProgramError(engine_texts::UnknownConstant(name));
    result.replace(open, close + 1 - open, found->second);
    position = open + found->second.size();
  }
  return result;
} catch (...) {
  ReRaiseError(kRunModule, "ParseConsts");
}

bool TryParseManifest(const std::string& file, const std::string& product_code,
                      const std::string& version, Manifest& manifest, std::string& reason,
                      const std::function<bool()>& may_go_on) try {
  const auto refuse = [&](std::string why) {
    reason = std::move(why);
    return false;
  };
  const std::unique_ptr<XmlDocument> document = XmlCreateDocument(reason);
  if (document == nullptr) return refuse(engine_texts::NoXmlComponent(reason));
  if (!XmlLoadDocumentSafe(*document, file, reason, may_go_on))
    return refuse(engine_texts::ManifestNotReadable(reason));
  const XmlNode& root = XmlSelectSingleNode(document->Node(), "KSUpdateManifest");
  const std::string found_product = XmlGetStringAttribute(root, "ProductID");
  const std::string found_version = XmlGetStringAttribute(root, "Version");
  if (found_product != product_code) return refuse(engine_texts::OtherProduct(product_code));
  if (found_version != version) return refuse(engine_texts::OtherVersion(found_version, version));
  manifest = {};
  manifest.VersionID = XmlGetStringAttribute(root, "VersionID");
  RequireFileName(manifest.VersionID);
  manifest.VersionIDNodeName = XmlMakeNodeName(manifest.VersionID);
  ParseFiles(root, manifest);
  ParseTables(root, manifest);
  RequireOneContentPerName(manifest);
  manifest.ScriptsPackage = ParsePackage(root, "DBUpdates");
  manifest.StructuresPackage = ParsePackage(root, "DBStruct");
  return true;
} catch (...) {
  ReRaiseError(kRunModule, "ParseManifest");
}

}  // namespace tmw
