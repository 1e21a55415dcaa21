#include <cstdlib>
#include <fstream>
#include <iostream>
#include <iterator>

#include "ports/clock.h"
#include "ports/host.h"
#include "ports/processes.h"
#include "tests/companion/packed_streams.h"
#include "tests/companion/rar_entries.h"
#include "tests/support/sandbox.h"

// An archiver to try tmpublish with: test_packer MODE LOG ARCHIVE FILE. It packs runs of equal
// bytes and adds the file's name to LOG; other modes than "good" are ways in which archivers fail.
namespace {

std::string Packed(const std::string& name, const std::string& content) {
  tests::Rar5Writer writer;
  for (std::size_t i = 0; i < content.size();) {
    constexpr std::size_t kLongestRun = 4096;
    std::size_t run = 1;
    while (run < kLongestRun && i + run < content.size() && content[i + run] == content[i])
      ++run;
    writer.Literal(static_cast<std::uint8_t>(content[i]));
    if (run > 2) writer.Match(1, static_cast<std::uint32_t>(run - 1));
    i += run > 2 ? run : 1;
  }
  writer.EndBlock(true);
  const tests::Bytes packed = writer.Finish();
  tests::EntryHeader header = tests::FileHeader(name, content);
  header.packed_size = packed.size();
  header.method = 3;
  return MakeEntryHeader(tests::RarFormat::kRar5, header) +
         std::string(packed.begin(), packed.end());
}

}  // namespace

int main(int argc, char** argv) {
  const auto host = ports::MakeHost(argc, argv);
  const ports::Ports ports = host->MakePorts();
  const std::vector<std::string> words = ports.processes->OwnArgumentList();
  const std::string& mode = words.at(0);
  const std::string& name = words.at(3);
  std::ifstream file(tests::ToPath(name), std::ios::binary);
  const std::string content{std::istreambuf_iterator<char>(file), {}};
  std::ofstream(tests::ToPath(words.at(1)), std::ios::app) << name << "\n";
  std::cout << "packing\n" << (mode == "fails" ? "no room for the archive\n" : "") << std::flush;
  if (mode == "fails") return 3;
  if (mode == "hangs") ports.clock->Sleep(60'000);
  if (mode == "nothing") return 0;
  std::ofstream out(tests::ToPath(words.at(2)), std::ios::binary);
  out << packing::MakeBeginning(tests::RarFormat::kRar5);
  out << Packed(mode == "name" ? "x" + name : name, mode == "other" ? content + "!" : content);
  if (mode == "two") out << Packed("second", content);
  out << packing::MakeEnd(tests::RarFormat::kRar5);
  if (mode == "garbage") out.seekp(0) << "none";
  return out ? 0 : 1;
}
