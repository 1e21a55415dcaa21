#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace companion::rar {

struct DecodedName {
  std::string text;   // UTF-8
  bool sound = true;  // false if malformed or with a zero character
};

// RAR 4: bytes of the host's code page, UTF-8, or both a code-page name and coded UTF-16.
DecodedName DecodeRar4Name(std::string_view bytes, bool has_unicode, bool from_unix);
DecodedName DecodeRar5Name(std::string_view bytes);

// Splits a name into its parts if it may be created below a folder on every system. Returns nothing
// for any other name: absolute, with a drive or device prefix, an empty, "." or ".." part, a colon,
// a control character, a trailing dot or blank, or a device's name. "/" and "\" both separate.
std::optional<std::vector<std::string>> SafeNameParts(const DecodedName& name);

// The name of the volume that follows. new_names: "x.part1.rar", "x.part2.rar"; else "x.rar",
// "x.r00", ..., "x.r99", "x.s00". Returns nothing if there is none.
std::optional<std::string> NextVolumeName(const std::string& name, bool new_names);

}  // namespace companion::rar
