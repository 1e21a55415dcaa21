#pragma once

#include <cstdint>
#include <functional>
#include <limits>
#include <string>
#include <utility>

#include "ports/companion_library.h"

namespace tmw {

inline constexpr std::int64_t kNoUnpackLimit = std::numeric_limits<std::int64_t>::max();

// How much a package may unpack to if no length is known: 64 times its own size, and 64 MiB.
inline constexpr std::int64_t MaxUnpacked(std::int64_t packed) {
  return (packed + (std::int64_t{1} << 20)) * 64;
}

// Reads a package through the companion library. Every failure is a ProgramError whose Russian
// sentence names the package.
class RarArchive {
 public:
  RarArchive() = default;
  RarArchive(const RarArchive&) = delete;
  RarArchive& operator=(const RarArchive&) = delete;
  ~RarArchive();

  // The path given to the last OpenArchive, for messages.
  std::string ArchiveName;

  ports::RarHandle Handle() const { return handle_; }

  // open_mode: 0 to list the entries, 1 to extract them.
  void OpenArchive(const std::string& archive_name, std::uint32_t open_mode);

  // Used for this archive and every one that is opened later.
  void SetPassword(const std::string& password);

  // Of all entries that are extracted together. What an entry announces is compared before it is
  // extracted, and one that announces less than it has ends at the limit.
  void LimitUnpacked(std::int64_t max_bytes) { max_unpacked_ = max_bytes > 0 ? max_bytes : 0; }

  // Asked before each piece that is extracted is written; false ends the extraction.
  void SetGoesOn(std::function<bool()> goes_on) { goes_on_ = std::move(goes_on); }

  // Returns false at the end of the archive. The sizes are the low 32 bits of the real ones.
  bool ReadHeader(std::string& file_name, std::uint32_t& flags, std::uint32_t& packed_size,
                  std::uint32_t& unpacked_size);

  // Processes the entry whose header was read last; operation: 0 skips, 1 tests, 2 extracts it. An
  // empty folder is the current one, an empty name the entry's own. An entry whose name the path
  // guard refuses is never extracted (code 16), whatever library is loaded.
  void ProcessFile(std::int32_t operation, const std::string& folder, const std::string& name);

  // Finds the entry ignoring letter case; CurrentName then returns the name as the package has it.
  void ExtractFile(const std::string& entry_name, const std::string& folder);

  void ExtractAllFiles(const std::string& folder);

  void CloseHandle();

  // The name of the entry whose header was read last.
  const std::string& CurrentName() const { return current_name_; }

  [[noreturn]] void RaiseRarError(std::int32_t code) const;

 private:
  static int COMPANION_CALL OnLibraryEvent(std::uint32_t message, std::intptr_t user_data,
                                           std::intptr_t p1, std::intptr_t p2);
  void RequireOpen() const;
  [[noreturn]] void RaiseTooLarge() const;
  void ApplyPassword() const;

  ports::RarHandle handle_ = nullptr;
  std::string password_;
  std::string current_name_;
  std::uint64_t announced_ = 0;  // unpacked size of the current entry
  std::int64_t max_unpacked_ = kNoUnpackLimit;
  std::int64_t unpacked_ = 0;  // bytes so far
  std::function<bool()> goes_on_;
};

// Extract one entry, which gets exactly the given name on the disk, or all entries. Return false
// and the error's description on any failure, more than max_bytes and an end by goes_on included;
// what has been written by then stays.
[[nodiscard]] bool UnrarOneFile(const std::string& package, const std::string& entry_name,
                                const std::string& folder, const std::string& password,
                                std::string& error_text, std::int64_t max_bytes = kNoUnpackLimit,
                                const std::function<bool()>& goes_on = {});
[[nodiscard]] bool UnrarAllFiles(const std::string& package, const std::string& folder,
                                 const std::string& password, std::string& error_text,
                                 std::int64_t max_bytes = kNoUnpackLimit,
                                 const std::function<bool()>& goes_on = {});

}  // namespace tmw
