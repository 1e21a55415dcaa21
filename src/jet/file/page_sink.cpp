#include "jet/file/page_sink.h"

#include <algorithm>
#include <cstdint>
#include <utility>

#include "jet/errors.h"

namespace jet::file {

PageSink::PageSink(std::shared_ptr<ports::PageFile> file) : file_(std::move(file)) {}

PageNumber PageSink::Reserve() {
  if (std::uint64_t{page_count_ + 1} * kPageSize >= limits::kFileLength) Fail(kDatabaseTooLarge);
  return page_count_++;
}

void PageSink::Put(PageNumber number, const PageBuffer& page) {
  const auto [held, is_new] = stretches_.try_emplace(number / kStretch);
  const std::size_t place = number % kStretch;
  const std::string_view bytes = page.Bytes();
  std::copy(bytes.begin(), bytes.end(),
            held->second.bytes.begin() + static_cast<std::ptrdiff_t>(place * kPageSize));
  held->second.present.set(place);
  if (held->second.present.all()) {
    Write(held);
    stretches_.erase(held);
  } else if (is_new && stretches_.size() > kStretchesHeld) {
    // What is missing in the oldest stretch may come much later.
    const auto oldest = stretches_.begin() == held ? std::next(held) : stretches_.begin();
    Write(oldest);
    stretches_.erase(oldest);
  }
}

void PageSink::Write(Stretches::iterator stretch) {
  const Stretch& held = stretch->second;
  for (std::size_t begin = 0; begin < kStretch;) {
    std::size_t end = begin;
    while (end < kStretch && held.present.test(end))
      ++end;
    if (end > begin) {
      const std::uint64_t page = std::uint64_t{stretch->first} * kStretch + begin;
      const ports::Status written = file_->WriteAt(
          page * kPageSize, held.bytes.data() + begin * kPageSize, (end - begin) * kPageSize);
      if (!written) Fail(file_->MeansFull(written.code) ? kDiskFull : kDiskError);
    }
    begin = std::max(end, begin + 1);
  }
}

void PageSink::Flush() {
  for (auto stretch = stretches_.begin(); stretch != stretches_.end(); ++stretch)
    Write(stretch);
  stretches_.clear();
  const ports::Status flushed = file_->Flush();
  if (!flushed) Fail(file_->MeansFull(flushed.code) ? kDiskFull : kDiskError);
}

}  // namespace jet::file
