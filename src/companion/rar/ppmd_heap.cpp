#include "companion/rar/ppmd_heap.h"

#include <algorithm>
#include <cstdlib>

#include "companion/rar/failure.h"

namespace companion::rar {
namespace {

// While free pieces are merged, each is a node of a ring: a mark that distinguishes it from used
// pieces (16 bits, 0 for free; used pieces never begin with 16 zero bits), its units (16 bits), the
// next and the previous node.
struct Node {
  std::uint16_t mark;
  std::uint16_t units;
  std::uint32_t next;
  std::uint32_t previous;
};
static_assert(sizeof(Node) == PpmdHeap::kUnit);

class Nodes {
 public:
  explicit Nodes(PpmdHeap& heap) : heap_(heap) {}
  Node Get(PpmdHeap::Ref ref) const {
    Node node{};
    std::memcpy(&node, heap_.At(ref), sizeof node);
    return node;
  }
  void Set(PpmdHeap::Ref ref, const Node& node) { std::memcpy(heap_.At(ref), &node, sizeof node); }
  void SetNext(PpmdHeap::Ref ref, PpmdHeap::Ref next) {
    Node node = Get(ref);
    node.next = next;
    Set(ref, node);
  }
  void SetPrevious(PpmdHeap::Ref ref, PpmdHeap::Ref previous) {
    Node node = Get(ref);
    node.previous = previous;
    Set(ref, node);
  }

 private:
  PpmdHeap& heap_;
};

}  // namespace

PpmdHeap::PpmdHeap() {
  unsigned units = 0;
  for (unsigned index = 0; index < kSizes; ++index) {
    const unsigned step = index >= 12 ? 4 : index / 4 + 1;
    for (unsigned i = 0; i < step; ++i)
      index_by_units_[units++] = static_cast<std::uint8_t>(index);
    units_by_index_[index] = static_cast<std::uint8_t>(units);
  }
}

void PpmdHeap::Resize(std::uint32_t size) {
  if (size == size_) return;
  memory_.reset();
  size_ = 0;
  // The head of the ring of free pieces is stored after the end.
  memory_.reset(static_cast<std::uint8_t*>(std::malloc(std::size_t{kBegin} + size + kUnit)));
  if (!memory_) throw Failure{ports::kRarNoMemory};
  std::memset(At(0), 0, kBegin);
  size_ = size;
}

void PpmdHeap::Restart() {
  free_.fill(0);
  text_ = kBegin;
  hi_ = kBegin + size_;
  lo_ = hi_ - size_ / 8 / kUnit * 7 * kUnit;
  units_start_ = lo_;
  glue_countdown_ = 0;
}

// Frees the units as one piece if that size exists, otherwise as the largest that fits and a rest.
void PpmdHeap::PutFreeUnits(Ref piece, std::uint32_t units) {
  unsigned index = IndexFor(units);
  if (units_by_index_[index] != units) {
    const std::uint32_t first = units_by_index_[--index];
    PutFree(piece + first * kUnit, units - first - 1);
  }
  PutFree(piece, index);
}

PpmdHeap::Ref PpmdHeap::AllocateRarely(unsigned index) {
  if (glue_countdown_ == 0) {
    Glue();
    if (free_[index] != 0) return TakeFree(index);
  }
  unsigned larger = index + 1;
  while (larger < kSizes && free_[larger] == 0)
    ++larger;
  if (larger == kSizes) {
    const std::uint32_t bytes = units_by_index_[index] * kUnit;
    --glue_countdown_;
    return units_start_ - text_ > bytes ? units_start_ -= bytes : 0;
  }
  const Ref piece = TakeFree(larger);
  const std::uint32_t kept = units_by_index_[index];
  PutFreeUnits(piece + kept * kUnit, units_by_index_[larger] - kept);
  return piece;
}

PpmdHeap::Ref PpmdHeap::Extend(Ref piece, std::uint32_t units) {
  const unsigned old_index = IndexFor(units);
  if (old_index == IndexFor(units + 1)) return piece;
  const Ref extended = Allocate(units + 1);
  if (extended == 0) return 0;
  std::memcpy(At(extended), At(piece), std::size_t{units} * kUnit);
  PutFree(piece, old_index);
  return extended;
}

PpmdHeap::Ref PpmdHeap::Shrink(Ref piece, std::uint32_t old_units, std::uint32_t new_units) {
  const unsigned old_index = IndexFor(old_units);
  const unsigned new_index = IndexFor(new_units);
  if (old_index == new_index) return piece;
  if (free_[new_index] != 0) {
    const Ref shrunk = TakeFree(new_index);
    std::memcpy(At(shrunk), At(piece), std::size_t{new_units} * kUnit);
    PutFree(piece, old_index);
    return shrunk;
  }
  const std::uint32_t kept = units_by_index_[new_index];
  PutFreeUnits(piece + kept * kUnit, units_by_index_[old_index] - kept);
  return piece;
}

// Makes a ring of all free pieces, with its head after the end of the memory, and empties the
// lists. Returns the ring's first node, the piece linked last.
PpmdHeap::Ref PpmdHeap::LinkFreePieces() {
  Nodes nodes(*this);
  const Ref head = kBegin + size_;
  Ref newest = head;
  for (unsigned index = 0; index < kSizes; ++index) {
    for (Ref piece = free_[index]; piece != 0;) {
      const Ref following = Load(piece);
      nodes.Set(piece, {0, units_by_index_[index], newest, 0});
      nodes.SetPrevious(newest, piece);
      newest = piece;
      piece = following;
    }
    free_[index] = 0;
  }
  Node head_node = nodes.Get(head);
  head_node.mark = 1;
  head_node.next = newest;
  nodes.Set(head, head_node);
  nodes.SetPrevious(newest, head);
  return newest;
}

void PpmdHeap::Glue() {
  glue_countdown_ = 255;
  Nodes nodes(*this);
  const Ref head = kBegin + size_;
  const Ref first = LinkFreePieces();
  if (lo_ != hi_) {
    Node gap = nodes.Get(lo_);
    gap.mark = 1;
    nodes.Set(lo_, gap);
  }
  for (Ref piece = first; piece != head; piece = nodes.Get(piece).next) {
    std::uint32_t units = nodes.Get(piece).units;
    for (;;) {
      const Node neighbour = nodes.Get(piece + units * kUnit);
      units += neighbour.units;
      if (neighbour.mark != 0 || units >= 0x10000) break;
      nodes.SetNext(neighbour.previous, neighbour.next);
      nodes.SetPrevious(neighbour.next, neighbour.previous);
      Node node = nodes.Get(piece);
      node.units = static_cast<std::uint16_t>(units);
      nodes.Set(piece, node);
    }
  }
  for (Ref piece = nodes.Get(head).next; piece != head;) {
    const Node node = nodes.Get(piece);
    std::uint32_t units = node.units;
    for (; units > kMaxPiece; units -= kMaxPiece, piece += kMaxPiece * kUnit)
      PutFree(piece, kSizes - 1);
    PutFreeUnits(piece, units);
    piece = node.next;
  }
}

}  // namespace companion::rar
