#pragma once

#include <functional>
#include <string>
#include <vector>

#include "companion/zip/file_list.h"
#include "ports/companion_abi.h"

namespace companion::zip {

// What the caller wants to hear and is asked; none may be empty.
struct ZipListeners {
  std::function<void(const std::string& line)> print;
  // False stops the command.
  std::function<bool(const std::string& name, std::uint64_t size)> entry_done;
  // Given the present comment; bytes as they are stored.
  std::function<std::string(const std::string& comment)> ask_comment;
};

// Runs one zip command over a zip file (UTF-8 paths): adds or replaces entries, or deletes them.
//
// The new file is written beside its final name, closed, read back entry by entry, flushed and
// renamed. Until the rename an existing zip file stays what it was; a failure leaves none that a
// later run could take for a good one.
ports::ZipResult RunZipCommand(const std::string& zip_path, const std::vector<std::string>& names,
                               const ZipSettings& settings, const ZipListeners& listeners) noexcept;

}  // namespace companion::zip
