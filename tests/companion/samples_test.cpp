#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <fstream>
#include <iostream>
#include <map>

#include "sha256/sha256.h"
#include "tests/companion/archive_run.h"
#include "tests/support/sandbox.h"

namespace tests {
namespace {

struct Sample {
  std::string name;
  int code = 0;  // of extracting everything
  std::map<std::string, std::string> files;
  std::string first_volume;
};

std::string SamplesFolder() {
  const char* const chosen = std::getenv("TMW_RAR_SAMPLES");
  return chosen != nullptr ? chosen : TMW_RAR_SAMPLES;
}

// The texts in double quotes on a line; none of them has a quote or an escape in it.
std::vector<std::string> Quoted(const std::string& line) {
  std::vector<std::string> texts;
  for (std::size_t at = line.find('"'); at != std::string::npos; at = line.find('"', at)) {
    const std::size_t end = line.find('"', at + 1);
    texts.push_back(line.substr(at + 1, end - at - 1));
    at = end + 1;
  }
  return texts;
}

// expected.json is indented by depth: samples, their properties, files and volumes.
std::vector<Sample> ReadExpectations(const std::string& path) {
  std::ifstream file(ToPath(path));
  std::vector<Sample> samples;
  for (std::string line; std::getline(file, line);) {
    const std::size_t depth = line.find_first_not_of(' ');
    const std::vector<std::string> texts = Quoted(line);
    if (texts.empty()) continue;
    if (depth == 1) {
      samples.emplace_back().name = texts[0];
    } else if (depth == 2 && texts[0] == "code") {
      samples.back().code = std::stoi(texts[1]);
    } else if (depth == 3 && texts.size() == 2) {
      samples.back().files[texts[0]] = texts[1];
    } else if (depth == 3 && samples.back().first_volume.empty()) {
      samples.back().first_volume = texts[0];
    }
  }
  return samples;
}

// The last code that reports a failure.
int FinalCode(const ArchiveRun& run) {
  if (run.open_code != 0) return run.open_code;
  if (run.end_code != ports::kRarEndOfArchive) return run.end_code;
  for (auto entry = run.entries.rbegin(); entry != run.entries.rend(); ++entry) {
    if (entry->code != 0) return entry->code;
  }
  return 0;
}

// Links are refused by rule; archives that are sound otherwise count as sound.
void ForgetRefusedLinks(ArchiveRun& run, const Sample& sample) {
  std::erase_if(run.entries, [&](EntryResult entry) {
    std::replace(entry.name.begin(), entry.name.end(), '\\', '/');
    return entry.code == ports::kRarCreateFailed && !sample.files.contains(entry.name);
  });
}

TEST(RarSamples, ArchivesOfOtherMakersGiveTheirFilesOrTheirCode) {
  const std::string folder = SamplesFolder();
  const std::vector<Sample> samples = ReadExpectations(folder + "/expected.json");
  if (samples.empty()) GTEST_SKIP() << "no sample archives in " << folder;
  for (const Sample& sample : samples) {
    const Sandbox sandbox;
    ArchiveRun run = RunArchive(folder + "/" + sample.first_volume, 2, sandbox.Path());
    ForgetRefusedLinks(run, sample);
    EXPECT_EQ(FinalCode(run), sample.code) << sample.name << " " << run.Codes();
    // The content that an entry with damaged data leaves does not matter.
    if (sample.code == ports::kRarBadData) continue;
    for (const auto& [name, hash] : sample.files) {
      // One is too large to be hashed here; its checksum was found right.
      if (hash == "HUGE") continue;
      EXPECT_EQ(sha256::CSHA256().SHA256(sandbox.Read(name)), hash) << sample.name << " " << name;
    }
  }
  std::cout << samples.size() << " sample archives judged\n";
}

}  // namespace
}  // namespace tests
