#include "support/report.h"

#include <algorithm>
#include <memory>
#include <optional>
#include <set>
#include <string_view>
#include <vector>

#include "database/access_helpers.h"
#include "database/db_version.h"
#include "database/table_lookup.h"
#include "foundation/contract_names.h"
#include "foundation/error_handling.h"
#include "foundation/file_utils.h"
#include "foundation/text.h"
#include "foundation/version.h"
#include "foundation/xml_helpers.h"
#include "packages/hash_api.h"
#include "ports/database.h"
#include "ports/file_probe.h"
#include "ports/ports.h"
#include "ports/product_version.h"
#include "ports/settings_store.h"
#include "product/kept_list.h"
#include "product/rollback_mark.h"
#include "services/product_settings.h"
#include "services/run_log.h"
#include "support/support_texts.h"

namespace support {
namespace {

namespace names = tmw::names;

std::string Line(const std::string& text) {
  return text + std::string(tmw::kCrLf);
}

template <typename Make>
std::string Section(const char* title, Make make) {
  std::string lines;
  try {
    lines = make();
  } catch (...) {
    lines = Line(texts::SectionFailed(tmw::CurrentError().Description));
  }
  return Line(std::string("== ") + title) + lines + Line("");
}

std::string ProgramLines() {
  const auto product = ports::CurrentPorts().product_version->InstalledVersion();
  return Line(texts::kBuild + tmw::GetAppVersionString()) +
         Line(texts::kProductVersion + product.value_or(texts::kUnknown)) +
         Line(tmw::GetOSVersionString());
}

// A value of either type, whatever it should be, without its password.
std::string ValueWords(ports::SettingsRoot root, const std::string& key, const std::string& name) {
  ports::SettingsStore& store = *ports::CurrentPorts().settings;
  if (const auto text = store.ReadString(root, key, name).value)
    return tmw::Quoted(tmw::WithoutPasswords(*text));
  if (const auto number = store.ReadLong(root, key, name).value) return std::to_string(*number);
  return texts::kNotSet;
}

std::string SettingsLines() {
  using enum ports::SettingsRoot;
  const struct {
    ports::SettingsRoot root;
    std::string_view key;
    std::string_view section;
    std::vector<std::string_view> values;
  } groups[] = {{kMachine,
                 names::kProductKey,
                 names::kGeneralSection,
                 {names::kRootPathSetting, names::kDataBasePathSetting,
                  names::kInstallationTypeSetting, names::kUpdateKeysSetting}},
                {kMachine, names::kDevelopmentKey, "", {names::kNoRegisteringSetting}},
                {kUser,
                 names::kProductKey,
                 names::kAutoUpdateSection,
                 {names::kProxyTypeSetting, names::kProxyServerSetting, names::kIsCustomUrlSetting,
                  names::kCustomUrlSetting, names::kNoFtpSetting}}};
  std::string lines;
  for (const auto& group : groups) {
    lines += Line(ports::CurrentPorts().settings->PlaceOf(group.root));
    const std::string key =
        tmw::ConcatenateRegistryKeys(std::string(group.key), std::string(group.section));
    for (const std::string_view value : group.values) {
      const std::string name(value);
      lines += Line("  " + key + "\\" + name + " = " + ValueWords(group.root, key, name));
    }
  }
  return lines;
}

std::string SpaceLines() {
  std::string lines;
  for (const std::string& folder :
       {tmw::GetProductRootPath(), tmw::GetDataBasePath(), tmw::GetTemporaryFolder()}) {
    const auto space = ports::CurrentPorts().file_probe->SpaceOf(folder);
    lines += Line(folder + ": " + (space ? std::to_string(space.value.free) : texts::kUnknown));
  }
  return lines;
}

// Opened for reading only, and shared: the product may be at work.
std::string DatabaseLines() {
  const std::string path = tmw::database_utils::GetUserDBFileName();
  std::string lines = Line(path);
  lines += Line(texts::kDatabaseLength + std::to_string(tmw::GetFileLength(path)));
  const auto database = ports::CurrentPorts().database->OpenDatabase(path, false, true);
  lines += Line(texts::kDatabaseVersion + tmw::DbVersionText(tmw::GetDataBaseVersion(*database)));
  lines += Line(texts::kRows);
  for (const auto& [table, rows] : tmw::CountAllRows(*database))
    lines += Line("  " + table + ": " + std::to_string(rows));
  return lines;
}

std::string WayBackLines() {
  std::string reason;
  std::string lines;
  if (const auto list = tmw::TryReadKeptList(reason)) {
    lines += Line(texts::Kept(list->OldVersion, list->NewVersion, list->Date, list->Files.size()));
    if (list->Backup) lines += Line(list->Backup->Archive);
  } else {
    lines += Line(reason.empty() ? texts::kNothingKept : reason);
  }
  if (tmw::IsRollbackUnderWay()) lines += Line(texts::kRollbackUnderWay);
  const std::string record = tmw::JoinPath(tmw::GetProductRootPath(), names::kRollbackRecord);
  if (tmw::IsFileExists(record)) lines += texts::kLastRollback + tmw::ReadFileToString(record);
  return lines;
}

std::string FileLine(const std::string& verdict, const std::string& path, const std::string& hash) {
  return Line(verdict + "\t" + path + "\t" + hash);
}

// One file that cannot be read hides none of the others.
std::string ComparedLine(const std::string& path, const std::string& hash) {
  try {
    if (!tmw::IsFileExists(path)) return FileLine(texts::kMissing, path, "");
    const std::string found = tmw::GetFileHash(path);
    return FileLine(found == hash ? texts::kSame : texts::kDiffers, path, found);
  } catch (...) {
    return FileLine(texts::SectionFailed(tmw::CurrentError().Description), path, "");
  }
}

// "{p}" is the product's root; other constants are shown as they stand.
std::string ExpandRoot(std::string folder, const std::string& root) {
  constexpr std::string_view kRoot = "{p}";
  if (folder.starts_with(kRoot)) folder.replace(0, kRoot.size(), root);
  return folder;
}

std::string ComparedLines(const std::string& manifest, const std::string& root) {
  tmw::XmlDocument document;
  std::string reason;
  if (!tmw::XmlLoadDocumentSafe(document, manifest, reason)) return Line(reason);
  const auto& release = tmw::XmlSelectSingleNode(document.Node(), "KSUpdateManifest");
  std::string lines = Line(tmw::XmlGetStringAttributeDef(release, "Version", ""));
  for (const tmw::XmlNode* const files : tmw::XmlGetChildElements(release, "Files")) {
    for (const tmw::XmlNode* const folder : tmw::XmlGetChildElements(*files, "Folder")) {
      const std::string place = ExpandRoot(tmw::XmlGetStringAttribute(*folder, "name"), root);
      for (const tmw::XmlNode* const file : tmw::XmlGetChildElements(*folder, "File")) {
        lines += ComparedLine(tmw::JoinPath(place, tmw::XmlGetStringAttribute(*file, "OrigName")),
                              tmw::XmlGetStringAttribute(*file, "Hash"));
      }
    }
  }
  return lines;
}

// What lies in the program's own folder: the books may lie elsewhere below the root.
std::string ListedLines(const std::string& root) {
  const std::string folder = tmw::JoinPath(root, names::kProgramFolder);
  std::string lines = Line(texts::kNoManifest);
  for (const std::string& name : tmw::CollectFileNamesInFolder(folder, "*.*")) {
    const std::string path = tmw::JoinPath(folder, name);
    lines += FileLine(std::to_string(tmw::GetFileLength(path)), path, tmw::GetFileHash(path));
  }
  return lines;
}

}  // namespace

std::string MakeReport(const std::string& manifest) {
  return Section(texts::kProgram, ProgramLines) + Section(texts::kSettings, SettingsLines) +
         Section(texts::kSpace, SpaceLines) + Section(texts::kDatabase, DatabaseLines) +
         Section(texts::kWayBack, WayBackLines) + Section(texts::kFiles, [&] {
           const std::string root = tmw::GetProductRootPath();
           return tmw::IsFileExists(manifest) ? ComparedLines(manifest, root) : ListedLines(root);
         });
}

}  // namespace support
