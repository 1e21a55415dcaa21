#pragma once

#include <memory>
#include <string>

#include "ports/file_system.h"
#include "sha256/sha256.h"

namespace publish {

// Reads a UTF-16 file piece by piece, with the same result as the updater's own reading: a
// byte-order mark is skipped, malformed text becomes U+FFFD.
class UnicodeText {
 public:
  explicit UnicodeText(const std::string& path);

  // The next characters, in UTF-8; empty at the end.
  std::string Next();

  // The hash of the whole text's code units, which the updater compares. Reads what is left.
  std::string Hash();

 private:
  std::string path_;
  std::unique_ptr<ports::File> file_;
  sha256::Stream digest_;
  std::string rest_;  // bytes of a character that is not complete yet
  bool is_start_ = true;
};

}  // namespace publish
