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
  std::string place;  // a file, a table, a line of a list …
  std::string text;   // a complete sentence
  std::string cause;  // the text before the values were filled in; equal for faults of one cause
};

// A value and where it stands, for faults about it.
struct Located {
  std::string text;
  std::string place;
};

// All faults, in the order in which they were found, and all warnings: what works today.
class Faults {
 public:
  // The values are filled into the text.
  void Add(std::string place, std::string_view text, const std::vector<std::string>& values = {}) {
    faults_.push_back(Make(std::move(place), text, values));
  }
  void Warn(std::string place, std::string_view text, const std::vector<std::string>& values = {}) {
    warnings_.push_back(Make(std::move(place), text, values));
  }
  // If the path guard refuses a name, adds its reason and returns false.
  bool Require(const tmw::GuardVerdict& verdict, const std::string& place) {
    if (!verdict.IsAccepted()) Add(place, texts::kRefused, {verdict.message});
    return verdict.IsAccepted();
  }
  void Append(const Faults& others) {
    faults_.insert(faults_.end(), others.faults_.begin(), others.faults_.end());
    warnings_.insert(warnings_.end(), others.warnings_.begin(), others.warnings_.end());
  }

  bool IsEmpty() const { return faults_.empty(); }  // apart from warnings
  const std::vector<Fault>& All() const { return faults_; }
  const std::vector<Fault>& Warnings() const { return warnings_; }

 private:
  static Fault Make(std::string place, std::string_view text,
                    const std::vector<std::string>& values) {
    return {std::move(place), tools::Fill(text, values), std::string(text)};
  }

  std::vector<Fault> faults_;
  std::vector<Fault> warnings_;
};

// Raises the text as a ProgramError, with the name in quotes filled in.
[[noreturn]] void Raise(const char* text, const std::string& name);

// Reads an XML file. Returns null if it cannot be read, which is a fault.
std::unique_ptr<tmw::XmlDocument> OpenXml(const std::string& file, const std::string& place,
                                          Faults& faults);

}  // namespace publish
