#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "ports/outcome.h"

namespace tmw {

// Collects file names and options and makes a zip file through the companion library. The option
// fields have the names of the published option record and are copied into it one to one; flags
// are 0 or 1 unless stated otherwise.
class TmZipper {
 public:
  TmZipper();

  std::string ZipFileName;
  bool DeleteExistingZipFile = true;
  bool RaiseErrorOnFail = false;

  std::string ZipDate;  // "MM/DD/YY"
  std::string RootDir;
  std::string TempDir;
  std::int32_t IsTemp = 0;
  std::int32_t Suffix = 0;
  std::int32_t Encrypt = 0;
  std::int32_t System = 0;
  std::int32_t Volume = 0;
  std::int32_t Extra = 0;
  std::int32_t NoDirEntries = 0;
  std::int32_t ExcludeDate = 0;
  std::int32_t IncludeDate = 0;
  std::int32_t Verbose = 0;
  std::int32_t Quiet = 0;
  std::int32_t CRLF_LF = 0;
  std::int32_t LF_CRLF = 0;
  std::int32_t JunkDir = 0;
  std::int32_t Grow = 0;
  std::int32_t Force = 0;
  std::int32_t Move = 0;
  std::int32_t DeleteEntries = 0;
  std::int32_t Update = 0;
  std::int32_t Freshen = 0;
  std::int32_t JunkSFX = 0;
  std::int32_t LatestTime = 0;
  std::int32_t Offsets = 0;
  std::int32_t Privilege = 0;
  std::int32_t Encryption = 0;
  std::int32_t Recurse = 0;  // 0, 1 or 2
  std::int32_t Repair = 0;   // 0, 1 or 2
  std::int32_t Level = 9;    // 0 to 9

  void ClearFileNames();
  void AddFileName(const std::string& path);
  const std::vector<std::string>& FileNames() const;

  // The system's reason for the last failure of DoZipping; 0 if there is none.
  ports::SystemCode SystemError = 0;

  // Returns the companion library's result code, 0 for success. Raises an error for any other code
  // if RaiseErrorOnFail is set.
  std::int32_t DoZipping();

 private:
  std::vector<std::string> file_names_;
};

// The text of a result code: always empty, so that the caller's own message stands alone.
std::string GetZipResultText(std::int32_t code);

}  // namespace tmw
