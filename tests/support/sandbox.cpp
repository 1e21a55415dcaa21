#include "tests/support/sandbox.h"

#include <gtest/gtest.h>

#include <fstream>
#include <iterator>
#include <random>

#include "tests/support/environment.h"

namespace tests {

namespace fs = std::filesystem;

fs::path ToPath(std::string_view utf8) {
  return fs::path(std::u8string(utf8.begin(), utf8.end()));
}

std::string FromPath(const fs::path& path) {
  const std::u8string text = path.u8string();
  return {text.begin(), text.end()};
}

Sandbox::Sandbox() {
  std::random_device random;
  const auto parent = Variable("TMW_TEST_FOLDER");
  root_ = parent ? fs::absolute(ToPath(*parent)).make_preferred() : fs::temp_directory_path();
  root_ /= ToPath("проба " + std::to_string(random()));
  fs::create_directories(root_);
}

Sandbox::~Sandbox() {
  std::error_code ignored;
  fs::remove_all(root_, ignored);
}

std::string Sandbox::Path() const {
  return FromPath(root_);
}

std::string Sandbox::Path(std::string_view name) const {
  return FromPath(root_ / ToPath(name));
}

std::string Sandbox::Write(std::string_view name, std::string_view bytes) const {
  const fs::path path = root_ / ToPath(name);
  fs::create_directories(path.parent_path());
  std::ofstream file(path, std::ios::binary);
  file.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
  EXPECT_TRUE(file.good()) << name;
  return FromPath(path);
}

std::string Sandbox::Read(std::string_view name) const {
  std::ifstream file(root_ / ToPath(name), std::ios::binary);
  EXPECT_TRUE(file.good()) << name;
  return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

bool Sandbox::Has(std::string_view name) const {
  std::error_code ignored;
  return fs::exists(fs::symlink_status(root_ / ToPath(name), ignored));
}

}  // namespace tests
