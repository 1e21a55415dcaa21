#pragma once

#include <memory>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "foundation/path_guard.h"
#include "foundation/xml_helpers.h"
#include "publish/fault_texts.h"
#include "tools/fill.h"

namespace publish {

// Something that would fail or go wrong for the updater or its user.
struct Fault {
  std::string place;  // a file, a table, a line of the digest …
  std::string text;   // a complete sentence
};

// All faults, in the order in which they were found.
class Faults {
 public:
  void Add(std::string place, std::string text) {
    faults_.push_back({std::move(place), std::move(text)});
  }
  // Fills the values into the text.
  void Add(std::string place, std::string_view text, const std::vector<std::string>& values) {
    Add(std::move(place), tools::Fill(text, values));
  }
  // If the path guard refuses a name, adds its reason and returns false.
  bool Require(const tmw::GuardVerdict& verdict, const std::string& place) {
    if (!verdict.IsAccepted()) Add(place, texts::kRefused, {verdict.message});
    return verdict.IsAccepted();
  }
  void Append(const Faults& others) {
    faults_.insert(faults_.end(), others.faults_.begin(), others.faults_.end());
  }

  bool IsEmpty() const { return faults_.empty(); }
  const std::vector<Fault>& All() const { return faults_; }

 private:
  std::vector<Fault> faults_;
};

// Raises the text as a ProgramError, with the name in quotes filled in.
[[noreturn]] void Raise(const char* text, const std::string& name);

// Reads an XML file. Returns null if it cannot be read, which is a fault.
std::unique_ptr<tmw::XmlDocument> OpenXml(const std::string& file, const std::string& place,
                                          Faults& faults);

}  // namespace publish
