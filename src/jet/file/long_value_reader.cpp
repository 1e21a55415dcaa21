#include "jet/file/long_value_reader.h"

#include "jet/file/data_page.h"

namespace jet::file {

LongValueReference LongValueReference::Parse(ByteView stored) {
  LongValueReference reference;
  if (stored.Length() == 0) return reference;
  const std::uint32_t word = stored.Get(long_value::kLength);
  reference.length = word & long_value::kLengthMask;
  reference.pointer = RowPointer::FromWord(stored.Get(long_value::kPointer));
  reference.chain_word = stored.Get(long_value::kChainWord);
  if ((word & long_value::kInline) != 0) {
    if (reference.length != stored.Length() - long_value::kReferenceWidth)
      stored.Fail(texts::kBadLongValue);
  } else {
    reference.form =
        (word & long_value::kSingleRow) != 0 ? LongValueForm::kSingleRow : LongValueForm::kChain;
    if (stored.Length() != long_value::kReferenceWidth ||
        reference.length > limits::kLongValueLength)
      stored.Fail(texts::kBadLongValue);
  }
  return reference;
}

LongValueReader::LongValueReader(PageSource& source, ByteView stored)
    : source_(&source),
      stored_(stored),
      reference_(LongValueReference::Parse(stored)),
      left_(reference_.length),
      next_(reference_.pointer) {
  if (reference_.length / kPageSize > source.PageCount()) stored.Fail(texts::kBadLongValue);
}

std::optional<std::string_view> LongValueReader::Next() {
  if (left_ == 0) return std::nullopt;
  std::string_view piece;
  if (reference_.form == LongValueForm::kInline) {
    piece = stored_.Slice(long_value::kReferenceWidth, left_);
  } else {
    piece = NextRow();
  }
  // An empty piece would let a chain go on for ever.
  const bool is_last = reference_.form != LongValueForm::kChain || next_ == RowPointer{};
  if (piece.empty() || piece.size() > left_ || (is_last && piece.size() != left_) ||
      (!is_last && piece.size() == left_))
    stored_.Fail(texts::kBadLongValue);
  left_ -= piece.size();
  return piece;
}

std::string_view LongValueReader::NextRow() {
  const PointedRow pointed =
      ReadRow(*source_, next_, data::kLongValueOwner, has_begun_ ? place_.page : stored_.Page());
  if (pointed.row.state != RowState::kLive) stored_.Fail(texts::kBadLongValue);
  page_ = pointed.page.Page();
  if (!has_begun_ && reference_.form == LongValueForm::kChain &&
      reference_.chain_word != page_->Get(data::kChainWord))
    stored_.Fail(texts::kForeignLongValue);
  has_begun_ = true;
  place_ = next_;
  if (reference_.form == LongValueForm::kSingleRow) return pointed.row.bytes;
  const ByteView row(place_.page, pointed.row.bytes);
  next_ = RowPointer::FromWord(row.Get(long_value::kNextInChain));
  return pointed.row.bytes.substr(long_value::kChainPayload);
}

std::string ReadLongValue(PageSource& source, ByteView stored) {
  LongValueReader reader(source, stored);
  std::string value;
  while (const auto piece = reader.Next())
    value += *piece;
  return value;
}

}  // namespace jet::file
