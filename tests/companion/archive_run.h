#pragma once

#include <string>
#include <vector>

#include "foundation/encodings.h"
#include "packages/companion_functions.h"
#include "ports/companion_abi.h"

namespace tests {

struct EntryResult {
  std::string name;
  int code = 0;
};

// The result of reading an archive through the library's interface.
struct ArchiveRun {
  int open_code = 0;
  std::vector<EntryResult> entries;
  int end_code = 0;  // of the ReadHeader call that found no entry

  // "0 12 | 10": the entries' codes and how it ended.
  std::string Codes() const {
    if (open_code != 0) return "open " + std::to_string(open_code);
    std::string text;
    for (const EntryResult& entry : entries)
      text += std::to_string(entry.code) + " ";
    return text + "| " + std::to_string(end_code);
  }
};

// Processes all entries, or only the one of that name, skipping the others.
inline ArchiveRun RunArchive(const std::string& path, int operation, const std::string& folder,
                             const std::string& only = {}) {
  const ports::EntryPoints& functions = tmw::CompanionFunctions();
  const std::u16string wide = tmw::Utf8ToUtf16(path);
  const std::u16string wide_folder = tmw::Utf8ToUtf16(folder);
  ports::RAROpenArchiveDataEx record{};
  record.ArcNameW = wide.c_str();
  record.OpenMode = ports::kRarExtract;
  ArchiveRun run;
  const ports::RarHandle handle = functions.RAROpenArchiveEx(&record);
  run.open_code = static_cast<int>(record.OpenResult);
  if (handle == nullptr) return run;
  // Even a reader that never ends must not hang the tests.
  for (int i = 0; i < 10000; ++i) {
    const auto header = std::make_unique<ports::RARHeaderDataEx>();
    run.end_code = functions.RARReadHeaderEx(handle, header.get());
    if (run.end_code != 0) break;
    const std::string name = tmw::Utf16ToUtf8(header->FileNameW);
    const int chosen = only.empty() || name == only ? operation : int{ports::kRarSkip};
    const int code = functions.RARProcessFileW(handle, chosen, wide_folder.c_str(), nullptr);
    run.entries.push_back({name, code});
  }
  functions.RARCloseArchive(handle);
  return run;
}

}  // namespace tests
