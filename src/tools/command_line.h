#pragma once

#include <cstddef>
#include <optional>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

// The command line of a tool: PROGRAM COMMAND [OPTIONS AND WORDS]. What a command takes is declared
// once, for reading it and for the help.
namespace tools {

// The command line is wrong; what() says how.
class UsageError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

// "--name", "--name VALUE" or "--name=VALUE".
struct Option {
  std::string name;   // with its dashes
  std::string value;  // the value's name in the help; empty if the option takes none
  std::string help;
};

// What a command was given.
class Arguments {
 public:
  Arguments(std::vector<std::pair<std::string, std::string>> options,
            std::vector<std::string> words)
      : options_(std::move(options)), words_(std::move(words)) {}

  bool Has(const std::string& option) const { return Value(option).has_value(); }

  // The last value if the option was given several times, nothing if it was not given.
  std::optional<std::string> Value(const std::string& option) const;

  // All its values, in the given order.
  std::vector<std::string> Values(const std::string& option) const;

  // Raises a UsageError if the option was not given.
  std::string NeededValue(const std::string& option) const;

  // What is no option, in the given order.
  const std::vector<std::string>& Words() const { return words_; }

 private:
  std::vector<std::pair<std::string, std::string>> options_;
  std::vector<std::string> words_;
};

// How a command is used.
struct Usage {
  std::string name;
  std::string words;  // how the help names them: "OLD NEW"
  std::size_t least_words = 0;
  std::size_t most_words = 0;
  std::string help;
  std::vector<Option> options;
};

struct Command {
  Usage usage;
  int (*run)(const Arguments&) = nullptr;  // gives the exit code
};

// Reads what follows the command's name. Everything after "--" is a word. Raises a UsageError for
// an option that is not declared, a missing value or a wrong number of words.
Arguments ParseArguments(const Usage& usage, const std::vector<std::string>& given);

// The help's lines about a command and its options.
std::string HelpLines(const std::string& program, const Usage& usage);
std::string HelpLine(const Option& option);

}  // namespace tools
