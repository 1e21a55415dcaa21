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
  // Returns the comment; bytes as they are stored.
  std::function<std::string()> ask_comment;
};

// Runs one zip command, which makes a new zip file (UTF-8 paths). An existing file is never changed
// or replaced: kZipCreateFailed. Nobody updates zip files, and what cannot be read with certainty
// cannot be updated faithfully.
//
// The file is written under a temporary name, flushed, closed, read back entry by entry, given the
// rights of the first file in it and renamed; a failure leaves no file that could be taken for a
// complete one. The system's reason for a failure, or 0, becomes the last error code.
ports::ZipResult RunZipCommand(const std::string& zip_path, const std::vector<std::string>& names,
                               const ZipSettings& settings, const ZipListeners& listeners) noexcept;

}  // namespace companion::zip
