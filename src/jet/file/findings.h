#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <string_view>
#include <vector>

#include "jet/file/damage.h"

namespace jet::file {

enum class Severity {
  kFault,  // the file is damaged: something is lost, wrong, or will be refused
  kNote,   // unusual and harmless
};

// One thing that a check found.
struct Finding {
  Severity severity = Severity::kFault;
  const char* kind = "";  // in the user's words, the same for all findings of the kind
  std::string object;     // "таблица "X""
  PageNumber page = 0;
  std::string detail;

  std::string Text() const;
};

// Findings of a check. All are counted, the first ones of each kind are kept.
class FindingList {
 public:
  static constexpr std::uint64_t kKept = 20;  // of a kind

  void Add(Finding finding);
  void AddFault(const char* kind, const std::string& object, PageNumber page,
                const std::string& detail = {});
  void AddNote(const char* kind, const std::string& object, PageNumber page,
               const std::string& detail = {});
  void AddDamage(const std::string& object, const Damage& damage);

  const std::vector<Finding>& Kept() const { return kept_; }
  std::uint64_t FaultCount() const { return fault_count_; }
  std::uint64_t NoteCount() const { return note_count_; }

  // All findings of that kind, kept or not.
  std::uint64_t CountOf(std::string_view kind) const;

 private:
  std::vector<Finding> kept_;
  std::map<std::string, std::uint64_t, std::less<>> counts_;
  std::uint64_t fault_count_ = 0;
  std::uint64_t note_count_ = 0;
};

}  // namespace jet::file
