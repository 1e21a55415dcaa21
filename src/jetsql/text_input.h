#pragma once

#include <functional>
#include <optional>
#include <string>
#include <string_view>

namespace jetsql {

enum class Encoding { kUtf8, k1251, kUtf16, kUtf16BigEndian };

// "utf8", "1251" or "utf16"; raises a UsageError for any other name.
std::optional<Encoding> EncodingOf(const std::optional<std::string>& name);

// Judges bytes that come in pieces.
class Utf8Judge {
 public:
  void Add(std::string_view bytes);
  // Whether all bytes so far are well-formed UTF-8; one that ends within a character is not.
  bool IsWellFormed() const { return is_well_formed_ && rest_.empty(); }

 private:
  bool is_well_formed_ = true;
  std::string rest_;  // the beginning of a character
};

// Gives the next piece of a text, of any length; an empty one at the end.
using TextSource = std::function<std::string()>;

// The text of a file in UTF-8, in pieces. A byte-order mark decides how the file is encoded, else
// the encoding that is given; else a file that is well-formed UTF-8 is that, any other one code
// page 1251. Errors name the file; bytes that are not of a given encoding are an error.
TextSource ReadTextFile(const std::string& path, std::optional<Encoding> encoding);

// The same for standard input, which is read whole unless the encoding is given.
TextSource ReadStandardInput(std::optional<Encoding> encoding);

// A text that is at hand.
TextSource ReadText(std::string text);

}  // namespace jetsql
