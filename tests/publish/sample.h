#pragma once

#include <cstdint>
#include <string>
#include <utility>
#include <vector>

#include "publish/publisher.h"
#include "tests/support/sandbox.h"

namespace tests {

// A small product with everything that a release of it is made from, in one sandbox.
class Sample {
 public:
  explicit Sample(const Sandbox& sandbox);

  // Replaces a piece of the description, which must contain it.
  void Describe(const std::string& piece, const std::string& instead);
  void WriteScript(const std::string& name, const std::string& from, const std::string& to) const;
  // Runs a statement on the reference database.
  void Execute(const std::string& sql) const;

  // Publishes into "server"; returns the faults as "place: text".
  std::vector<std::string> Publish() const;
  // Checks the folder or address; returns the faults in the same form.
  static std::vector<std::string> Check(const std::string& place, const std::string& from = {});

  publish::PublishOptions options;
  std::string description;

 private:
  const Sandbox& sandbox_;
};

// Returns whether one of the faults contains that text.
bool HasFault(const std::vector<std::string>& faults, const std::string& piece);

using Contents = std::vector<std::pair<std::string, std::string>>;  // names and bytes of entries

// Writes a package in the sandbox.
void Pack(const Sandbox& sandbox, const std::string& package, const Contents& contents,
          bool with_trailer = false);

// The names and bytes of all files below a folder, as one text.
std::string Everything(const Sandbox& sandbox, const std::string& folder);

std::string Utf16(const std::string& text);

// A library of Windows with nothing in it but what registering and versions need.
std::string PeImage(int bits, const std::string& exported, std::uint32_t major_and_minor);

}  // namespace tests
