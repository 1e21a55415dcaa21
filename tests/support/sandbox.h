#pragma once

#include <filesystem>
#include <string>
#include <string_view>

namespace tests {

// Owner of one temporary folder with a Cyrillic name and a blank in it; all real files of a test
// lie inside and go with it. It stands in $TMW_TEST_FOLDER, else in the folder for temporary files.
class Sandbox {
 public:
  Sandbox();
  Sandbox(const Sandbox&) = delete;
  Sandbox& operator=(const Sandbox&) = delete;
  ~Sandbox();

  // UTF-8, without a separator at the end. With a name: the path of that name in it.
  std::string Path() const;
  std::string Path(std::string_view name) const;

  // Writes a file, making its folders; returns its path.
  std::string Write(std::string_view name, std::string_view bytes) const;

  // The bytes of a file; fails the test if it is missing.
  std::string Read(std::string_view name) const;

  bool Has(std::string_view name) const;

 private:
  std::filesystem::path root_;
};

// UTF-8 to the system's path and back.
std::filesystem::path ToPath(std::string_view utf8);
std::string FromPath(const std::filesystem::path& path);

}  // namespace tests
