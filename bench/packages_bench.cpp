#include <fstream>
#include <iostream>
#include <string>
#include <vector>

#include "packages/hash_api.h"
#include "packages/rar_archive.h"
#include "packages/tm_zipper.h"
#include "packing/rar_writer.h"
#include "ports/host.h"
#include "ports/ports.h"

// One operation of the packages room a run, for run.py to time. Prints the peak of the
// process's memory.
namespace {

bool Run(const std::vector<std::string>& arguments) {
  const std::string& what = arguments[0];
  std::string error;
  if (what == "hash") {
    std::cout << tmw::GetFileHash(arguments[1]) << "\n";
    return true;
  }
  if (what == "extract") return tmw::UnrarAllFiles(arguments[1], arguments[2], "", error);
  if (what == "pack") {
    packing::StoredRarWriter writer(arguments[1], packing::RarFormat::kRar5);
    for (std::size_t i = 2; i < arguments.size(); ++i) {
      writer.AddFile({"file" + std::to_string(i), 1700000000, 0644}, arguments[i]);
    }
    writer.Finish();
    return true;
  }
  tmw::TmZipper zipper;
  zipper.ZipFileName = arguments[1];
  zipper.AddFileName(arguments[2]);
  return what == "zip" && zipper.DoZipping() == 0;
}

void PrintPeakMemory() {
  std::ifstream status("/proc/self/status");
  for (std::string line; std::getline(status, line);) {
    if (line.starts_with("VmHWM")) std::cout << line << "\n";
  }
}

}  // namespace

int main(int argc, char** argv) {
  const auto host = ports::MakeHost(argc, argv);
  ports::CurrentPorts() = host->MakePorts();
  if (argc < 3 || !Run({argv + 1, argv + argc})) {
    std::cerr << "packages_bench: failed\n";
    return 1;
  }
  PrintPeakMemory();
  return 0;
}
