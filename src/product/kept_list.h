#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

// What the last update replaced, for the way back: the files themselves in a folder of the
// product's root, and a list of them. The list names the subfolder in use and is replaced in one
// step, so that it always goes with whole files.
//
// The file is a text, UTF-8 with its mark, lines that end in CR LF, parts separated by "|":
//   TamrinKept|1                 the format's number
//   folder|1                     the subfolder
//   root|C:\Tamrin               where the product stood
//   date|2026-11-22 07:15:30     of this computer's clock
//   versions|3.6.0.4|3.6.2.1     before and after
//   content|<hash>               of the release's list of files
//   release|TMW 3.6.2.1          its name; a further line for each
//                                release that was interrupted
//   repairing                    only while a repair of that release
//                                has not been completed
//   file|<length>|<hash>|com|<name in the subfolder>|<path>
//                                "-" instead of "com": not registered
//   added|<hash>|com|<path>      a file that the release brought;
//                                "-" as hash: any content
//   made|<path>                  a folder that the release brought, after the ones it lies in
//   backup|<length>|<hash>|3.6.0|<hash of what replaced them>|<path>
//                                the archive of the books; length,
//                                hash and version of its content
//   end|<hash of everything above>
// Paths are absolute, hashes lower-case SHA-256 texts.
namespace tmw {

struct KeptFile {
  std::string Path;
  std::string Name;  // in the subfolder
  std::int64_t Length = 0;
  std::string Hash;
  bool IsRegistered = false;
};

struct AddedFile {
  std::string Path;
  std::string Hash;  // empty: any content
  bool IsRegistered = false;
};

struct KeptBackup {
  std::string Archive;
  std::int64_t Length = 0;  // of the database in it
  std::string Hash;         // likewise
  std::string Version;      // likewise
  std::string NewHash;      // of the database that the update put in its place
};

struct KeptList {
  std::string Folder;
  std::string Root;
  std::string Date;
  std::string OldVersion;  // may be empty: not known
  std::string NewVersion;
  std::string Content;
  std::vector<std::string> Releases;
  bool IsUnderRepair = false;
  std::vector<KeptFile> Files;
  std::vector<AddedFile> Added;
  std::vector<std::string> MadeFolders;
  std::optional<KeptBackup> Backup;

  bool operator==(const KeptList&) const;
};

// "Предыдущая версия" in the product's root.
std::string KeptRoot();

// Where that file is kept.
std::string KeptPlace(const KeptList& list, const KeptFile& file);

// The form in which paths are compared: without regard to letter case where the system has none.
std::string PathKey(const std::string& path);

// Nothing if there is no list, or with a reason if there is one that cannot be used: it is damaged,
// names files outside of the product's root and its database folder, or the product stood elsewhere
// when it was written.
std::optional<KeptList> TryReadKeptList(std::string& reason);

// Replaces the list in one step and reads it again. Raises an error if that fails.
void WriteKeptList(const KeptList& list);

// Removes the list, then the folder with everything in it. Only the list matters: what is left of
// the folder is replaced by the next update.
void RemoveKept();

// Deletes a folder that no list goes with: its removal was interrupted, or an update that did not
// get so far has left it.
void RemoveUnlisted();

}  // namespace tmw
