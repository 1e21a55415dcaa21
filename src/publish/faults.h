#pragma once

#include <string>
#include <utility>
#include <vector>

namespace publish {

// Something that the updater or its user would stumble over.
struct Fault {
  std::string place;  // a file, a table, a line of the digest …
  std::string text;   // a whole sentence
};

// All faults found, in the order of finding.
class Faults {
 public:
  void Add(std::string place, std::string text) {
    faults_.push_back({std::move(place), std::move(text)});
  }
  void Append(const Faults& others) {
    faults_.insert(faults_.end(), others.faults_.begin(), others.faults_.end());
  }

  bool IsEmpty() const { return faults_.empty(); }
  const std::vector<Fault>& All() const { return faults_; }

 private:
  std::vector<Fault> faults_;
};

}  // namespace publish
