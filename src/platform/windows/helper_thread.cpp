#include "platform/windows/helper_thread.h"

#include <condition_variable>
#include <mutex>
#include <thread>
#include <utility>

#include "platform/windows/handles.h"
#include "platform/windows/windows_headers.h"

namespace platform {
namespace {

// Between two returns for the sake of the windows. A message that is never taken from the queue
// would make the waiting thread spin.
constexpr DWORD kShortestSlice = 10;  // milliseconds

}  // namespace

struct HelperThread::Shared {
  std::mutex mutex;
  std::condition_variable changed;
  std::function<void()> call;
  bool is_ending = false;
  UniqueKernelHandle returned{CreateEventW(nullptr, TRUE, FALSE, nullptr)};
};

HelperThread::HelperThread() : shared_(std::make_shared<Shared>()) {
  std::thread([shared = shared_] { Run(*shared); }).detach();
}

HelperThread::~HelperThread() {
  if (shared_ == nullptr) return;
  const std::scoped_lock lock(shared_->mutex);
  shared_->is_ending = true;
  shared_->changed.notify_one();
}

void HelperThread::Run(Shared& shared) {
  std::unique_lock lock(shared.mutex);
  for (;;) {
    shared.changed.wait(lock, [&] { return shared.is_ending || shared.call; });
    if (!shared.call) return;
    lock.unlock();
    shared.call();
    lock.lock();
    shared.call = nullptr;
    SetEvent(shared.returned.Get());
  }
}

void HelperThread::Start(std::function<void()> call) {
  ResetEvent(shared_->returned.Get());
  const std::scoped_lock lock(shared_->mutex);
  shared_->call = std::move(call);
  shared_->changed.notify_one();
}

bool HelperThread::Wait(std::int32_t milliseconds) {
  const HANDLE returned = shared_->returned.Get();
  const auto limit = static_cast<DWORD>(milliseconds);
  if (MsgWaitForMultipleObjectsEx(1, &returned, limit, QS_ALLINPUT, 0) == WAIT_OBJECT_0)
    return true;
  // Looking into the queue is what lets sent messages in.
  MSG message{};
  PeekMessageW(&message, nullptr, 0, 0, PM_NOREMOVE);
  return WaitForSingleObject(returned, kShortestSlice) == WAIT_OBJECT_0;
}

}  // namespace platform
