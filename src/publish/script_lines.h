#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace publish {

// Finds the lines of a script's statements. They are asked for in the order in which they run: of
// several that are worded alike, the next one is meant.
class ScriptLines {
 public:
  // The bytes of the script's file, in UTF-8 or code page 1251.
  explicit ScriptLines(std::string_view bytes);

  // The line, from 1, on which the text begins; 0 if the rest of the script does not have it. White
  // space does not count.
  std::size_t Find(std::string_view text);

 private:
  std::string text_;                  // without white space and comments, references resolved
  std::vector<std::uint32_t> lines_;  // of each of its bytes
  std::size_t at_ = 0;                // where the next search begins
};

}  // namespace publish
