#include <algorithm>
#include <cstdlib>
#include <exception>
#include <iostream>

#include "foundation/command_line.h"
#include "foundation/error_handling.h"
#include "foundation/version.h"
#include "jetsql/commands.h"
#include "ports/host.h"
#include "ports/ports.h"
#include "ports/processes.h"

namespace {

constexpr int kFailed = 1;
constexpr int kWrongUsage = 2;

constexpr const char* kHelp = R"(jetsql - looks after databases: structure, statements, table texts

  jetsql create FILE                    make an empty database
  jetsql run FILE [STATEMENTS]          run statements, separated by ";", from the argument or
                                        standard input; all of them or, on an error, none
      --file SCRIPT                     ... from a file (UTF-8 with its mark, else code page 1251)
  jetsql tables FILE [TABLE]            list the tables, or show the structure of one
      --all                             ... with the system's own
  jetsql export FILE TABLE [TEXTFILE]   write a table as text (to standard output: UTF-8)
      --structure                       ... without its rows
      --utf8                            ... a file in UTF-8 instead of code page 1251
  jetsql import FILE TEXTFILE...        replace tables by those of .table and .tablestruct files
  jetsql compact FILE NEWFILE           copy a database without its free space
  jetsql --help | --version

Rows of SELECT statements are printed with a line of names first, tabs between the columns, values
as in table texts. Databases are opened exclusively for changes, shared for reading.
Exit codes: 0 done, 1 failed (the reason is on standard error), 2 wrong usage.
)";

int Run(const std::vector<std::string>& arguments) {
  const auto has = [&](const char* option) {
    return std::find(arguments.begin(), arguments.end(), option) != arguments.end();
  };
  if (has("--help") || has("-h")) {
    std::cout << kHelp;
    return EXIT_SUCCESS;
  }
  if (!arguments.empty() && arguments[0] == "--version") {
    std::cout << "jetsql " << tmw::GetAppVersionString() << '\n';
    return EXIT_SUCCESS;
  }
  try {
    jetsql::RunCommand(arguments);
    std::cout.flush();
    return std::cout ? EXIT_SUCCESS : kFailed;
  } catch (const jetsql::UsageError& error) {
    std::cerr << "jetsql: " << error.what() << "; see jetsql --help\n";
    return kWrongUsage;
  } catch (...) {
    const tmw::ProgramError error = tmw::CurrentError();
    std::cerr << "jetsql: error " << error.Number << ": " << error.Description << '\n';
    return kFailed;
  }
}

}  // namespace

int main(int argc, char** argv) {
  const auto host = ports::MakeHost(argc, argv);
  ports::CurrentPorts() = host->MakePorts();
  // Taken from the port: it has them in UTF-8 on both systems.
  return Run(tmw::SplitCommandLine(ports::CurrentPorts().processes->OwnArguments()));
}
