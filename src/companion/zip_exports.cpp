#include <array>
#include <cstdio>
#include <cstring>
#include <ctime>
#include <optional>

#include "companion/boundary.h"
#include "companion/exports.h"
#include "companion/text_forms.h"
#include "companion/zip/zip_command.h"

namespace companion {
namespace {

// What the interface keeps between calls.
struct ZipState {
  bool initialised = false;
  ports::ZpFunctions functions{};
  ports::ZpOptions options{};
  std::string date;
  std::string root_folder;
  std::string temporary_folder;
};

ZipState& State() {
  static ZipState state;
  return state;
}

const char* Keep(std::string& place, const char* text) {
  place = text == nullptr ? "" : text;
  return text == nullptr ? nullptr : place.c_str();
}

// "MM/DD/YY" (or a year of four digits): the beginning of that day, local time.
std::optional<std::int64_t> ParseDate(const std::string& text) {
  int month = 0;
  int day = 0;
  int year = 0;
  char rest = 0;
  // NOLINTNEXTLINE(cert-err34-c): the ranges are checked below, and nothing else fits into an int.
  if (std::sscanf(text.c_str(), "%2d/%2d/%4d%c", &month, &day, &year, &rest) != 3)
    return std::nullopt;
  if (month < 1 || month > 12 || day < 1 || day > 31 || year < 0) return std::nullopt;
  if (year < 100) year += year < 80 ? 2000 : 1900;
  if (year < 1980) return std::nullopt;
  std::tm local{};
  local.tm_year = year - 1900;
  local.tm_mon = month - 1;
  local.tm_mday = day;
  local.tm_isdst = -1;
  return std::mktime(&local);
}

// Returns nothing for options that are not supported: encryption, repair, whatever changes an
// existing zip file, a level that is no digit, an invalid date.
std::optional<zip::ZipSettings> Settings(const ports::ZpOptions& options) {
  if (options.Encrypt != 0 || options.Repair != 0) return std::nullopt;
  if (options.Update != 0 || options.Freshen != 0 || options.DeleteEntries != 0)
    return std::nullopt;
  if (options.Level < '0' || options.Level > '9') return std::nullopt;
  if (options.Recurse < 0 || options.Recurse > 2) return std::nullopt;
  zip::ZipSettings settings;
  if (options.IncludeDate != 0 || options.ExcludeDate != 0) {
    const auto date = ParseDate(options.Date == nullptr ? "" : options.Date);
    if (!date) return std::nullopt;
    if (options.IncludeDate != 0) settings.earliest = date;
    if (options.ExcludeDate != 0) settings.end = date;
  }
  settings.root = FromAnsi(options.RootDir);
  settings.level = options.Level - '0';
  settings.with_extra = options.Extra == 0;
  settings.no_folder_entries = options.NoDirEntries != 0;
  settings.junk_folders = options.JunkDir != 0;
  settings.with_system_files = options.System != 0;
  settings.crlf_to_lf = options.CRLF_LF != 0;
  settings.lf_to_crlf = options.LF_CRLF != 0;
  settings.move = options.Move != 0;
  settings.latest_time = options.LatestTime != 0;
  settings.ask_comment = options.Comment != 0;
  settings.quiet = options.Quiet != 0;
  settings.recurse = options.Recurse;
  return settings;
}

std::string ToAnsi(const std::string& text) {
  return os::ToNarrow(tmw::CodePage::k1251, text);
}

zip::ZipListeners Listeners(const ports::ZpFunctions& functions) {
  zip::ZipListeners listeners;
  listeners.print = [&functions](const std::string& line) {
    if (functions.Print == nullptr) return;
    const std::string text = ToAnsi(line) + "\n";
    functions.Print(text.c_str(), static_cast<std::uint32_t>(text.size()));
  };
  listeners.entry_done = [&functions](const std::string& name, std::uint64_t size) {
    return functions.Service == nullptr ||
           functions.Service(ToAnsi(name).c_str(), static_cast<std::uint32_t>(size)) == 0;
  };
  listeners.ask_comment = [&functions] {
    std::array<char, ports::kZpCommentSize> buffer{};
    if (functions.Comment == nullptr) return std::string();
    functions.Comment(buffer.data());
    buffer.back() = 0;
    return std::string(buffer.data());
  };
  return listeners;
}

int Run(const ports::ZpCommand& command) {
  const ZipState& state = State();
  if (!state.initialised) return ports::kZipInternal;
  const auto settings = Settings(state.options);
  if (!settings || command.Count < 0 || command.ZipName == nullptr) return ports::kZipBadOptions;
  if (command.Count > 0 && command.Names == nullptr) return ports::kZipBadOptions;
  std::vector<std::string> names;
  names.reserve(static_cast<std::size_t>(command.Count));
  for (std::int32_t i = 0; i < command.Count; ++i)
    names.push_back(FromAnsi(command.Names[i]));
  return zip::RunZipCommand(FromAnsi(command.ZipName), names, *settings,
                            Listeners(state.functions));
}

}  // namespace
}  // namespace companion

int COMPANION_CALL ZpInit(ports::ZpFunctions* functions) {
  if (functions == nullptr) return 0;
  companion::State().functions = *functions;
  companion::State().initialised = true;
  return 1;
}

int COMPANION_CALL ZpSetOptions(ports::ZpOptions* options) {
  if (options == nullptr) return 0;
  return companion::WithoutExceptions(0, 0, [&] {
    companion::ZipState& state = companion::State();
    state.options = {};  // a failure leaves no pointers to texts of before
    ports::ZpOptions kept = *options;
    kept.Date = companion::Keep(state.date, options->Date);
    kept.RootDir = companion::Keep(state.root_folder, options->RootDir);
    kept.TempDir = companion::Keep(state.temporary_folder, options->TempDir);
    state.options = kept;
    return 1;
  });
}

ports::ZpOptions* COMPANION_CALL ZpGetOptions() {
  return &companion::State().options;
}

int COMPANION_CALL ZpArchive(ports::ZpCommand command) {
  return companion::WithoutExceptions<int>(ports::kZipNoMemory, ports::kZipInternal,
                                           [&] { return companion::Run(command); });
}
