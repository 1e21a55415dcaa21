#pragma once

#include <functional>
#include <map>
#include <string>

#include "engine/records.h"

// The update manifest, "TMW_manifest.xml":
//   <KSUpdateManifest ProductID Version VersionID>
//     <Files> <Folder name> <File OrigName SrvName OrigSize SrvSize PackType Hash [IsCom]/> …
//     <DataBase> <Dict TableName SrvFile SrvSize Hash/> … <User TableName/> … </DataBase>
//     <DBUpdates SrvName PackSize PackHash/> <DBStruct SrvName PackSize PackHash/>
// Other elements and attributes are ignored; "{p}" in a folder's name is the product's root.
namespace tmw {

// Reads the manifest of that version of the product; tables come dictionaries first. Returns false
// with the reason if the file is not well-formed or describes another product or version. All other
// faults are raised: attributes that are missing or not a number, names that the path guard
// refuses, files of the user database, the
// updater's own notes, one name for two tables or for two contents. If may_go_on
// (may be empty) returns false, which it is asked now and then, the file counts as not readable.
[[nodiscard]] bool TryParseManifest(const std::string& file, const std::string& product_code,
                                    const std::string& version, Manifest& manifest,
                                    std::string& reason,
                                    const std::function<bool()>& may_go_on = {});

// Expands a folder's name: "{name}" becomes the constant of that name, "{{text}}" becomes "{text}";
// values are not expanded again. A brace without its partner ends the work, and the rest stays as
// it is. An unknown name is raised.
std::string ParseConsts(const std::string& text,
                        const std::map<std::string, std::string>& constants);

}  // namespace tmw
