#include "foundation/command_line.h"

#include <cstddef>

#include "foundation/text.h"

namespace tmw {

std::vector<std::string> SplitCommandLine(std::string_view text, EmptyArguments empty) {
  const std::string line = Trim(text);
  std::vector<std::string> arguments;
  std::string current;
  bool is_inside_quotes = false;
  bool has_quotes = false;
  const auto end_argument = [&] {
    if (!current.empty() || (has_quotes && empty == EmptyArguments::kKept))
      arguments.push_back(current);
    current.clear();
    has_quotes = false;
  };
  for (std::size_t i = 0; i < line.size(); ++i) {
    const char c = line[i];
    const char next = i + 1 < line.size() ? line[i + 1] : '\0';
    if ((c == ' ' || c == '\t') && !is_inside_quotes) {
      end_argument();
    } else if (c == '"') {
      is_inside_quotes = !is_inside_quotes;
      has_quotes = true;
    } else if (c == '^' && (next == '"' || next == '^')) {
      current.push_back(next);
      ++i;
    } else {
      current.push_back(c);
    }
  }
  end_argument();
  return arguments;
}

std::string JoinCommandLine(const std::vector<std::string>& arguments) {
  std::string line;
  for (const std::string& argument : arguments) {
    if (!line.empty()) line.push_back(' ');
    const bool needs_quotes =
        argument.empty() || argument.find_first_of(" \t") != std::string::npos;
    if (needs_quotes) line.push_back('"');
    for (const char c : argument) {
      if (c == '"' || c == '^') line.push_back('^');
      line.push_back(c);
    }
    if (needs_quotes) line.push_back('"');
  }
  return line;
}

}  // namespace tmw
