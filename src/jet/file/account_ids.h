#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "jet/file/header.h"

namespace jet::file {

// The accounts that every file knows.
enum class Account {
  kAdmin,    // whoever works without a workgroup of their own
  kUsers,    // the group of all users
  kEngine,   // owns system tables and containers
  kCreator,  // whoever made the file
};

// Account ids stand in the owner of an object and in its rows of rights, combined with a stream
// that depends on the header: build number, sort order and date must be final before the first one
// is made.
class AccountIds {
 public:
  explicit AccountIds(const Header& header);

  // As it is to stand in the file.
  std::string Stored(Account account) const;

  // The plain bytes of a stored id, and the reverse. An id of another account may be longer.
  std::string Combine(std::string_view id) const;

 private:
  std::string key_;
};

// The two plain bytes of an account's id.
std::string_view PlainId(Account account);

}  // namespace jet::file
