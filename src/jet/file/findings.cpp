#include "jet/file/findings.h"

#include <utility>

#include "jet/file/texts.h"

namespace jet::file {

std::string Finding::Text() const {
  std::string text = texts::Sentence(kind, page);
  if (!detail.empty()) text += ": " + detail;
  return object.empty() ? text : object + ": " + text;
}

void FindingList::Add(Finding finding) {
  ++(finding.severity == Severity::kFault ? fault_count_ : note_count_);
  if (++counts_[finding.kind] <= kKept) kept_.push_back(std::move(finding));
}

void FindingList::AddFault(const char* kind, const std::string& object, PageNumber page,
                           const std::string& detail) {
  Add({Severity::kFault, kind, object, page, detail});
}

void FindingList::AddNote(const char* kind, const std::string& object, PageNumber page,
                          const std::string& detail) {
  Add({Severity::kNote, kind, object, page, detail});
}

void FindingList::AddDamage(const std::string& object, const Damage& damage) {
  const std::string_view what = damage.what();
  const std::string_view kind = damage.Kind;
  Add({Severity::kFault, damage.Kind, object, damage.Page,
       std::string(what.size() > kind.size() + 2 ? what.substr(kind.size() + 2) : "")});
}

std::uint64_t FindingList::CountOf(std::string_view kind) const {
  const auto found = counts_.find(kind);
  return found == counts_.end() ? 0 : found->second;
}

}  // namespace jet::file
