#include "publish/product_files.h"

#include <algorithm>
#include <tuple>

#include "foundation/contract_names.h"
#include "foundation/file_names.h"
#include "foundation/file_utils.h"
#include "foundation/text.h"
#include "publish/fault_texts.h"
#include "publish/file_tree.h"
#include "publish/release_names.h"
#include "sha256/sha256.h"

namespace publish {
namespace {

// A mask with a folder is compared with the whole path, one without only with the file's name.
bool Matches(const std::string& path, const std::string& mask) {
  const bool has_folder = mask.find('/') != std::string::npos;
  return tmw::MatchesMask(has_folder ? path : tmw::SplitFileName(path).FileName(), mask);
}

// The rule of the innermost folder that contains the file, null if none does.
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

// The rule's target plus the folders between the rule's folder and the file.
std::string TargetOf(const std::string& path, const FolderRule& rule) {
  std::string below = path.substr(rule.source.empty() ? 0 : rule.source.size() + 1);
  const std::size_t end = below.rfind('/');
  below = end == std::string::npos ? "" : below.substr(0, end);
  if (below.empty()) return rule.target;
  const bool has_separator =
      rule.target.ends_with('}') || rule.target.ends_with('\\') || rule.target.ends_with('/');
  std::replace(below.begin(), below.end(), '/', '\\');
  // Literal braces are escaped.
  if (below.find('{') != std::string::npos) below = "{{" + below + "}}";
  return rule.target + (has_separator ? "" : "\\") + below;
}

void Apply(const FileRule& rule, const Description& description, ProductFile& file,
           bool& is_skipped) {
  is_skipped = rule.is_skipped;
  if (rule.is_com) {
    file.record.is_com = *rule.is_com;
    file.com_place = rule.place;
  }
  if (rule.is_executable) file.is_executable = *rule.is_executable;
  if (rule.pack_method) file.record.pack_method = *rule.pack_method;
  if (!rule.package.empty()) file.ready_package = tmw::JoinPath(description.folder, rule.package);
}

// A rule that nothing follows is a slip, unless the description says otherwise.
template <typename Rule>
void BlameUnused(const std::vector<Rule>& rules, std::string Rule::*written,
                 const std::vector<bool>& is_used, Faults& faults) {
  for (std::size_t i = 0; i < rules.size(); ++i) {
    if (!is_used[i] && !rules[i].is_optional)
      faults.Add(rules[i].place, texts::kMatchesNoFile, {rules[i].*written});
  }
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
  if (name != path) name += "-" + sha256::CSHA256().SHA256(path).substr(0, kHashDigits);
  return std::string(kFilesFolder) + "/" + name + std::string(tmw::names::kPackageEnding);
}

std::vector<ProductFile> CollectProductFiles(const std::string& product_folder,
                                             const Description& description, Faults& faults) {
  std::vector<ProductFile> files;
  std::vector<bool> is_rule_used(description.files.size());
  std::vector<bool> is_folder_used(description.folders.size());
  for (TreeEntry& entry : ListTree(product_folder)) {
    ProductFile file;
    file.path = std::move(entry.path);
    file.source = tmw::JoinPath(product_folder, file.path);
    bool is_skipped = false;
    for (std::size_t i = 0; i < description.files.size(); ++i) {
      if (!Matches(file.path, description.files[i].mask)) continue;
      is_rule_used[i] = true;
      Apply(description.files[i], description, file, is_skipped);
    }
    const FolderRule* const rule = FolderOf(file.path, description.folders);
    if (rule != nullptr)
      is_folder_used[static_cast<std::size_t>(rule - description.folders.data())] = true;
    if (is_skipped) continue;
    if (!entry.fault.empty()) {
      faults.Add(file.path, entry.fault);
      continue;
    }
    if (rule == nullptr) {
      faults.Add(file.path, texts::kNoFolderRule);
      continue;
    }
    file.record.name = tmw::SplitFileName(file.path).FileName();
    file.record.folder = TargetOf(file.path, *rule);
    file.record.server_name = MakeServerName(file.path);
    files.push_back(std::move(file));
  }
  BlameUnused(description.folders, &FolderRule::source, is_folder_used, faults);
  BlameUnused(description.files, &FileRule::mask, is_rule_used, faults);
  std::sort(files.begin(), files.end(), [](const ProductFile& a, const ProductFile& b) {
    return std::tie(a.record.folder, a.record.name) < std::tie(b.record.folder, b.record.name);
  });
  return files;
}

}  // namespace publish
