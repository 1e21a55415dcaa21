#include "packages/tm_zipper.h"

#include "foundation/error_handling.h"
#include "foundation/file_utils.h"
#include "packages/zip_routine.h"

namespace tmw {
namespace {

constexpr const char* kModule = "TmZipper";

}  // namespace

TmZipper::TmZipper() try { ClearFileNames(); } catch (...) {
  ReRaiseError(kModule, "Class_Initialize");
}

void TmZipper::ClearFileNames() try {
  file_names_ = {};
} catch (...) {
  ReRaiseError(kModule, "ClearFileNames");
}

void TmZipper::AddFileName(const std::string& path) try {
  file_names_.push_back(path);
} catch (...) {
  ReRaiseError(kModule, "AddFileName");
}

const std::vector<std::string>& TmZipper::FileNames() const {
  return file_names_;
}

std::int32_t TmZipper::DoZipping() try {
  if (DeleteExistingZipFile) (void)DeleteFile(ZipFileName, true);
  const std::int32_t result = RunZipRoutine(*this, SystemError);
  if (RaiseErrorOnFail && result != 0) RaiseProgramError(GetZipResultText(result));
  return result;
} catch (...) {
  ReRaiseError(kModule, "DoZipping");
}

std::string GetZipResultText(std::int32_t /*code*/) {
  return {};
}

}  // namespace tmw
