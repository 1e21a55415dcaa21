#include "product/interruption_mark.h"

#include <vector>

#include "foundation/api_errors.h"
#include "foundation/contract_names.h"
#include "foundation/file_utils.h"
#include "ports/file_system.h"
#include "ports/ports.h"
#include "product/product_texts.h"
#include "services/product_settings.h"

namespace tmw {
namespace {

// A mark with this content stays as it is.
void WriteMark(const std::string& folder, std::string_view name, const std::string& version_id) {
  const std::string path = JoinPath(folder, name);
  if (IsFileExists(path) && ReadFileBytes(path) == version_id) return;
  const ports::Status status = ReplaceFileBytes(path, version_id);
  if (!status) RaiseApiErrorWithMessage(product_texts::MarkNotWritten(path), status.code);
}

std::vector<std::string> Marks(const std::string& temp_dir) {
  std::vector<std::string> marks;
  const auto add = [&marks](const std::string& folder, std::string_view name) {
    std::string mark = JoinPath(folder, name);
    if (IsFileExists(mark)) marks.push_back(std::move(mark));
  };
  const auto entries = ports::CurrentPorts().files->List(temp_dir);
  if (entries) {
    for (const ports::FolderEntry& entry : entries.value) {
      if (entry.kind == ports::FileKind::kFolder)
        add(JoinPath(temp_dir, entry.name), names::kReleaseMark);
    }
  }
  add(GetProductRootPath(), names::kRootMark);
  return marks;
}

}  // namespace

void MarkInstallation(const std::string& release_folder, const std::string& version_id) {
  const std::string root = GetProductRootPath();
  CreateFolderIfAbsent(root);
  WriteMark(root, names::kRootMark, version_id);
  WriteMark(release_folder, names::kReleaseMark, version_id);
}

void UnmarkInstallations(const std::string& temp_dir) {
  for (const std::string& mark : Marks(temp_dir))
    DeleteFile(mark);
  DeleteReplacement(JoinPath(GetProductRootPath(), names::kRootMark));
}

std::optional<std::string> InterruptedRelease(const std::string& temp_dir) {
  const std::vector<std::string> marks = Marks(temp_dir);
  if (marks.empty()) return std::nullopt;
  return ReadFileBytes(marks.back());
}

bool IsInstallationInterrupted(const std::string& temp_dir) {
  return !Marks(temp_dir).empty();
}

}  // namespace tmw
