#include "jet/storage_sql.h"

namespace jet {

void Append(std::string& list, std::string_view item, std::string_view separator) {
  if (!list.empty()) list += separator;
  list += item;
}

std::string CallSql(const Function& function, std::initializer_list<std::string_view> arguments) {
  std::string list;
  for (const std::string_view argument : arguments)
    Append(list, argument);
  return std::string(function.name) + "(" + list + ")";
}

std::string BytesLiteral(std::string_view bytes) {
  constexpr std::string_view kDigits = "0123456789ABCDEF";
  std::string literal = "X'";
  literal.reserve(bytes.size() * 2 + 3);
  for (const char byte : bytes) {
    literal += kDigits[static_cast<unsigned char>(byte) >> 4U];
    literal += kDigits[static_cast<unsigned char>(byte) & 0x0FU];
  }
  return literal + "'";
}

// A plain literal would end at a zero character.
std::string TextLiteral(std::string_view text) {
  if (text.find('\0') != std::string_view::npos) return "CAST(" + BytesLiteral(text) + " AS TEXT)";
  std::string literal = "'";
  for (const char c : text) {
    literal += c;
    if (c == '\'') literal += c;
  }
  return literal + "'";
}

}  // namespace jet
