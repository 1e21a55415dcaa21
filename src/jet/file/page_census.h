#pragma once

#include <cstdint>
#include <set>
#include <string>
#include <vector>

#include "jet/file/data_page.h"
#include "jet/file/findings.h"
#include "jet/file/page_source.h"
#include "jet/file/usage_map.h"

namespace jet::file {

// Who owns each page of a file; no page has two owners.
class PageCensus {
 public:
  using Owner = std::uint32_t;
  static constexpr Owner kNobody = 0;

  explicit PageCensus(PageNumber page_count) : owners_(page_count, kNobody), names_(1) {}

  Owner NewOwner(const std::string& name);
  const std::string& NameOf(Owner owner) const { return names_[owner]; }

  // kNobody for pages that the file does not have.
  Owner OwnerOf(PageNumber page) const;

  std::uint64_t ClaimCount() const { return claim_count_; }

  // Returns false, and reports why, when the page is not in the file or has an owner already.
  bool Claim(PageNumber page, Owner owner, FindingList& findings);

 private:
  std::vector<Owner> owners_;
  std::vector<std::string> names_;
  std::uint64_t claim_count_ = 0;
};

// The rows in which the usage maps of a file lie; each map has one of its own.
class MapRegister {
 public:
  MapRegister(PageCensus& census, FindingList& findings);

  // The map of that row, its pages claimed. The name is whose map it is. Throws Damage when there
  // is no map.
  UsageMap Open(PageSource& source, RowPointer row, PageNumber from, const std::string& name);

 private:
  PageCensus* census_;
  FindingList* findings_;
  PageCensus::Owner owner_;
  std::set<RowPointer> rows_;
};

// How much of a file is compared.
enum class CheckDepth {
  kStructure,  // everything but the keys of indexes with the values of their rows
  kWhole,
};

// What the parts of a check share.
struct CheckContext {
  PageSource& source;
  PageCensus& census;
  MapRegister& maps;
  FindingList& findings;
  CheckDepth depth = CheckDepth::kWhole;
};

// Compares the free space that a data page claims with what its rows leave.
void CheckFreeBytes(const DataPage& page, const std::string& object, FindingList& findings);

// Reports pages in a map of free space that are not the owner's.
void CheckSpaceMap(CheckContext& context, UsageMap& space, PageCensus::Owner owner);

}  // namespace jet::file
