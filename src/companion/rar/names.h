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
  bool sound = true;  // false: malformed or with a zero character
};

// RAR 4: bytes of the host's code page, UTF-8, or both a code-page name and coded UTF-16.
DecodedName DecodeRar4Name(std::string_view bytes, bool has_unicode, bool from_unix);
DecodedName DecodeRar5Name(std::string_view bytes);

// The parts of a name that may be created beneath a folder on every system; nothing for any other:
// absolute or with a drive or device prefix, with an empty, "." or ".." part, with a colon, a
// control character, a trailing dot or blank, or a device's name. "/" and "\" both separate.
std::optional<std::vector<std::string>> SafeNameParts(const DecodedName& name);

// The name of the volume that follows. new_names: "x.part1.rar", "x.part2.rar"; else "x.rar",
// "x.r00", ..., "x.r99", "x.s00". Nothing when there is none.
std::optional<std::string> NextVolumeName(const std::string& name, bool new_names);

}  // namespace companion::rar
