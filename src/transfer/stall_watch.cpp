#include "transfer/stall_watch.h"

#include "ports/clock.h"
#include "ports/internet.h"
#include "ports/ports.h"

namespace tmw {
namespace {

constexpr std::int64_t kLeast = 1024;  // bytes within the stall limit

std::int64_t Now() {
  return ports::CurrentPorts().clock->TickCount();
}

}  // namespace

void StallWatch::Start() {
  since_ = Now();
  bytes_ = 0;
}

void StallWatch::NoteArrived(std::int32_t bytes) {
  bytes_ += bytes;
  if (bytes_ >= kLeast && !IsStalled()) Start();
}

bool StallWatch::IsStalled() const {
  return Now() - since_ >= ports::kInternetStallLimit;
}

}  // namespace tmw
