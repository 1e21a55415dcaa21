#include "jet/file/page_census.h"

#include "jet/file/check_texts.h"

namespace jet::file {

PageCensus::Owner PageCensus::NewOwner(const std::string& name) {
  names_.push_back(name);
  return static_cast<Owner>(names_.size() - 1);
}

PageCensus::Owner PageCensus::OwnerOf(PageNumber page) const {
  return page < owners_.size() ? owners_[page] : kNobody;
}

bool PageCensus::Claim(PageNumber page, Owner owner, FindingList& findings) {
  if (page >= owners_.size()) {
    findings.AddFault(texts::kNoSuchPage, NameOf(owner), page);
    return false;
  }
  if (owners_[page] != kNobody) {
    findings.AddFault(check_texts::kPageTwice, NameOf(owner), page, NameOf(owners_[page]));
    return false;
  }
  owners_[page] = owner;
  ++claim_count_;
  return true;
}

MapRegister::MapRegister(PageCensus& census, FindingList& findings)
    : census_(&census), findings_(&findings), owner_(census.NewOwner(check_texts::kMaps)) {}

UsageMap MapRegister::Open(PageSource& source, RowPointer row, PageNumber from,
                           const std::string& name) {
  UsageMap map(source, row, from);
  if (census_->OwnerOf(row.page) != owner_) census_->Claim(row.page, owner_, *findings_);
  if (!rows_.insert(row).second) findings_->AddFault(check_texts::kMapTwice, name, row.page);
  for (const PageNumber page : map.BitmapPages())
    census_->Claim(page, owner_, *findings_);
  return map;
}

void CheckFreeBytes(const DataPage& page, const std::string& object, FindingList& findings) {
  const std::size_t count = page.RowCount();
  const std::size_t lowest = count == 0 ? kPageSize : page.At(count - 1).offset;
  const std::size_t free = lowest - data::kSlots - count * data::kSlotWidth;
  const std::size_t claimed = page.Page().Get(page::kFree);
  const PageNumber number = page.Page().Page();
  if (claimed > free) {
    findings.AddFault(check_texts::kFreeBytesHigh, object, number);
  } else if (claimed < free) {
    findings.AddNote(check_texts::kFreeBytesLow, object, number);
  }
}

void CheckSpaceMap(CheckContext& context, UsageMap& space, PageCensus::Owner owner) {
  PageNumber from = 0;
  while (const auto page = space.Next(from)) {
    from = *page + 1;
    if (context.census.OwnerOf(*page) == owner) continue;
    context.findings.AddFault(check_texts::kForeignSpacePage, context.census.NameOf(owner), *page);
    if (*page >= context.source.PageCount()) return;
  }
}

}  // namespace jet::file
