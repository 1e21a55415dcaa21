#pragma once

#include <string>

// What a zip command prints while it works.
namespace companion::zip::texts {

inline std::string NotMatched(const std::string& name) {
  return "zip warning: name not matched: " + name;
}
inline std::string Adding(const std::string& name) {
  return "  adding: " + name;
}

}  // namespace companion::zip::texts
