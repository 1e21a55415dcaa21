#include "publish/product_files.h"

#include <algorithm>
#include <map>
#include <optional>
#include <tuple>

#include "foundation/contract_names.h"
#include "foundation/encodings.h"
#include "foundation/file_names.h"
#include "foundation/file_utils.h"
#include "foundation/path_guard.h"
#include "foundation/text.h"
#include "publish/file_tree.h"
#include "publish/release_names.h"

namespace publish {
namespace {

// A mask with a folder is matched with the whole path, one without with the name alone.
bool Matches(const std::string& path, const std::string& mask) {
  const bool has_folder = mask.find('/') != std::string::npos;
  return tmw::MatchesMask(has_folder ? path : tmw::SplitFileName(path).FileName(), mask);
}

// The folder rule that lies nearest above a file.
const FolderRule* FolderOf(const std::string& path, const std::vector<FolderRule>& rules) {
  const FolderRule* nearest = nullptr;
  for (const FolderRule& rule : rules) {
    const bool is_above =
        rule.source.empty() ||
        tmw::EqualIgnoringCase(path.substr(0, rule.source.size() + 1), rule.source + "/");
    if (is_above && (nearest == nullptr || rule.source.size() > nearest->source.size()))
      nearest = &rule;
  }
  return nearest;
}

// The target with what lies between the rule's folder and the file.
std::string TargetOf(const std::string& path, const FolderRule& rule) {
  std::string below = path.substr(rule.source.empty() ? 0 : rule.source.size() + 1);
  const std::size_t end = below.rfind('/');
  below = end == std::string::npos ? "" : below.substr(0, end);
  if (below.empty()) return rule.target;
  const bool has_separator =
      rule.target.ends_with('}') || rule.target.ends_with('\\') || rule.target.ends_with('/');
  std::replace(below.begin(), below.end(), '/', '\\');
  // Braces that are meant as such.
  if (below.find('{') != std::string::npos) below = "{{" + below + "}}";
  return rule.target + (has_separator ? "" : "\\") + below;
}

void Apply(const FileRule& rule, const Description& description, ProductFile& file,
           bool& is_skipped) {
  is_skipped = rule.is_skipped;
  if (rule.is_com) file.record.is_com = *rule.is_com;
  if (rule.is_executable) file.is_executable = *rule.is_executable;
  if (rule.pack_method) file.record.pack_method = *rule.pack_method;
  if (!rule.package.empty()) file.ready_package = tmw::JoinPath(description.folder, rule.package);
}

// The folder as the updater expands it, on a machine whose product lies in that root.
constexpr const char* kSomeRoot = "C:\\Tamrin";

std::optional<std::string> Expand(const std::string& folder) {
  std::string text = folder;
  std::size_t position = 0;
  while ((position = text.find('{', position)) != std::string::npos) {
    const bool is_escaped = text.compare(position, 2, "{{") == 0;
    const std::size_t end = text.find(is_escaped ? "}}" : "}", position + (is_escaped ? 2 : 1));
    if (end == std::string::npos) break;
    if (is_escaped) {
      text.erase(end, 1).erase(position, 1);
      position = end - 1;
      continue;
    }
    if (text.substr(position, end + 1 - position) != "{p}") return std::nullopt;
    const std::string root = std::string(kSomeRoot) + "\\";
    text.replace(position, 3, root);
    position += root.size();
  }
  return text;
}

void CheckNames(const FileRecord& file, const std::string& place, Faults& faults) {
  const auto refuse = [&](const tmw::GuardVerdict& verdict) {
    if (!verdict.IsAccepted()) faults.Add(place, "The updater refuses it: " + verdict.message);
  };
  refuse(tmw::CheckFileName(file.name));
  refuse(tmw::CheckRelativeName(file.server_name));
  const std::optional<std::string> folder = Expand(file.folder);
  if (!folder) {
    faults.Add(place, "Its folder has an unknown constant: " + file.folder + ".");
  } else {
    refuse(tmw::CheckFolderUnderRoot(*folder, kSomeRoot));
  }
}

bool HasSameContent(const FileRecord& a, const FileRecord& b) {
  return a.length == b.length && a.hash == b.hash;
}

}  // namespace

std::string MakeServerName(const std::string& path) {
  constexpr std::string_view kPlain =
      "abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789-._/";
  constexpr std::size_t kHashDigits = 12;
  constexpr std::size_t kLongest = 100;
  std::string name;
  for (const char c : path) {
    const bool is_plain = kPlain.find(c) != std::string_view::npos;
    if (is_plain || !name.ends_with('_')) name += is_plain ? c : '_';
  }
  if (name.size() > kLongest) name = name.substr(0, kLongest);
  if (name != path) name += "-" + HashOfBytes(path).substr(0, kHashDigits);
  return std::string(kFilesFolder) + "/" + name + std::string(tmw::names::kPackageEnding);
}

std::vector<ProductFile> CollectProductFiles(const std::string& product_folder,
                                             const Description& description, Faults& faults) {
  std::vector<ProductFile> files;
  std::vector<bool> is_rule_used(description.files.size());
  for (std::string& path : ListTree(product_folder)) {
    ProductFile file;
    file.path = std::move(path);
    file.source = tmw::JoinPath(product_folder, file.path);
    bool is_skipped = false;
    for (std::size_t i = 0; i < description.files.size(); ++i) {
      if (!Matches(file.path, description.files[i].mask)) continue;
      is_rule_used[i] = true;
      Apply(description.files[i], description, file, is_skipped);
    }
    if (is_skipped) continue;
    const FolderRule* const rule = FolderOf(file.path, description.folders);
    if (rule == nullptr) {
      faults.Add(file.path, "No Folder of the description says where it is installed.");
      continue;
    }
    file.record.name = tmw::SplitFileName(file.path).FileName();
    file.record.folder = TargetOf(file.path, *rule);
    file.record.server_name = MakeServerName(file.path);
    files.push_back(std::move(file));
  }
  for (std::size_t i = 0; i < is_rule_used.size(); ++i) {
    const std::string& mask = description.files[i].mask;
    if (!is_rule_used[i] && !IsPattern(mask))
      faults.Add("description", "The product has no file " + mask + ".");
  }
  std::sort(files.begin(), files.end(), [](const ProductFile& a, const ProductFile& b) {
    return std::tie(a.record.folder, a.record.name) < std::tie(b.record.folder, b.record.name);
  });
  return files;
}

void CheckFileList(const Manifest& manifest, Faults& faults) {
  std::map<std::string, const FileRecord*> by_name;
  std::map<std::string, std::string> by_place;
  std::map<std::string, std::string> by_server_name;
  for (const FileRecord& file : manifest.files) {
    const std::string place = file.folder + " " + file.name;
    CheckNames(file, place, faults);
    const auto [same_place, is_new_place] = by_place.emplace(InstalledPlace(file), place);
    if (!is_new_place)
      faults.Add(place, "It is installed where " + same_place->second + " is installed.");
    const auto [same_server, is_new_server] =
        by_server_name.emplace(tmw::LowerCase(file.server_name), place);
    if (!is_new_server && is_new_place)
      faults.Add(place, "On the server it has the name of " + same_server->second + ".");
    const auto [same_name, is_new_name] = by_name.emplace(tmw::LowerCase(file.name), &file);
    if (!is_new_name && !HasSameContent(*same_name->second, file)) {
      faults.Add(place, "The updater keeps one content for a file's name, and " +
                            same_name->second->folder + " has another file of this name.");
    }
  }
  for (const TableRecord& table : manifest.tables) {
    const std::string name = table.name + std::string(tmw::names::kTableEnding);
    if (by_name.contains(tmw::LowerCase(name)))
      faults.Add(table.name, "A program file has the name of the table's file.");
  }
}

}  // namespace publish
