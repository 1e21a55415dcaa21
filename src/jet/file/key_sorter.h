#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "jet/file/scratch_file.h"

namespace jet::file {

// Brings short byte strings into their unsigned order in bounded memory: what does not fit leaves
// as sorted runs, which are merged in the end.
class KeySorter {
 public:
  // Memory: bytes to be used at most, about. The file must outlive the sorter.
  KeySorter(std::size_t memory, ScratchFile& scratch) : memory_(memory), scratch_(&scratch) {}

  // At most a page long.
  void Add(std::string_view bytes);

  // Nothing may be added afterwards.
  void Sort();

  // The next one in order, valid until the next call; false behind the last one.
  bool Next(std::string_view& bytes);

 private:
  // Where a string lies in the arena; the first bytes decide most comparisons.
  struct Place {
    std::uint64_t beginning;
    std::uint32_t offset;
    std::uint32_t length;
  };

  // A sorted part that left memory, read back piece by piece.
  struct Run {
    std::uint64_t offset = 0;  // of what is still to be read
    std::uint64_t end = 0;
    std::string piece;
    std::size_t position = 0;
    std::string_view current;
  };

  void SkipCommonBeginning();
  void SortPlaces();
  void WriteRun();
  bool Step(Run& run) const;
  bool SortsLater(std::size_t a, std::size_t b) const;
  std::string_view At(const Place& place) const {
    return std::string_view(arena_).substr(place.offset, place.length);
  }

  std::size_t memory_;
  ScratchFile* scratch_;
  std::string arena_;
  std::vector<Place> places_;
  std::size_t next_ = 0;
  std::vector<Run> runs_;
  std::vector<std::size_t> heap_;  // runs, the one with the smallest string first
  bool must_step_ = false;
};

}  // namespace jet::file
