#include "product/kept_list.h"

#include <algorithm>
#include <cstddef>
#include <string_view>

#include "foundation/api_errors.h"
#include "foundation/contract_names.h"
#include "foundation/encodings.h"
#include "foundation/file_utils.h"
#include "foundation/number_text.h"
#include "foundation/path_guard.h"
#include "foundation/program_error.h"
#include "foundation/text.h"
#include "ports/file_system.h"
#include "ports/ports.h"
#include "product/product_texts.h"
#include "services/product_settings.h"
#include "sha256/sha256.h"

namespace tmw {
namespace {

constexpr std::string_view kMark = "\xEF\xBB\xBF";
constexpr std::string_view kFirstLine = "TamrinKept|1";
constexpr std::string_view kEnd = "end|";
constexpr std::string_view kRegistered = "com";
constexpr std::string_view kNone = "-";

std::string ListPath() {
  return JoinPath(KeptRoot(), names::kKeptList);
}

std::string RootOfProduct() {
  return GetAbsoluteFileName(GetProductRootPath());
}

std::string Line(std::initializer_list<std::string_view> parts) {
  return Joined(std::vector<std::string>(parts.begin(), parts.end()), "|") + std::string(kCrLf);
}

std::string_view ComWord(bool is_registered) {
  return is_registered ? kRegistered : kNone;
}

std::string_view OrNone(const std::string& text) {
  return text.empty() ? kNone : std::string_view(text);
}

std::string TextOf(const KeptList& list) {
  std::string text = Line({kFirstLine}) + Line({"folder", list.Folder}) +
                     Line({"root", list.Root}) + Line({"date", list.Date}) +
                     Line({"versions", list.OldVersion, list.NewVersion}) +
                     Line({"content", list.Content});
  for (const std::string& release : list.Releases)
    text += Line({"release", release});
  if (list.IsUnderRepair) text += Line({"repairing"});
  for (const KeptFile& file : list.Files) {
    text += Line({"file", std::to_string(file.Length), file.Hash, ComWord(file.IsRegistered),
                  file.Name, file.Path});
  }
  for (const AddedFile& file : list.Added)
    text += Line({"added", OrNone(file.Hash), ComWord(file.IsRegistered), file.Path});
  for (const std::string& folder : list.MadeFolders)
    text += Line({"made", folder});
  if (list.Backup) {
    text += Line({"backup", std::to_string(list.Backup->Length), list.Backup->Hash,
                  list.Backup->Version, list.Backup->NewHash, list.Backup->Archive});
  }
  return text + std::string(kEnd) + sha256::CSHA256().SHA256(text) + std::string(kCrLf);
}

// The parts of a line; the last one takes the rest of it. Nothing if there are fewer.
std::optional<std::vector<std::string>> Parts(const std::string& line, std::size_t count) {
  std::vector<std::string> parts = Split(line, "|");
  if (parts.size() < count) return std::nullopt;
  const std::vector<std::string> rest(parts.begin() + static_cast<std::ptrdiff_t>(count) - 1,
                                      parts.end());
  parts.resize(count - 1);
  parts.push_back(Joined(rest, "|"));
  return parts;
}

// Takes one line over into the list. Returns false if it cannot be understood.
bool TakeLine(const std::string& line, KeptList& list) {
  const std::string word = line.substr(0, line.find('|'));
  const auto take = [&](std::size_t count, const auto& action) {
    const auto parts = Parts(line, count);
    return parts && action(*parts);
  };
  const auto take_text = [&](std::string& target) {
    return take(2, [&](const auto& parts) { return target = parts[1], true; });
  };
  if (word == "folder") return take_text(list.Folder);
  if (word == "root") return take_text(list.Root);
  if (word == "date") return take_text(list.Date);
  if (word == "content") return take_text(list.Content);
  if (word == "release") return take_text(list.Releases.emplace_back());
  if (word == "made") return take_text(list.MadeFolders.emplace_back());
  if (word == "repairing") return list.IsUnderRepair = true;
  if (word == "versions") {
    return take(3, [&](const auto& parts) {
      list.OldVersion = parts[1];
      list.NewVersion = parts[2];
      return true;
    });
  }
  if (word == "file") {
    return take(6, [&](const auto& parts) {
      const auto length = ReadWholeNumber(parts[1]);
      list.Files.push_back(
          {parts[5], parts[4], length.value_or(0), parts[2], parts[3] == kRegistered});
      return length.has_value() && CheckFileName(parts[4]).IsAccepted();
    });
  }
  if (word == "added") {
    return take(4, [&](const auto& parts) {
      list.Added.push_back({parts[3], parts[1] == kNone ? "" : parts[1], parts[2] == kRegistered});
      return true;
    });
  }
  if (word == "backup") {
    return take(6, [&](const auto& parts) {
      const auto length = ReadWholeNumber(parts[1]);
      list.Backup = KeptBackup{parts[5], length.value_or(0), parts[2], parts[3], parts[4]};
      return length.has_value();
    });
  }
  return false;
}

// The lines of a whole list; nothing if its end is missing or does not fit.
std::optional<std::vector<std::string>> WholeLines(std::string_view bytes) {
  if (!bytes.starts_with(kMark)) return std::nullopt;
  bytes.remove_prefix(kMark.size());
  const std::size_t end = bytes.rfind(kEnd);
  if (end == std::string_view::npos) return std::nullopt;
  const std::string_view text = bytes.substr(0, end);
  if (bytes.substr(end) !=
          std::string(kEnd) + sha256::CSHA256().SHA256(text) + std::string(kCrLf) ||
      !text.ends_with(kCrLf))
    return std::nullopt;
  return Split(text.substr(0, text.size() - kCrLf.size()), kCrLf);
}

std::optional<KeptList> ParseList(std::string_view bytes) {
  const auto lines = WholeLines(bytes);
  if (!lines || lines->front() != kFirstLine) return std::nullopt;
  KeptList list;
  const auto is_understood = [&](const std::string& line) { return TakeLine(line, list); };
  if (!std::all_of(lines->begin() + 1, lines->end(), is_understood)) return std::nullopt;
  if (!CheckFileName(list.Folder).IsAccepted() || list.Releases.empty()) return std::nullopt;
  return list;
}

bool LiesInside(const std::string& path) {
  const std::string folder = SplitFileName(path).Folder;
  return CheckFileName(SplitFileName(path).FileName()).IsAccepted() &&
         (CheckFolderUnderRoot(folder, GetProductRootPath()).IsAccepted() ||
          CheckFolderUnderRoot(folder, GetDataBasePath()).IsAccepted());
}

// Whoever can write the list decides which files are written later on.
std::string FirstPathOutside(const KeptList& list) {
  for (const KeptFile& file : list.Files) {
    if (!LiesInside(file.Path)) return file.Path;
  }
  for (const AddedFile& file : list.Added) {
    if (!LiesInside(file.Path)) return file.Path;
  }
  for (const std::string& folder : list.MadeFolders) {
    if (!LiesInside(folder)) return folder;
  }
  if (list.Backup && !LiesInside(list.Backup->Archive)) return list.Backup->Archive;
  return {};
}

}  // namespace

bool KeptList::operator==(const KeptList& other) const {
  return TextOf(*this) == TextOf(other);
}

std::string KeptRoot() {
  return JoinPath(RootOfProduct(), names::kKeptFolder);
}

std::string KeptPlace(const KeptList& list, const KeptFile& file) {
  return JoinPath(JoinPath(KeptRoot(), list.Folder), file.Name);
}

std::string PathKey(const std::string& path) {
  return ports::CurrentPorts().files->Separator() == '\\' ? LowerCase(path) : path;
}

std::optional<KeptList> TryReadKeptList(std::string& reason) {
  reason.clear();
  if (!IsFileExists(ListPath())) return std::nullopt;
  std::optional<KeptList> list = ParseList(ReadFileBytes(ListPath()));
  if (!list) {
    reason = product_texts::ListDamaged(ListPath());
  } else if (PathKey(list->Root) != PathKey(RootOfProduct())) {
    reason = product_texts::ListOfOtherPlace(list->Root, RootOfProduct());
  } else if (const std::string path = FirstPathOutside(*list); !path.empty()) {
    reason = product_texts::ListNamesOutside(path);
  }
  if (!reason.empty()) list.reset();
  return list;
}

void WriteKeptList(const KeptList& list) {
  KeptList written = list;
  written.Root = RootOfProduct();
  const ports::Status status = ReplaceFileBytes(ListPath(), std::string(kMark) + TextOf(written));
  if (!status) RaiseApiErrorWithMessage(product_texts::MarkNotWritten(ListPath()), status.code);
  std::string reason;
  const auto read = TryReadKeptList(reason);
  if (!read || !(*read == written)) {
    DeleteFile(ListPath());
    RaiseProgramError(reason.empty() ? product_texts::ListDamaged(ListPath()) : reason);
  }
}

void RemoveKept() {
  DeleteFile(ListPath());
  static_cast<void>(ports::CurrentPorts().files->FlushFolder(KeptRoot()));
  DeleteFolderTree(KeptRoot());
}

void RemoveUnlisted() {
  if (!IsFileExists(ListPath())) DeleteFolderTree(KeptRoot());
}

}  // namespace tmw
