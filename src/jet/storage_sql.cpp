#include "jet/storage_sql.h"

namespace jet {

std::string CallSql(const Function& function, std::initializer_list<std::string_view> arguments) {
  std::string sql(function.name);
  const char* separator = "(";
  for (const std::string_view argument : arguments) {
    sql.append(separator).append(argument);
    separator = ", ";
  }
  return sql + (arguments.size() == 0 ? "()" : ")");
}

// A plain literal would end at a zero character.
std::string TextLiteral(std::string_view text) {
  if (text.find('\0') != std::string_view::npos) {
    constexpr std::string_view kDigits = "0123456789ABCDEF";
    std::string hex = "CAST(x'";
    for (const char c : text) {
      hex += kDigits[static_cast<unsigned char>(c) >> 4U];
      hex += kDigits[static_cast<unsigned char>(c) & 0x0FU];
    }
    return hex + "' AS TEXT)";
  }
  std::string literal = "'";
  for (const char c : text) {
    literal += c;
    if (c == '\'') literal += c;
  }
  return literal + "'";
}

}  // namespace jet
