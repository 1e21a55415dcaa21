#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <variant>

namespace platform {

// A value of another type than texts and double words.
struct OtherRegValue {};
using RegValue = std::variant<OtherRegValue, std::string, std::uint32_t>;

// What the line that could not be read is, 1-based, and why, in Russian, without a full stop.
struct RegFileError {
  int line = 0;
  std::string reason;
};

// The content of a file in the registry editor's text format:
//
//   Windows Registry Editor Version 5.00     UTF-16LE with its mark, or UTF-8 with or without one
//   REGEDIT4                                 code page 1251, or UTF-8 with its mark
//   ; comment
//   [HKEY_LOCAL_MACHINE\SOFTWARE\Key]        values that follow belong to this key
//   "name"="text with \\ and \""             @ for the name is the default value
//   "name"=dword:0000000a
//   "name"=hex(2):61,00,\                    hexadecimal bytes, goes on in the next line;
//     00,00                                  1 and 2 are texts, 4 is a double word
//   "name"=-                                 the value is deleted
//   [-HKEY_LOCAL_MACHINE\SOFTWARE\Old]       the key and all below it is deleted
//
// Keys and names compare without regard to case; of two values with one name the later one holds.
class RegFile {
 public:
  // The value below a full key ("HKEY_CURRENT_USER\\Software\\..."), or nothing. The part that a
  // 64-bit system puts before keys of 32-bit programs ("WOW6432Node") is left out of both.
  const RegValue* Find(std::string_view key, std::string_view name) const;

  void Set(std::string_view key, std::string_view name, RegValue value);
  void Delete(std::string_view key, std::string_view name);
  void DeleteKey(std::string_view key);

 private:
  using KeyAndName = std::pair<std::string, std::string>;
  std::map<KeyAndName, RegValue> values_;
};

struct RegFileResult {
  RegFile file;
  std::optional<RegFileError> error;
};

// An empty text is a file without values.
RegFileResult ParseRegFile(std::string_view bytes);

}  // namespace platform
