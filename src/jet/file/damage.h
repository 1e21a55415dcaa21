#pragma once

#include <exception>
#include <string>
#include <utility>

#include "jet/file/format.h"

namespace jet::file {

// What a file holds contradicts the format. Thrown by the checked accessors; the room's doors turn
// it into a numbered error, the checker into a finding.
class Damage : public std::exception {
 public:
  Damage(PageNumber page, std::string what) : Page(page), what_(std::move(what)) {}

  // A sentence's beginning in the user's language, without the page.
  const char* what() const noexcept override { return what_.c_str(); }

  PageNumber Page;

 private:
  std::string what_;
};

}  // namespace jet::file
