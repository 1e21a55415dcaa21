#include "packages/zip_routine.h"

#include <algorithm>
#include <exception>
#include <vector>

#include "foundation/encodings.h"
#include "packages/packages_texts.h"
#include "packages/tm_zipper.h"
#include "ports/companion_library.h"
#include "ports/front_end.h"
#include "ports/ports.h"
#include "services/box_titles.h"
#include "services/message_boxes.h"

namespace tmw {
namespace {

// Asks the user and puts the answer into the library's buffer; returns -1 if they cancel.
int AskInto(char* buffer, std::size_t size, const char* prompt, bool is_secret) noexcept try {
  if (buffer == nullptr || size == 0) return -1;
  const auto answer =
      ports::CurrentPorts().front_end->AskText(box_titles::kUpdaterProgram, prompt, is_secret);
  if (!answer) return -1;
  const std::string ansi = Utf8ToCodePage(CodePage::k1251, *answer);
  const std::size_t length = std::min(ansi.size(), size - 1);
  std::copy_n(ansi.begin(), length, buffer);
  buffer[length] = '\0';
  return 0;
} catch (const std::exception&) {
  return -1;  // no exception may cross the library
}

int COMPANION_CALL OnPrint(const char* /*text*/, std::uint32_t /*length*/) {
  return 0;
}

int COMPANION_CALL OnPassword(char* buffer, int size, const char* /*prompt*/,
                              const char* /*again*/) {
  return AskInto(buffer, size > 0 ? static_cast<std::size_t>(size) : 0,
                 packages_texts::kPasswordPrompt, true);
}

int COMPANION_CALL OnComment(char* buffer) {
  return AskInto(buffer, ports::kZpCommentSize, packages_texts::kCommentPrompt, false);
}

int COMPANION_CALL OnService(const char* /*name*/, std::uint32_t /*size*/) {
  return 0;
}

// The record points to these 8-bit texts: they must outlive the call that takes it.
struct NarrowTexts {
  std::string date;
  std::string root_folder;
  std::string temporary_folder;
};

ports::ZpOptions MakeOptions(const TmZipper& zipper, const NarrowTexts& texts) {
  ports::ZpOptions options{};
  options.Date = texts.date.c_str();
  options.RootDir = texts.root_folder.c_str();
  options.TempDir = texts.temporary_folder.c_str();
  options.Temp = zipper.IsTemp;
  options.Suffix = zipper.Suffix;
  options.Encrypt = zipper.Encrypt;
  options.System = zipper.System;
  options.Volume = zipper.Volume;
  options.Extra = zipper.Extra;
  options.NoDirEntries = zipper.NoDirEntries;
  options.ExcludeDate = zipper.ExcludeDate;
  options.IncludeDate = zipper.IncludeDate;
  options.Verbose = zipper.Verbose;
  options.Quiet = zipper.Quiet;
  options.CRLF_LF = zipper.CRLF_LF;
  options.LF_CRLF = zipper.LF_CRLF;
  options.JunkDir = zipper.JunkDir;
  options.Grow = zipper.Grow;
  options.Force = zipper.Force;
  options.Move = zipper.Move;
  options.DeleteEntries = zipper.DeleteEntries;
  options.Update = zipper.Update;
  options.Freshen = zipper.Freshen;
  options.JunkSFX = zipper.JunkSFX;
  options.LatestTime = zipper.LatestTime;
  options.Offsets = zipper.Offsets;
  options.Privilege = zipper.Privilege;
  options.Encryption = zipper.Encryption;
  options.Recurse = zipper.Recurse;
  options.Repair = zipper.Repair;
  // A level that is no digit must not turn into one when it becomes a character.
  const bool is_digit = zipper.Level >= 0 && zipper.Level <= 9;
  options.Level = is_digit ? static_cast<char>('0' + zipper.Level) : '?';
  return options;
}

}  // namespace

std::int32_t RunZipRoutine(const TmZipper& zipper, ports::SystemCode& system_error) {
  system_error = 0;
  ports::CompanionLibrary& companion = *ports::CurrentPorts().companion;
  const auto loaded = companion.Load();
  ports::ZpFunctions callbacks{OnPrint, OnComment, OnPassword, OnService};
  if (!loaded || loaded.value->ZpInit(&callbacks) == 0) {
    ShowWarning(box_titles::kError, packages_texts::kNoLibrary, FailureKind::kOwnFiles);
    return ports::kZipInternal;
  }
  const NarrowTexts texts{zipper.ZipDate, companion.NarrowPath(zipper.RootDir),
                          companion.NarrowPath(zipper.TempDir)};
  ports::ZpOptions options = MakeOptions(zipper, texts);
  loaded.value->ZpSetOptions(&options);

  std::vector<std::string> narrow_names;
  for (const std::string& name : zipper.FileNames())
    narrow_names.push_back(companion.NarrowPath(name));
  std::vector<const char*> names;
  for (const std::string& name : narrow_names)
    names.push_back(name.c_str());
  const std::string zip_name = companion.NarrowPath(zipper.ZipFileName);
  const std::int32_t result = loaded.value->ZpArchive(
      {static_cast<std::int32_t>(names.size()), zip_name.c_str(), names.data()});
  if (result != ports::kZipOk) system_error = companion.LastError();
  return result;
}

}  // namespace tmw
