#include "jet/file/long_value_check.h"

#include <utility>

#include "jet/file/check_texts.h"
#include "jet/file/long_value_reader.h"

namespace jet::file {

LongValueCheck::LongValueCheck(CheckContext& context, std::string name, PageNumber definition)
    : context_(context),
      name_(std::move(name)),
      definition_(definition),
      owner_(context.census.NewOwner(name_)) {}

void LongValueCheck::Collect(const LongColumnMaps& maps) {
  try {
    UsageMap pages = context_.maps.Open(context_.source, maps.pages, definition_, name_);
    PageNumber from = 0;
    while (const auto page = pages.Next(from)) {
      from = *page + 1;
      if (!context_.census.Claim(*page, owner_, context_.findings)) {
        if (*page >= context_.source.PageCount()) break;
        continue;
      }
      CollectPage(*page);
    }
    // Columns that the engine added on the way have no map of free space.
    if (maps.space == RowPointer{}) return;
    UsageMap space = context_.maps.Open(context_.source, maps.space, definition_, name_);
    CheckSpaceMap(context_, space, owner_);
  } catch (const Damage& damage) {
    context_.findings.AddDamage(name_, damage);
  }
}

void LongValueCheck::CollectPage(PageNumber page) {
  try {
    const PageView view = context_.source.Read(page);
    view.Expect(PageKind::kData);
    view.ExpectOwner(data::kLongValueOwner);
    const DataPage rows(view);
    CheckFreeBytes(rows, name_, context_.findings);
    for (std::size_t row = 0; row < rows.RowCount() && row <= row_pointer::kRowMask; ++row) {
      if (rows.At(row).state == RowState::kLive)
        pieces_.Add({page, static_cast<std::uint8_t>(row)});
    }
  } catch (const Damage& damage) {
    context_.findings.AddDamage(name_, damage);
  }
}

void LongValueCheck::Use(ByteView stored) {
  LongValueReader reader(context_.source, stored);
  const bool is_inline = reader.Reference().form == LongValueForm::kInline;
  while (reader.Next()) {
    if (is_inline) continue;
    const RowPointer place = reader.Place();
    if (pieces_.Remove(place)) continue;
    // The rest of the chain was followed before, or belongs to somebody else.
    const bool is_ours = context_.census.OwnerOf(place.page) == owner_;
    context_.findings.AddFault(is_ours ? check_texts::kPieceTwice : check_texts::kPieceElsewhere,
                               name_, place.page);
    return;
  }
}

void LongValueCheck::Finish() {
  if (pieces_.Size() != 0)
    context_.findings.AddFault(check_texts::kOrphanPiece, name_, pieces_.First().page,
                               std::to_string(pieces_.Size()));
}

}  // namespace jet::file
