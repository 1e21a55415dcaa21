#include "jet/file/key_sorter.h"

#include <algorithm>

#include "jet/file/bytes.h"
#include "jet/file/format.h"

namespace jet::file {
namespace {

constexpr std::size_t kLengthWidth = sizeof(std::uint16_t);
constexpr std::size_t kSmall = 1U << 20U;
constexpr std::size_t kLongestString = kPageSize;

std::uint64_t Beginning(std::string_view bytes) {
  char first[sizeof(std::uint64_t)] = {};
  std::copy_n(bytes.begin(), std::min(bytes.size(), sizeof(first)), first);
  return LoadBig<std::uint64_t>(first);
}

}  // namespace

void KeySorter::Add(std::string_view bytes) {
  const std::size_t used = arena_.size() + places_.size() * sizeof(Place);
  if (used + bytes.size() + sizeof(Place) > memory_ && !places_.empty()) WriteRun();
  if (arena_.capacity() < memory_ && arena_.size() > kSmall) {
    // Growing by and by would copy the strings over and over.
    arena_.reserve(memory_);
    places_.reserve(memory_ / (sizeof(Place) + bytes.size()));
  }
  places_.push_back({Beginning(bytes), static_cast<std::uint32_t>(arena_.size()),
                     static_cast<std::uint32_t>(bytes.size())});
  arena_ += bytes;
}

// Bytes that all strings begin with would not distinguish them.
void KeySorter::SkipCommonBeginning() {
  if (places_.empty()) return;
  const std::string_view first = At(places_.front());
  std::size_t common = first.size();
  for (const Place& place : places_) {
    const std::string_view bytes = At(place);
    const std::size_t most = std::min(common, bytes.size());
    common = static_cast<std::size_t>(
        std::mismatch(first.begin(), first.begin() + static_cast<std::ptrdiff_t>(most),
                      bytes.begin())
            .first -
        first.begin());
    if (common == 0) return;
  }
  for (Place& place : places_)
    place.beginning = Beginning(At(place).substr(common));
}

void KeySorter::SortPlaces() {
  SkipCommonBeginning();
  const auto sorts_before = [this](const Place& a, const Place& b) {
    if (a.beginning != b.beginning) return a.beginning < b.beginning;
    return At(a) < At(b);
  };
  // Rows often come in the order of an index.
  if (!std::is_sorted(places_.begin(), places_.end(), sorts_before))
    std::sort(places_.begin(), places_.end(), sorts_before);
}

void KeySorter::WriteRun() {
  SortPlaces();
  constexpr std::size_t kPiece = 1U << 18U;
  Run run;
  std::string piece;
  for (std::size_t i = 0; i < places_.size(); ++i) {
    AppendLittle(piece, static_cast<std::uint16_t>(places_[i].length));
    piece += At(places_[i]);
    if (piece.size() < kPiece && i + 1 < places_.size()) continue;
    const std::uint64_t offset = scratch_->Append(piece);
    if (run.end == 0) run.offset = offset;
    run.end = offset + piece.size();
    piece.clear();
  }
  runs_.push_back(std::move(run));
  arena_.clear();
  places_.clear();
}

void KeySorter::Sort() {
  if (runs_.empty()) {
    SortPlaces();
    return;
  }
  if (!places_.empty()) WriteRun();
  arena_ = {};
  places_ = {};
  for (std::size_t run = 0; run < runs_.size(); ++run) {
    if (Step(runs_[run])) heap_.push_back(run);
  }
  const auto sorts_later = [this](std::size_t a, std::size_t b) { return SortsLater(a, b); };
  std::make_heap(heap_.begin(), heap_.end(), sorts_later);
}

bool KeySorter::SortsLater(std::size_t a, std::size_t b) const {
  return runs_[b].current < runs_[a].current;
}

bool KeySorter::Step(Run& run) const {
  // Enough for the longest string, whatever memory there is.
  const std::size_t piece = std::max(memory_ / runs_.size(), kLengthWidth + kLongestString);
  const auto left = [&run] { return run.piece.size() - run.position; };
  const auto has_string = [&run, &left] {
    return left() >= kLengthWidth &&
           left() - kLengthWidth >= LoadLittle<std::uint16_t>(run.piece.data() + run.position);
  };
  if (!has_string()) {
    run.piece.erase(0, run.position);
    run.position = 0;
    const std::size_t kept = run.piece.size();
    const std::size_t more = static_cast<std::size_t>(
        std::min<std::uint64_t>(run.end - run.offset, piece - std::min(piece, kept)));
    if (more == 0) return false;
    run.piece.resize(kept + more);
    scratch_->Read(run.offset, run.piece.data() + kept, more);
    run.offset += more;
  }
  const std::size_t length = LoadLittle<std::uint16_t>(run.piece.data() + run.position);
  run.current = std::string_view(run.piece).substr(run.position + kLengthWidth, length);
  run.position += kLengthWidth + length;
  return true;
}

bool KeySorter::Next(std::string_view& bytes) {
  if (runs_.empty()) {
    if (next_ == places_.size()) return false;
    bytes = At(places_[next_++]);
    return true;
  }
  const auto sorts_later = [this](std::size_t a, std::size_t b) { return SortsLater(a, b); };
  if (must_step_) {
    std::pop_heap(heap_.begin(), heap_.end(), sorts_later);
    if (Step(runs_[heap_.back()])) {
      std::push_heap(heap_.begin(), heap_.end(), sorts_later);
    } else {
      heap_.pop_back();
    }
    must_step_ = false;
  }
  if (heap_.empty()) return false;
  bytes = runs_[heap_.front()].current;
  must_step_ = true;
  return true;
}

}  // namespace jet::file
