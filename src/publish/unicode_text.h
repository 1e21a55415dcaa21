#pragma once

#include <memory>
#include <string>

#include "ports/file_system.h"
#include "sha256/sha256.h"

namespace publish {

// A UTF-16 file read as the updater reads it, but piece by piece: a byte-order mark is passed over,
// what is no text becomes U+FFFD.
class UnicodeText {
 public:
  explicit UnicodeText(const std::string& path);

  // The next whole characters, in UTF-8; empty at the end.
  std::string Next();

  // Of the whole text's code units, by which the updater judges it. Reads what is left.
  std::string Hash();

 private:
  std::string path_;
  std::unique_ptr<ports::File> file_;
  sha256::Stream digest_;
  std::string rest_;  // bytes of a character that is not whole yet
  bool is_start_ = true;
};

}  // namespace publish
