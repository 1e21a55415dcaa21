#include "companion/zip/file_list.h"

#include <algorithm>
#include <map>

#include "companion/zip/failure.h"
#include "foundation/encodings.h"

namespace companion::zip {
namespace {

bool IgnoresCase() {
  return os::Separator() == '\\';
}

std::string Folded(const std::string& text) {
  return IgnoresCase() ? tmw::LowerCase(text) : text;
}

std::string WithSlashes(std::string path) {
  for (char& c : path) {
    if (os::IsSeparator(c)) c = '/';
  }
  return path;
}

bool HasMask(const std::string& name) {
  return name.find_first_of("*?") != std::string::npos;
}

std::string Join(const std::string& folder, const std::string& name) {
  if (folder.empty() || os::IsAbsolute(name)) return name;
  return os::IsSeparator(folder.back()) ? folder + name : folder + os::Separator() + name;
}

bool MatchesUnits(std::u16string_view name, std::u16string_view mask) {
  std::size_t n = 0;
  std::size_t m = 0;
  std::size_t star = std::u16string_view::npos;
  std::size_t star_name = 0;
  while (n < name.size()) {
    if (m < mask.size() && mask[m] == u'*') {
      star = m++;
      star_name = n;
    } else if (m < mask.size() && (mask[m] == u'?' || mask[m] == name[n])) {
      ++m;
      ++n;
    } else if (star != std::u16string_view::npos) {
      m = star + 1;
      n = ++star_name;
    } else {
      return false;
    }
  }
  while (m < mask.size() && mask[m] == u'*')
    ++m;
  return m == mask.size();
}

// Collects the inputs of one command from the disk.
class Collector {
 public:
  Collector(const ZipSettings& settings, const std::string& zip_path)
      : settings_(settings), zip_path_(Folded(WithSlashes(zip_path))) {
    root_ = WithSlashes(settings.root);
    while (root_.ends_with('/'))
      root_.pop_back();
  }

  void Take(const std::string& name) {
    const std::string path = Join(settings_.root, name);
    if (settings_.recurse == 2) {
      const std::string top = settings_.root.empty() ? "." : settings_.root;
      TakeMatches(top, os::NameOf(name), name);
      return;
    }
    const os::Facts facts = os::Examine(path);
    if (facts.kind == os::Kind::kNone && HasMask(os::NameOf(name))) {
      TakeMatches(os::FolderOf(path), os::NameOf(name), name);
    } else if (facts.kind == os::Kind::kNone) {
      inputs_.missing.push_back(name);
    } else {
      TakePath(path, facts);
    }
  }

  ZipInputs Result() && { return std::move(inputs_); }

 private:
  void TakeMatches(const std::string& folder, const std::string& mask, const std::string& asked) {
    const std::size_t before = inputs_.found.size();
    for (const std::string& entry : os::List(folder)) {
      const std::string path = Join(folder, entry);
      const os::Facts facts = os::Examine(path);
      if (IsHidden(facts)) continue;
      if (MatchesMask(entry, mask)) TakePath(path, facts);
      if (facts.kind == os::Kind::kFolder && settings_.recurse == 2) TakeMatches(path, mask, "");
    }
    if (inputs_.found.size() == before && !asked.empty()) inputs_.missing.push_back(asked);
  }

  bool IsHidden(const os::Facts& facts) const {
    constexpr std::uint32_t kHiddenOrSystem = 6;
    return !settings_.with_system_files && (facts.dos_attributes & kHiddenOrSystem) != 0;
  }

  // Folders that are links are not listed, so that this ends.
  void TakePath(const std::string& path, const os::Facts& facts) {
    if (facts.kind == os::Kind::kFile) Add(path, facts, "");
    if (facts.kind != os::Kind::kFolder) return;
    if (!settings_.no_folder_entries && !settings_.junk_folders) Add(path, facts, "/");
    if (settings_.recurse != 1) return;
    for (const std::string& entry : os::List(path)) {
      const std::string inner = Join(path, entry);
      const os::Facts inner_facts = os::Examine(inner);
      if (!IsHidden(inner_facts)) TakePath(inner, inner_facts);
    }
  }

  void Add(const std::string& path, const os::Facts& facts, const std::string& ending) {
    if (Folded(WithSlashes(path)) == zip_path_) return;
    const std::string name = StoredName(path);
    if (name.empty()) return;
    const auto [known, is_new] = names_.emplace(Folded(name), Folded(WithSlashes(path)));
    if (is_new) {
      inputs_.found.push_back({path, name + ending, facts});
    } else if (known->second != Folded(WithSlashes(path))) {
      throw Failure{ports::kZipBadOptions};
    }
  }

  // Relative to the root, without drive, leading separators and ".." parts.
  std::string StoredName(const std::string& path) const {
    std::string name = WithSlashes(path);
    while (name.ends_with('/'))
      name.pop_back();
    if (settings_.junk_folders) return name.substr(name.rfind('/') + 1);
    if (!root_.empty() && Folded(name + "/").starts_with(Folded(root_ + "/"))) {
      name.erase(0, std::min(name.size(), root_.size() + 1));
    }
    if (name.size() > 1 && name[1] == ':' && IgnoresCase()) name.erase(0, 2);
    for (;;) {
      if (name.starts_with('/')) {
        name.erase(0, 1);
      } else if (name.starts_with("./")) {
        name.erase(0, 2);
      } else if (name.starts_with("../")) {
        name.erase(0, 3);
      } else {
        return name == "." || name == ".." ? "" : name;
      }
    }
  }

  const ZipSettings& settings_;
  std::string zip_path_;
  std::string root_;
  std::map<std::string, std::string> names_;  // stored name to path
  ZipInputs inputs_;
};

}  // namespace

bool MatchesMask(const std::string& name, const std::string& mask) {
  return MatchesUnits(tmw::Utf8ToUtf16(Folded(name)), tmw::Utf8ToUtf16(Folded(mask)));
}

ZipInputs CollectInputs(const std::vector<std::string>& names, const ZipSettings& settings,
                        const std::string& zip_path) {
  Collector collector(settings, zip_path);
  for (const std::string& name : names)
    collector.Take(name);
  ZipInputs inputs = std::move(collector).Result();
  std::erase_if(inputs.found, [&](const ZipInput& input) {
    if (input.facts.kind != os::Kind::kFile) return false;
    return (settings.earliest && input.facts.modified < *settings.earliest) ||
           (settings.end && input.facts.modified >= *settings.end);
  });
  return inputs;
}

}  // namespace companion::zip
