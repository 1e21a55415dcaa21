#include "tools/program.h"

#include <algorithm>
#include <iostream>

#include "foundation/error_handling.h"
#include "foundation/text.h"
#include "foundation/version.h"
#include "ports/ports.h"
#include "ports/processes.h"
#include "tools/fill.h"
#include "tools/json.h"
#include "tools/tools_texts.h"

namespace tools {
namespace {

using Words = std::vector<std::string>;

const Option kJson = {kJsonOption, "", texts::kJsonHelp};

bool Has(const Words& arguments, const char* option) {
  return std::find(arguments.begin(), arguments.end(), option) != arguments.end();
}

const Command* FindCommand(const Program& program, const std::string& name) {
  const auto found =
      std::find_if(program.commands.begin(), program.commands.end(),
                   [&](const Command& command) { return command.usage.name == name; });
  return found == program.commands.end() ? nullptr : &*found;
}

std::string HelpFor(const Program& program, const std::string& name) {
  const Command* const only = FindCommand(program, name);
  std::string help = program.help_head + "\n\n";
  for (const Command& command : program.commands) {
    if (only == nullptr || only == &command) help += HelpLines(program.name, command.usage);
  }
  help += "  " + program.name + " --help | --version\n\n";
  if (program.has_json) help += HelpLine(kJson);
  return help + program.help_tail;
}

int RunCommand(const Program& program, const Words& arguments) {
  if (arguments.empty()) throw UsageError(texts::kNoCommand);
  const Command* const found = FindCommand(program, arguments[0]);
  if (found == nullptr && arguments[0].starts_with('-'))
    throw UsageError(Fill(texts::kUnknownOption, {arguments[0]}));
  if (found == nullptr) throw UsageError(Fill(texts::kUnknownCommand, {arguments[0]}));
  Usage usage = found->usage;
  if (program.has_json) usage.options.push_back(kJson);
  const int code = found->run(ParseArguments(usage, {arguments.begin() + 1, arguments.end()}));
  std::cout.flush();
  return std::cout ? code : program.failed;
}

}  // namespace

int RunProgram(const Program& program) {
  // Taken from the port, which has them in UTF-8 on both systems.
  return RunProgram(program, ports::CurrentPorts().processes->OwnArgumentList());
}

int RunProgram(const Program& program, const Words& arguments) {
  if (Has(arguments, "--help") || Has(arguments, "-h")) {
    std::cout << HelpFor(program, arguments[0]);
    return kDone;
  }
  if (!arguments.empty() && arguments[0] == "--version") {
    std::cout << program.name << ' ' << tmw::GetAppVersionString() << '\n';
    return kDone;
  }
  const auto complain = [&](const std::string& text) {
    std::cerr << program.name << ": " << text << '\n';
    if (program.has_json && Has(arguments, kJsonOption)) std::cout << JsonLine({{"error", text}});
  };
  try {
    return RunCommand(program, arguments);
  } catch (const UsageError& error) {
    complain(Fill(texts::kWithHelpHint, {error.what(), program.name}));
    return kWrongUsage;
  } catch (...) {
    const tmw::ProgramError error = tmw::CurrentError();
    const std::string text = tmw::TrimCharacters(error.Description, tmw::kCrLf);
    const bool is_own = error.Number == tmw::kProgramErrorNumber;
    complain(is_own ? text : Fill(texts::kNumberedError, {std::to_string(error.Number), text}));
    return program.failed;
  }
}

}  // namespace tools
