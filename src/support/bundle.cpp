#include "support/bundle.h"

#include <array>
#include <cstdio>
#include <string_view>

#include "foundation/api_errors.h"
#include "foundation/contract_names.h"
#include "foundation/file_utils.h"
#include "foundation/program_error.h"
#include "packages/tm_zipper.h"
#include "ports/file_system.h"
#include "ports/log_files.h"
#include "ports/ports.h"
#include "services/run_log.h"
#include "support/report.h"
#include "support/support_texts.h"

namespace support {
namespace {

namespace names = tmw::names;

constexpr std::string_view kReportFile = "report.txt";
constexpr std::string_view kMark = "\xEF\xBB\xBF";  // of UTF-8, for old editors

// The files to be packed, in a folder of their own that goes with this object.
class Staging {
 public:
  Staging()
      : folder_(tmw::JoinPath(
            tmw::GetTemporaryFolder(),
            "TmSupport-" + std::to_string(ports::CurrentPorts().log_files->OwnProcess()))) {
    tmw::CreateFolderIfAbsent(folder_);
  }
  Staging(const Staging&) = delete;
  Staging& operator=(const Staging&) = delete;
  ~Staging() {
    try {
      tmw::DeleteFiles(tmw::JoinPath(folder_, "*"), true);
    } catch (...) {  // NOLINT(bugprone-empty-catch): what is left lies in the temporary folder
    }
    static_cast<void>(ports::CurrentPorts().files->RemoveFolder(folder_));
  }

  void Add(std::string_view name, std::string_view bytes) {
    const std::string path = tmw::JoinPath(folder_, name);
    const ports::Status written = tmw::WriteFileBytes(path, bytes);
    if (!written) tmw::RaiseApiErrorWithMessage(texts::CannotWrite(path), written.code);
    zipper_.AddFileName(path);
  }

  // A text of another program, in case it holds a password; nothing if there is no such file.
  void AddText(const std::string& folder, const std::string& name) {
    const std::string path = tmw::JoinPath(folder, name);
    if (tmw::IsFileExists(path)) Add(name, tmw::WithoutPasswords(tmw::ReadFileBytes(path)));
  }

  void Pack(const std::string& target) {
    zipper_.ZipFileName = target;
    zipper_.RootDir = folder_;
    zipper_.JunkDir = 1;
    const std::int32_t result = zipper_.DoZipping();
    if (result == 0) return;
    if (zipper_.SystemError != 0)
      tmw::RaiseApiErrorWithMessage(texts::CannotWrite(target), zipper_.SystemError);
    tmw::RaiseProgramError(texts::NotPacked(target, result));
  }

 private:
  std::string folder_;
  tmw::TmZipper zipper_;
};

std::string LogFolder() {
  const auto folder = ports::CurrentPorts().log_files->Folder();
  return folder ? folder.value : std::string();
}

}  // namespace

std::string SuggestedName() {
  const ports::LocalMoment now = ports::CurrentPorts().log_files->Now();
  std::array<char, 64> name{};
  static_cast<void>(std::snprintf(name.data(), name.size(), "TmSupport-%04d%02d%02d-%02d%02d.zip",
                                  now.year, now.month, now.day, now.hour, now.minute));
  return name.data();
}

void MakeBundle(const std::string& target) {
  const std::string update_folder =
      tmw::JoinPath(tmw::GetTemporaryFolder(),
                    std::string(names::kProductCode) + std::string(names::kTempFolderEnding));
  const std::string manifest = std::string(names::kProductCode) + std::string(names::kManifestFile);
  Staging staging;
  staging.Add(kReportFile, std::string(kMark) + MakeReport(tmw::JoinPath(update_folder, manifest)));
  const std::string log_folder = LogFolder();
  for (const std::string_view ending :
       {names::kLogEnding, names::kOldLogEnding, names::kJsonLogEnding, names::kOldJsonLogEnding}) {
    if (!log_folder.empty())
      staging.AddText(log_folder, std::string(names::kLogName) + std::string(ending));
  }
  for (const std::string& name :
       {std::string(names::kDigestFile), std::string(names::kServerListFile), manifest}) {
    staging.AddText(update_folder, name);
  }
  staging.Pack(tmw::GetAbsoluteFileName(target));
}

}  // namespace support
