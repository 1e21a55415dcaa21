#pragma once

#include <functional>
#include <string>
#include <vector>

#include "companion/zip/file_list.h"
#include "ports/companion_abi.h"

namespace companion::zip {

// Calls back to the caller; none may be empty.
struct ZipListeners {
  std::function<void(const std::string& line)> print;
  // Returns false to stop the command.
  std::function<bool(const std::string& name, std::uint64_t size)> entry_done;
  // Receives the present comment and returns the new one; bytes as they are stored.
  std::function<std::string(const std::string& comment)> ask_comment;
};

// Runs one zip command over a zip file (UTF-8 paths): adds or replaces entries, or deletes them.
//
// The new file is written under a temporary name, closed, read back entry by entry, flushed and
// renamed. Until the rename an existing zip file stays unchanged; a failure leaves no file that
// could be taken for a complete one.
ports::ZipResult RunZipCommand(const std::string& zip_path, const std::vector<std::string>& names,
                               const ZipSettings& settings, const ZipListeners& listeners) noexcept;

}  // namespace companion::zip
