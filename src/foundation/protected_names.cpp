#include "foundation/protected_names.h"

#include <algorithm>
#include <array>
#include <string>
#include <vector>

#include "foundation/contract_names.h"
#include "foundation/encodings.h"
#include "foundation/file_names.h"
#include "foundation/text.h"

namespace tmw {
namespace {

// A file that is being written beside one of them has its name and an ending.
constexpr std::array kNotes = {names::kSerialFile, names::kRootMark,     names::kLockFile,
                               names::kKeptList,   names::kRollbackMark, names::kRollbackRecord};

}  // namespace

bool IsReservedTable(std::string_view table) {
  const std::string key = LowerCase(table);
  return key == names::kVersionTable || key.starts_with(names::kSystemTablePrefix);
}

bool IsUserDatabaseName(std::string_view file) {
  const std::string key = LowerCase(file);
  const std::string database = LowerCase(names::kUserDatabase);
  const std::string backup = SplitFileName(database).Name + "_";
  const std::string set_aside = SplitFileName(database).Name + LowerCase(names::kSetAsideName);
  return key.starts_with(database) || key.starts_with(set_aside) ||
         (key.starts_with(backup) && key.find(names::kBackupEnding) != std::string::npos);
}

bool IsUpdatersFolder(std::string_view folder) {
  std::string unified(folder);
  std::replace(unified.begin(), unified.end(), '\\', '/');
  const std::vector<std::string> parts = Split(unified, "/");
  return std::any_of(parts.begin(), parts.end(), [](const std::string& part) {
    // A constant stands directly before a name: "{p}Bin".
    return EqualIgnoringCase(part.substr(part.rfind('}') + 1), names::kKeptFolder);
  });
}

bool IsUpdatersNote(std::string_view file) {
  const std::string key = LowerCase(file);
  return std::any_of(kNotes.begin(), kNotes.end(),
                     [&](std::string_view note) { return key.starts_with(LowerCase(note)); });
}

}  // namespace tmw
