#include <filesystem>
#include <fstream>
#include <iostream>
#include <iterator>

#include "platform/host.h"
#include "tests/engine/release.h"
#include "tests/support/sandbox.h"

// Writes a release for a server:
//   release_writer SERVER-FOLDER URL VERSION SOURCE-FOLDER
// Every file below the source folder is a program file of the product, in the same place.
int main(int argc, char** argv) {
  if (argc != 5) {
    std::cerr << "release_writer SERVER-FOLDER URL VERSION SOURCE-FOLDER\n";
    return 1;
  }
  const auto host = platform::MakeHost(argc, argv);
  platform::CurrentPorts() = host->MakePorts();
  tests::Release release;
  release.version = argv[3];
  release.version_id = "Release " + release.version;
  const std::filesystem::path source(argv[4]);
  for (const auto& entry : std::filesystem::recursive_directory_iterator(source)) {
    if (!entry.is_regular_file()) continue;
    std::ifstream stream(entry.path(), std::ios::binary);
    tests::ReleaseFile file;
    file.name = tests::FromPath(entry.path().filename());
    file.content.assign(std::istreambuf_iterator<char>(stream), {});
    const auto folder = std::filesystem::relative(entry.path().parent_path(), source);
    file.folder = "{p}" + (folder == "." ? "" : tests::FromPath(folder));
    file.is_executable = (entry.status().permissions() & std::filesystem::perms::owner_exec) !=
                         std::filesystem::perms::none;
    release.files.push_back(file);
  }
  tests::WriteRelease(release, argv[1], argv[2]);
}
