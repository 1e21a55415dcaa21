#include "product/rollback_mark.h"

#include <string_view>
#include <vector>

#include "foundation/api_errors.h"
#include "foundation/contract_names.h"
#include "foundation/file_utils.h"
#include "foundation/text.h"
#include "ports/file_system.h"
#include "ports/ports.h"
#include "product/product_texts.h"
#include "services/product_settings.h"

namespace tmw {
namespace {

// Three lines: the format, "done" or "under way", where the books go.
constexpr std::string_view kFormat = "\xEF\xBB\xBFTamrinRollback|1";
constexpr std::string_view kDone = "done";
constexpr std::string_view kUnderWay = "under way";

}  // namespace

std::string RollbackMarkPath() {
  return JoinPath(GetProductRootPath(), names::kRollbackMark);
}

bool IsRollbackUnderWay() {
  return IsFileExists(RollbackMarkPath());
}

std::optional<RollbackMark> ReadRollbackMark() {
  if (!IsRollbackUnderWay()) return std::nullopt;
  const std::vector<std::string> lines = Split(ReadFileBytes(RollbackMarkPath()), kCrLf);
  if (lines.size() != 4 || lines[0] != kFormat || (lines[1] != kDone && lines[1] != kUnderWay))
    return std::nullopt;
  return RollbackMark{lines[2], lines[1] == kDone};
}

void WriteRollbackMark(const RollbackMark& mark) {
  const std::string text = Joined(
      {std::string(kFormat), std::string(mark.IsDone ? kDone : kUnderWay), mark.SetAside, ""},
      kCrLf);
  const ports::Status status = ReplaceFileBytes(RollbackMarkPath(), text);
  if (!status)
    RaiseApiErrorWithMessage(product_texts::MarkNotWritten(RollbackMarkPath()), status.code);
}

void RemoveRollbackMark() {
  DeleteFile(RollbackMarkPath());
  static_cast<void>(ports::CurrentPorts().files->FlushFolder(GetProductRootPath()));
}

}  // namespace tmw
