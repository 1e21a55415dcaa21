#include "platform/linux/updater_arguments.h"

#include <cstdlib>
#include <filesystem>
#include <list>
#include <string>
#include <string_view>

#include "foundation/contract_names.h"
#include "foundation/encodings.h"
#include "foundation/version.h"
#include "platform/factories.h"
#include "platform/linux/linux_texts.h"
#include "platform/linux/terminal/terminal.h"

namespace platform {
namespace {

using tmw::names::kOptionMainExe;

constexpr const char* kHelp = "--help";
constexpr const char* kVersion = "--version";

bool TakesValue(std::string_view option) {
  for (const std::string_view name : {kOptionMainExe, tmw::names::kOptionMainParams,
                                      tmw::names::kOptionOldVersion, tmw::names::kOptionUrl}) {
    if (option == name) return true;
  }
  return false;
}

// The path itself if it is absolute, empty or cannot be made so.
std::string Absolute(const std::string& path) {
  if (path.empty() || path.front() == '/') return path;
  std::error_code error;
  const std::filesystem::path absolute = std::filesystem::absolute(path, error);
  return error ? path : absolute.lexically_normal().string();
}

}  // namespace

void MakePathsAbsolute(int argc, char** argv) {
  static std::list<std::string> replaced;  // as long-lived as the arguments themselves
  for (int i = 1; i + 1 < argc; ++i) {
    const std::string option = tmw::LowerCase(argv[i]);
    if (!TakesValue(option)) continue;
    ++i;
    if (option != kOptionMainExe) continue;
    replaced.push_back(Absolute(argv[i]));
    argv[i] = replaced.back().data();
  }
  for (const char* const name : {kMachineFileVariable, kUserFileVariable}) {
    const char* const value = std::getenv(name);
    if (value != nullptr) setenv(name, Absolute(value).c_str(), 1);
  }
}

std::optional<int> PrepareUpdater(int argc, char** argv) {
  const std::string_view first = argc > 1 ? argv[1] : "";
  if (first == kHelp || first == kVersion) {
    Terminal().WriteOutput(first == kHelp
                               ? linux_texts::kHelp
                               : linux_texts::ProgramAndVersion(tmw::GetAppVersionString()));
    return EXIT_SUCCESS;
  }
  MakePathsAbsolute(argc, argv);
  return std::nullopt;
}

}  // namespace platform
