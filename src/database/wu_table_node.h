#pragma once

#include <cstdint>
#include <string>

namespace tmw {

// One table of the product's database, as a release describes it.
struct WuTableNode {
  bool IsUser = false;  // the user's own content, never delivered
  std::string TableName;
  std::string SrvFile;       // dictionaries only, as the next two
  std::int32_t SrvSize = 0;  // bytes
  std::string Hash;          // of the content in the table text format, lower-case SHA-256
  bool NeedUpdate = false;
};

}  // namespace tmw
