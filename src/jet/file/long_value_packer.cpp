#include "jet/file/long_value_packer.h"

#include <algorithm>

#include "jet/file/packed_text.h"

namespace jet::file {
namespace {

std::string Reference(std::uint32_t form, std::size_t length, RowPointer pointer = {}) {
  std::string bytes;
  AppendLittle(bytes, static_cast<std::uint32_t>(length) | form);
  AppendLittle(bytes, pointer.ToWord());
  bytes.resize(long_value::kReferenceWidth);
  return bytes;
}

// Bytes of a text before compression.
std::size_t UnpackedLength(std::string_view stored) {
  constexpr std::string_view kMark{"\xFF\xFE", 2};
  if (!stored.starts_with(kMark)) return stored.size();
  std::size_t length = 0;
  bool is_compressed = true;
  for (std::size_t i = kMark.size(); i < stored.size();) {
    if (stored[i] == 0) {
      is_compressed = !is_compressed;
      ++i;
    } else {
      i += is_compressed ? 1 : 2;
      length += 2;
    }
  }
  return length;
}

}  // namespace

// Writes one value to a chain of pages that belong to nothing else.
class LongValuePacker::Chain {
 public:
  explicit Chain(LongValuePacker& packer) : packer_(packer), page_(NextPage()), first_(page_) {}

  RowPointer First() const { return {first_, 0}; }

  void Add(std::string_view piece) {
    while (!piece.empty()) {
      if (pending_.size() == long_value::kChainPiece) Put(NextPage());
      const std::size_t taken = std::min(piece.size(), long_value::kChainPiece - pending_.size());
      pending_ += piece.substr(0, taken);
      piece.remove_prefix(taken);
    }
  }

  void Finish() { Put(std::nullopt); }

 private:
  PageNumber NextPage() {
    const PageNumber page = packer_.sink_->Reserve();
    packer_.pages_.Add(page);
    return page;
  }

  void Put(std::optional<PageNumber> next) {
    std::string row;
    AppendLittle(row, next ? RowPointer{*next, 0}.ToWord() : 0);
    row += pending_;
    DataPagePacker rows(data::kLongValueOwner);
    rows.Add(row);
    packer_.sink_->Put(page_, rows.Page());
    pending_.clear();
    if (next) page_ = *next;
  }

  LongValuePacker& packer_;
  PageNumber page_;
  PageNumber first_;
  std::string pending_;
};

std::string LongValuePacker::Pack(std::string_view value) {
  const std::size_t length = holds_texts_ ? UnpackedLength(value) : value.size();
  if (length <= long_value::kLongestInline)
    return Reference(long_value::kInline, value.size()).append(value);
  if (length <= long_value::kLongestSingleRow) return PackRow(value);
  Chain chain(*this);
  chain.Add(value);
  chain.Finish();
  return Reference(0, value.size(), chain.First());
}

std::string LongValuePacker::PackRow(std::string_view value) {
  if (page_ && !rows_.HasRoomFor(value.size())) {
    Finish();
    page_.reset();
  }
  if (!page_) {
    page_ = sink_->Reserve();
    pages_.Add(*page_);
    rows_ = DataPagePacker(data::kLongValueOwner);
  }
  return Reference(long_value::kSingleRow, value.size(), {*page_, rows_.Add(value)});
}

std::string LongValuePacker::Copy(PageSource& source, ByteView stored) {
  LongValueReader reader(source, stored);
  const LongValueReference& reference = reader.Reference();
  if (reference.form == LongValueForm::kInline) {
    // The bytes that point elsewhere mean nothing in this form, and may hold anything.
    if (stored.Length() == 0) return {};
    const std::string_view value = stored.Slice(long_value::kReferenceWidth, reference.length);
    return Reference(long_value::kInline, value.size()).append(value);
  }
  if (reference.length == 0) return Reference(long_value::kInline, 0);
  // What the file's writer took to be short enough for one row remains so.
  if (reference.form == LongValueForm::kSingleRow) {
    const std::optional<std::string_view> row = reader.Next();
    std::string packed = PackRow(row.value_or(std::string_view{}));
    while (reader.Next()) {
    }
    return packed;
  }
  if (reference.length <= long_value::kLongestSingleRow) return Pack(ReadLongValue(source, stored));
  Chain chain(*this);
  while (const std::optional<std::string_view> piece = reader.Next())
    chain.Add(*piece);
  chain.Finish();
  return Reference(0, reference.length, chain.First());
}

void LongValuePacker::Finish() {
  if (page_) sink_->Put(*page_, rows_.Page());
}

std::optional<PageNumber> LongValuePacker::SpacePage() const {
  return page_ && rows_.HasRoomFor(long_value::kRoomWorthNoting) ? page_ : std::nullopt;
}

std::string PackMemo(std::string_view text, bool may_compress) {
  std::string stored = PackText(text, may_compress);
  if (!may_compress || UnpackedLength(stored) <= long_value::kLongestSingleRow) return stored;
  return PackText(text, false);
}

}  // namespace jet::file
