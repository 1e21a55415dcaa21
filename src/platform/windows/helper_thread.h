#pragma once

#include <cstdint>
#include <functional>
#include <memory>

namespace platform {

// A thread that makes blocking calls for the updater's one thread, a call at a time, so that the
// latter can wait in slices and keep its windows alive. What a call uses must outlive it: the call
// owns copies or shares.
class HelperThread {
 public:
  HelperThread();
  HelperThread(HelperThread&& other) noexcept = default;
  HelperThread& operator=(HelperThread&& other) noexcept = default;
  HelperThread(const HelperThread&) = delete;
  HelperThread& operator=(const HelperThread&) = delete;
  // Does not wait for a call that is still under way: the thread ends by itself after it.
  ~HelperThread();

  // Only while no call is under way.
  void Start(std::function<void()> call);

  // Waits at most that long for the call to return; returns whether it has. Messages that other
  // threads send to this thread's windows are answered meanwhile. Returns early if there is
  // something else for the windows to process.
  bool Wait(std::int32_t milliseconds);

 private:
  struct Shared;
  static void Run(Shared& shared);

  std::shared_ptr<Shared> shared_;
};

}  // namespace platform
