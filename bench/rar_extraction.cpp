#include <archive.h>
#include <archive_entry.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <functional>
#include <string>
#include <vector>

#include "companion/os.h"
#include "companion/rar/archive.h"
#include "companion/rar/failure.h"

// Unpacks archives again and again in this process, with the companion's reader and with
// libarchive, without writing, and prints the ratio of the best times. Both compute the checksums.
//   rar_extraction VOLUME[,VOLUME...] ...
namespace {

using Seconds = std::chrono::duration<double>;

struct Outcome {
  bool is_right = true;
  std::uint64_t bytes = 0;
};

std::vector<std::string> SplitVolumes(const std::string& text) {
  std::vector<std::string> volumes;
  for (std::size_t begin = 0; begin <= text.size();) {
    const std::size_t comma = std::min(text.find(',', begin), text.size());
    volumes.push_back(text.substr(begin, comma - begin));
    begin = comma + 1;
  }
  return volumes;
}

Outcome RunOurs(const std::vector<std::string>& volumes) {
  using namespace companion;
  Outcome outcome;
  rar::Archive archive(volumes[0], true, [](const std::string& path) {
    os::ErrorCode error = 0;
    return os::OpenForReading(path, error);
  });
  archive.SetListener([&](const std::uint8_t*, std::size_t length) {
    outcome.bytes += length;
    return true;
  });
  while (archive.ReadHeader() == ports::kRarOk) {
    if (archive.Current().special) continue;
    if (archive.Test() != ports::kRarOk) outcome.is_right = false;
  }
  return outcome;
}

Outcome RunLibarchive(const std::vector<std::string>& volumes) {
  Outcome outcome;
  archive* reader = archive_read_new();
  archive_read_support_format_rar(reader);
  archive_read_support_format_rar5(reader);
  std::vector<const char*> names;
  for (const std::string& volume : volumes)
    names.push_back(volume.c_str());
  names.push_back(nullptr);
  outcome.is_right = archive_read_open_filenames(reader, names.data(), 256U << 10U) == ARCHIVE_OK;
  archive_entry* entry = nullptr;
  while (outcome.is_right) {
    const int header = archive_read_next_header(reader, &entry);
    if (header == ARCHIVE_EOF) break;
    if (header < ARCHIVE_WARN) outcome.is_right = false;
    if (!outcome.is_right || archive_entry_filetype(entry) != AE_IFREG) continue;
    const void* block = nullptr;
    std::size_t length = 0;
    la_int64_t offset = 0;
    int result = ARCHIVE_OK;
    while ((result = archive_read_data_block(reader, &block, &length, &offset)) == ARCHIVE_OK) {
      outcome.bytes += length;
    }
    if (result != ARCHIVE_EOF) outcome.is_right = false;
  }
  archive_read_free(reader);
  return outcome;
}

// The best of several rounds of at least a tenth of a second, per run.
double Measure(const std::function<void()>& run) {
  double best = 1e9;
  for (int round = 0; round < 5; ++round) {
    int runs = 0;
    const auto begin = std::chrono::steady_clock::now();
    Seconds passed{};
    do {
      run();
      ++runs;
      passed = std::chrono::steady_clock::now() - begin;
    } while (passed.count() < 0.1);
    best = std::min(best, passed.count() / runs);
  }
  return best;
}

}  // namespace

int main(int argc, char** argv) {
  for (int i = 1; i < argc; ++i) {
    const std::vector<std::string> volumes = SplitVolumes(argv[i]);
    const std::string name = volumes[0].substr(volumes[0].find_last_of('/') + 1);
    try {
      const Outcome ours = RunOurs(volumes);
      const Outcome theirs = RunLibarchive(volumes);
      const double time = Measure([&] { RunOurs(volumes); });
      std::printf("%-55s %9.2f MB/s", name.c_str(), static_cast<double>(ours.bytes) / time / 1e6);
      if (theirs.is_right && theirs.bytes == ours.bytes && ours.is_right) {
        std::printf("  %.2f x libarchive's time\n",
                    time / Measure([&] { RunLibarchive(volumes); }));
      } else {
        std::printf("  libarchive reads it wrong%s\n", ours.is_right ? "" : ", and so do we");
      }
    } catch (const companion::rar::Failure& failure) {
      std::printf("%-55s code %d\n", name.c_str(), static_cast<int>(failure.code));
    }
  }
  return 0;
}
