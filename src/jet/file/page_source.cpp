#include "jet/file/page_source.h"

#include <string>
#include <utility>

#include "jet/errors.h"

namespace jet::file {

PageSource::PageSource(std::shared_ptr<ports::PageFile> file) : file_(std::move(file)) {
  const auto size = file_->Size();
  if (!size) Fail(kDiskError);
  if (size.value < kPageSize) throw Damage(header::kPage, texts::kTooShort);
  if (size.value >= limits::kFileLength) throw Damage(header::kPage, texts::kTooLong);
  page_count_ = static_cast<PageNumber>(size.value / kPageSize);
  has_torn_end_ = size.value % kPageSize != 0;
}

PageView PageSource::Read(PageNumber number, PageNumber from) {
  if (number >= page_count_) throw Damage(from, texts::kNoSuchPage, std::to_string(number));
  ++read_count_;
  std::array<Entry, kWays>& set = cache_[number % kSets];
  Entry* oldest = set.data();
  for (Entry& entry : set) {
    if (entry.bytes != nullptr && entry.number == number) {
      entry.last_use = read_count_;
      return {number, entry.bytes};
    }
    if (entry.last_use < oldest->last_use) oldest = &entry;
  }
  *oldest = {number, read_count_, Fetch(number)};
  return {number, oldest->bytes};
}

std::shared_ptr<const PageBytes> PageSource::Fetch(PageNumber number) {
  auto bytes = std::make_shared<PageBytes>();
  const auto got = file_->ReadAt(std::uint64_t{number} * kPageSize, bytes->data(), bytes->size());
  if (!got) Fail(kDiskError);
  // The file has become shorter since it was opened.
  if (got.value != kPageSize) throw Damage(number, texts::kBeyondEnd);
  return bytes;
}

}  // namespace jet::file
