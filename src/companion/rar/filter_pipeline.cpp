#include "companion/rar/filter_pipeline.h"

#include <algorithm>

#include "companion/rar/failure.h"

namespace companion::rar {

void FilterPipeline::Begin(ContentSink& sink) {
  sink_ = &sink;
  pending_.clear();
  position_ = 0;
  collected_.clear();
}

void FilterPipeline::Announce(std::uint64_t start, std::uint64_t length,
                              const FilterRequest& request) {
  if (length == 0) return;
  if (length > kMaxBlock || start < position_ || pending_.size() >= kMaxPending)
    throw Failure{ports::kRarBadData};
  if (!pending_.empty()) {
    Block& last = pending_.back();
    if (last.start == start && last.length == length) {
      if (last.filters.size() >= kMaxStacked) throw Failure{ports::kRarBadData};
      last.filters.push_back(request);
      return;
    }
    if (start < last.start + last.length) throw Failure{ports::kRarBadData};
  }
  pending_.push_back({start, static_cast<std::uint32_t>(length), {request}});
}

void FilterPipeline::ForgetAnnounced() {
  pending_.clear();
  if (!collected_.empty()) sink_->Write(collected_.data(), collected_.size());
  collected_.clear();
}

void FilterPipeline::Write(std::span<const std::uint8_t> bytes) {
  while (!bytes.empty()) {
    std::size_t length = bytes.size();
    if (pending_.empty() || position_ < pending_.front().start) {
      if (!pending_.empty()) {
        length = static_cast<std::size_t>(
            std::min<std::uint64_t>(length, pending_.front().start - position_));
      }
      sink_->Write(bytes.data(), length);
      position_ += length;
    } else {
      length = std::min<std::size_t>(length, pending_.front().length - collected_.size());
      collected_.insert(collected_.end(), bytes.begin(),
                        bytes.begin() + static_cast<std::ptrdiff_t>(length));
      position_ += length;
      if (collected_.size() == pending_.front().length) FinishBlock();
    }
    bytes = bytes.subspan(length);
  }
}

void FilterPipeline::FinishBlock() {
  const Block block = std::move(pending_.front());
  pending_.pop_front();
  for (const FilterRequest& request : block.filters)
    UndoFilter(request, block.start, collected_, scratch_);
  sink_->Write(collected_.data(), collected_.size());
  collected_.clear();
}

}  // namespace companion::rar
