#pragma once

#include <cstdint>
#include <string>

#include "ports/companion_library.h"

namespace tmw {

// A package, read through the companion library. Every failure is a ProgramError with the package's
// name and a Russian sentence.
class RarArchive {
 public:
  RarArchive() = default;
  RarArchive(const RarArchive&) = delete;
  RarArchive& operator=(const RarArchive&) = delete;
  ~RarArchive();

  // Path given to the last OpenArchive; used in messages.
  std::string ArchiveName;

  ports::RarHandle Handle() const { return handle_; }

  // open_mode: 0 lists, 1 extracts.
  void OpenArchive(const std::string& archive_name, std::uint32_t open_mode);

  // Kept for every archive that is opened.
  void SetPassword(const std::string& password);

  // False at the end of the archive. Sizes are the low 32 bits.
  bool ReadHeader(std::string& file_name, std::uint32_t& flags, std::uint32_t& packed_size,
                  std::uint32_t& unpacked_size);

  // operation: 0 skips, 1 tests, 2 extracts the entry whose header was read last. An empty folder
  // is the current one; an empty name is the entry's own. A name that the path guard refuses is
  // never extracted (code 16), whatever library is loaded.
  void ProcessFile(std::int32_t operation, const std::string& folder, const std::string& name);

  // Finds the entry without regard to letter case; CurrentName then gives the name it bears.
  void ExtractFile(const std::string& entry_name, const std::string& folder);

  void ExtractAllFiles(const std::string& folder);

  void CloseHandle();

  // The entry whose header was read last.
  const std::string& CurrentName() const { return current_name_; }

  [[noreturn]] void RaiseRarError(std::int32_t code) const;

 private:
  void RequireOpen() const;
  void ApplyPassword() const;

  ports::RarHandle handle_ = nullptr;
  std::string password_;
  std::string current_name_;
};

// Extracts one named entry, which gets exactly the asked name on the disk, or all entries. False
// and the error's description on any failure; what was written by then stays.
[[nodiscard]] bool UnrarOneFile(const std::string& package, const std::string& entry_name,
                                const std::string& folder, const std::string& password,
                                std::string& error_text);
[[nodiscard]] bool UnrarAllFiles(const std::string& package, const std::string& folder,
                                 const std::string& password, std::string& error_text);

}  // namespace tmw
