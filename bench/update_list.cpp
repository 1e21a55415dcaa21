// The update list over 5,000 files beside openssl over those whose length matches: two thirds of
// the files are current, a sixth has another length, a sixth another content of the same length.
// Prints both wall times (the best of five rounds, taken in turn) and their ratio.
#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <random>
#include <string>
#include <vector>

#include "engine/update_list.h"
#include "packages/hash_api.h"
#include "ports/host.h"
#include "ports/ports.h"

namespace {

namespace fs = std::filesystem;

// Writes the files and their list; names of those to be hashed go to hashed.txt.
std::vector<tmw::WuFileNode> MakeFiles(const fs::path& folder) {
  constexpr int kFiles = 5000;
  std::mt19937 random(1);
  std::ofstream hashed(folder / "hashed.txt");
  std::vector<tmw::WuFileNode> nodes;
  for (int i = 0; i < kFiles; ++i) {
    std::string bytes(random() % 200'000, '\0');
    for (char& byte : bytes)
      byte = static_cast<char>(random());
    const std::string name = "f" + std::to_string(i);
    std::ofstream(folder / name, std::ios::binary) << bytes;
    tmw::WuFileNode node;
    node.OrigName = name;
    node.Folder = folder.string();
    node.OrigSize = static_cast<std::int32_t>(bytes.size()) + (i % 6 == 0 ? 1 : 0);
    node.Hash = i % 6 == 1 ? std::string(64, '0') : tmw::GetFileHash((folder / name).string());
    if (i % 6 != 0) hashed << name << '\n';
    nodes.push_back(node);
  }
  return nodes;
}

template <typename Action>
double Seconds(Action action) {
  const auto start = std::chrono::steady_clock::now();
  action();
  return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

}  // namespace

int main(int argc, char** argv) {
  const auto host = ports::MakeHost(argc, argv);
  ports::CurrentPorts() = host->MakePorts();
  const fs::path folder = fs::temp_directory_path() / "update-list-bench";
  fs::create_directories(folder);
  tmw::Manifest manifest;
  manifest.Files = MakeFiles(folder);
  const std::string judge =
      "cd '" + folder.string() + "' && xargs openssl dgst -sha256 <hashed.txt >sums.txt";
  tmw::SilentEvents events;
  double ours = 1e9;
  double theirs = 1e9;
  bool is_done = true;
  for (int round = 0; round < 5; ++round) {
    tmw::UpdateNeed need;
    ours = std::min(
        ours, Seconds([&] { is_done &= tmw::BuildUpdateList(manifest, true, events, need); }));
    theirs = std::min(theirs, Seconds([&] { is_done &= std::system(judge.c_str()) == 0; }));
  }
  fs::remove_all(folder);
  if (!is_done) {
    std::fprintf(stderr, "a round failed\n");
    return 1;
  }
  std::printf("update list %.3f s / openssl %.3f s = %.3f (at most 1.05)\n", ours, theirs,
              ours / theirs);
  return 0;
}
