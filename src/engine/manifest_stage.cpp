#include "database/database_paths.h"
#include "engine/engine_texts.h"
#include "engine/ks_updater.h"
#include "engine/limits.h"
#include "foundation/contract_names.h"
#include "foundation/encodings.h"
#include "foundation/error_handling.h"
#include "foundation/file_utils.h"
#include "foundation/path_guard.h"
#include "foundation/xml_helpers.h"
#include "packages/rar_archive.h"
#include "ports/file_system.h"
#include "ports/ports.h"
#include "services/product_settings.h"

namespace tmw {
namespace {

constexpr const char* kModule = "KsUpdater";

WuPackage ReadPackage(const XmlNode& root, const char* name) {
  const XmlNode& node = XmlSelectSingleNode(root, name);
  WuPackage package;
  package.SrvName = XmlGetStringAttribute(node, "SrvName");
  package.PackSize = XmlGetLongAttribute(node, "PackSize");
  package.PackHash = XmlGetStringAttribute(node, "PackHash");
  RequireFileName(package.SrvName);
  return package;
}

// Judged as it is written, before ".." and the like are taken out. The folder may be the root
// itself, written with a separator at its end.
std::string CheckedFolder(const std::string& expanded) {
  RequireFolderUnderRoot(expanded, GetProductRootPath());
  std::string folder = GetAbsoluteFileName(NativePath(expanded));
  const char separator = ports::CurrentPorts().files->Separator();
  while (folder.size() > 1 && folder.back() == separator)
    folder.pop_back();
  return folder;
}

}  // namespace

bool KsUpdater::DownloadAndParseManifest() try {
  SetMainAction(engine_texts::kGettingFileList);
  const bool result = FetchManifest();
  SetMainAction("");
  return result;
} catch (...) {
  ReRaiseError(kModule, "DownloadAndParseManifest");
}

bool KsUpdater::FetchManifest() {
  const std::string package = JoinPath(temp_dir_, names::kManifestPackage);
  const std::string url = loading_url_ + "/" + std::string(names::kManifestPackage);
  if (!Fetch(url, package, kMaxManifestPackage)) return false;
  const std::string entry = product_code_ + std::string(names::kManifestFile);
  std::string reason;
  if (!UnrarOneFile(package, entry, temp_dir_, "", reason)) {
    DownloadError(reason);
    return false;
  }
  DeleteFile(package);
  SetMainAction(engine_texts::kParsingFileList);
  return ParseManifest(JoinPath(temp_dir_, entry));
}

bool KsUpdater::ParseManifest(const std::string& file) try {
  std::string reason;
  const std::unique_ptr<XmlDocument> document = XmlCreateDocument(reason);
  if (document == nullptr) {
    DownloadError(engine_texts::NoXmlComponent(reason));
    return false;
  }
  if (!XmlLoadDocumentSafe(*document, file, reason)) {
    DownloadError(engine_texts::ManifestNotReadable(reason));
    return false;
  }
  const XmlNode& root = XmlSelectSingleNode(document->Node(), "KSUpdateManifest");
  const std::string product = XmlGetStringAttribute(root, "ProductID");
  const std::string version = XmlGetStringAttribute(root, "Version");
  if (product != product_code_) {
    DownloadError(engine_texts::OtherProduct(product_code_));
    return false;
  }
  if (version != new_version_) {
    DownloadError(engine_texts::OtherVersion(version, new_version_));
    return false;
  }
  version_id_ = XmlGetStringAttribute(root, "VersionID");
  RequireFileName(version_id_);
  version_id_name_ = XmlMakeNodeName(version_id_);
  if (!ParseFiles(root) || !ParseTables(root)) return false;
  RequireOneContentPerName();
  scripts_package_ = ReadPackage(root, "DBUpdates");
  structures_package_ = ReadPackage(root, "DBStruct");
  return true;
} catch (...) {
  ReRaiseError(kModule, "ParseManifest");
}

bool KsUpdater::ParseFiles(const XmlNode& root) {
  for (const XmlNode* const group : XmlGetChildElements(root, "Files")) {
    for (const XmlNode* const folder_node : XmlGetChildElements(*group, "Folder")) {
      const std::string folder =
          CheckedFolder(ParseConsts(XmlGetStringAttribute(*folder_node, "name")));
      for (const XmlNode* const file : XmlGetChildElements(*folder_node, "File")) {
        if (!ParseFileNode(*file, folder)) return false;
      }
    }
  }
  return true;
}

// All loaded files lie in one folder under their installed names, so a name means one content.
void KsUpdater::RequireOneContentPerName() const {
  std::map<std::string, const WuFileNode*> by_name;
  for (const WuFileNode& file : files_) {
    const auto [found, is_new] = by_name.emplace(LowerCase(file.OrigName), &file);
    const WuFileNode& first = *found->second;
    if (!is_new && (first.Hash != file.Hash || first.OrigSize != file.OrigSize)) {
      RaiseProgramError(engine_texts::FileTwice(file.OrigName));
    }
  }
  for (const WuTableNode& table : tables_) {
    const std::string name = table.TableName + std::string(names::kTableEnding);
    if (by_name.contains(LowerCase(name))) RaiseProgramError(engine_texts::FileTwice(name));
  }
}

bool KsUpdater::ParseTables(const XmlNode& root) {
  const XmlNode& database = XmlSelectSingleNode(root, "DataBase");
  for (const XmlNode* const node : XmlGetChildElements(database, "Dict")) {
    if (!ParseTableNode(*node, false)) return false;
  }
  for (const XmlNode* const node : XmlGetChildElements(database, "User")) {
    if (!ParseTableNode(*node, true)) return false;
  }
  return true;
}

bool KsUpdater::ParseFileNode(const XmlNode& node, const std::string& folder) try {
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
  files_.push_back(std::move(file));
  return true;
} catch (...) {
  ReRaiseError(kModule, "ParseFileNode");
}

bool KsUpdater::ParseTableNode(const XmlNode& node, bool is_user) try {
  WuTableNode table;
  table.IsUser = is_user;
  table.TableName = XmlGetStringAttribute(node, "TableName");
  if (!is_user) {
    table.SrvFile = XmlGetStringAttribute(node, "SrvFile");
    table.SrvSize = XmlGetLongAttribute(node, "SrvSize");
    table.Hash = XmlGetStringAttribute(node, "Hash");
  }
  RequireFileName(table.TableName);
  const std::string key = LowerCase(table.TableName);
  if (key == names::kVersionTable || key.starts_with(names::kSystemTablePrefix))
    RaiseProgramError(engine_texts::VersionTableNamed(table.TableName));
  const auto [found, is_new] = table_by_name_.emplace(key, tables_.size());
  if (!is_new) RaiseProgramError(engine_texts::TableTwice(table.TableName));
  tables_.push_back(std::move(table));
  return true;
} catch (...) {
  ReRaiseError(kModule, "ParseTableNode");
}

}  // namespace tmw
