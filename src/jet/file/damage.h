#pragma once

#include <exception>
#include <string>

#include "jet/file/format.h"

namespace jet::file {

// What a file holds contradicts the format. Thrown by the checked accessors; the room's doors turn
// it into a numbered error, the checker into a finding.
class Damage : public std::exception {
 public:
  // The kind is a text that outlives everything; details make its words complete.
  Damage(PageNumber page, const char* kind, const std::string& detail = {})
      : Page(page), Kind(kind), what_(detail.empty() ? kind : kind + (": " + detail)) {}

  // A sentence's beginning in the user's language, without the page.
  const char* what() const noexcept override { return what_.c_str(); }

  PageNumber Page;
  const char* Kind;

 private:
  std::string what_;
};

}  // namespace jet::file
