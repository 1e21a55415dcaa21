#pragma once

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <memory>
#include <string>
#include <vector>

#include "tests/fakes/memory_page_file.h"

// Files that other programs made. They are no part of the repository; tests that need them are
// skipped where their folder is missing.
namespace tests {

// The variable of the environment wins over the folder that the build was configured with.
inline std::filesystem::path SamplesFolder() {
  const char* const folder = std::getenv("TMW_MDB_SAMPLES");
  return folder != nullptr && *folder != '\0' ? folder : TMW_MDB_SAMPLES_FOLDER;
}

class JetSamples : public testing::Test {
 protected:
  void SetUp() override {
    if (!std::filesystem::exists(SamplesFolder() / "expected.json"))
      GTEST_SKIP() << "no samples in " << SamplesFolder();
  }
};

inline std::string SampleBytes(const std::string& name) {
  std::ifstream file(SamplesFolder() / name, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), {}};
}

inline std::shared_ptr<MemoryPageFile> OpenSample(const std::string& name) {
  return std::make_shared<MemoryPageFile>(SampleBytes(name));
}

// All that are to be readable, by name.
inline std::vector<std::string> SampleNames() {
  std::vector<std::string> names;
  for (const auto& entry : std::filesystem::directory_iterator(SamplesFolder())) {
    const std::string name = entry.path().filename().string();
    if (entry.path().extension() == ".mdb" && !name.starts_with("refuse_")) names.push_back(name);
  }
  return names;
}

}  // namespace tests
