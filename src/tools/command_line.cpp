#include "tools/command_line.h"

#include <algorithm>
#include <cxxopts.hpp>

#include "foundation/encodings.h"
#include "foundation/text.h"
#include "tools/fill.h"
#include "tools/tools_texts.h"

namespace tools {
namespace {

// Columns of the help.
constexpr std::size_t kCommandIndent = 2;
constexpr std::size_t kOptionIndent = 6;
constexpr std::size_t kHelpIndent = 40;
constexpr std::size_t kWidth = 100;

// The usage on the left, what it does on the right, in as many lines as it needs.
std::string TwoColumns(std::size_t indent, const std::string& usage, const std::string& help) {
  std::string lines;
  std::string line = std::string(indent, ' ') + usage;
  std::size_t column = std::max(kHelpIndent, tmw::CountCharacters(line) + 1);
  for (const std::string& word : tmw::Split(help, " ")) {
    if (column + tmw::CountCharacters(word) > kWidth) {
      lines += line + "\n";
      line.clear();
      column = kHelpIndent;
    }
    line.append(column - tmw::CountCharacters(line), ' ') += word;
    column = tmw::CountCharacters(line) + 1;
  }
  return lines + line + "\n";
}

std::string WithValue(const std::string& name, const std::string& value) {
  return value.empty() ? name : name + " " + value;
}

const Option* Find(const Usage& usage, const std::string& name) {
  const auto found = std::find_if(usage.options.begin(), usage.options.end(),
                                  [&](const Option& option) { return option.name == name; });
  return found == usage.options.end() ? nullptr : &*found;
}

// A misspelt option is often why something else is missing, so it is what the user has to hear of.
void RequireKnown(const Usage& usage, const std::vector<std::string>& given) {
  for (std::size_t i = 0; i < given.size(); ++i) {
    if (given[i].size() < 2 || !given[i].starts_with('-')) continue;
    const std::size_t end = given[i].find('=');
    const Option* const option = Find(usage, given[i].substr(0, end));
    if (option == nullptr) throw UsageError(Fill(texts::kUnknownOption, {given[i]}));
    if (end == std::string::npos && !option->value.empty()) ++i;  // its value
  }
}

cxxopts::ParseResult Parse(const Usage& usage, const std::vector<std::string>& given) {
  cxxopts::Options parser(usage.name);
  parser.allow_unrecognised_options();
  for (const Option& option : usage.options) {
    const auto value = cxxopts::value<std::string>();
    parser.add_options()(option.name.substr(2), "",
                         option.value.empty() ? value->implicit_value("") : value);
  }
  std::vector<const char*> arguments = {usage.name.c_str()};
  for (const std::string& argument : given)
    arguments.push_back(argument.c_str());
  try {
    return parser.parse(static_cast<int>(arguments.size()), arguments.data());
  } catch (const cxxopts::exceptions::missing_argument&) {
    throw UsageError(Fill(texts::kOptionNeedsValue, {given.back()}));
  }
}

}  // namespace

std::optional<std::string> Arguments::Value(const std::string& option) const {
  const auto found = std::find_if(options_.rbegin(), options_.rend(),
                                  [&](const auto& given) { return given.first == option; });
  if (found == options_.rend()) return std::nullopt;
  return found->second;
}

std::vector<std::string> Arguments::Values(const std::string& option) const {
  std::vector<std::string> values;
  for (const auto& [name, value] : options_) {
    if (name == option) values.push_back(value);
  }
  return values;
}

std::string Arguments::NeededValue(const std::string& option) const {
  const auto value = Value(option);
  if (!value) throw UsageError(Fill(texts::kOptionIsMissing, {option}));
  return *value;
}

Arguments ParseArguments(const Usage& usage, const std::vector<std::string>& given) {
  const auto words_only = std::find(given.begin(), given.end(), "--");
  RequireKnown(usage, {given.begin(), words_only});
  const cxxopts::ParseResult result = Parse(usage, {given.begin(), words_only});
  std::vector<std::string> words = result.unmatched();
  std::vector<std::pair<std::string, std::string>> options;
  for (const cxxopts::KeyValue& read : result.arguments()) {
    const std::string name = "--" + read.key();
    const Option* const declared = Find(usage, name);
    if (declared->value.empty() && !read.value().empty())
      throw UsageError(Fill(texts::kOptionTakesNoValue, {name}));
    options.emplace_back(name, read.value());
  }
  if (words_only != given.end()) words.insert(words.end(), words_only + 1, given.end());
  if (words.size() < usage.least_words) throw UsageError(texts::kTooFewArguments);
  if (words.size() > usage.most_words) throw UsageError(texts::kTooManyArguments);
  return {std::move(options), std::move(words)};
}

std::string HelpLines(const std::string& program, const Usage& usage) {
  std::string lines =
      TwoColumns(kCommandIndent, WithValue(program + " " + usage.name, usage.words), usage.help);
  for (const Option& option : usage.options)
    lines += HelpLine(option);
  return lines;
}

std::string HelpLine(const Option& option) {
  return TwoColumns(kOptionIndent, WithValue(option.name, option.value), option.help);
}

}  // namespace tools
