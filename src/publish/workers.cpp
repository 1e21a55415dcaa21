#include "publish/workers.h"

#include <algorithm>
#include <atomic>
#include <exception>
#include <mutex>
#include <thread>
#include <vector>

namespace publish {

std::size_t WorkerCount() {
  return std::clamp<std::size_t>(std::thread::hardware_concurrency(), 1, 64);
}

void RunSideBySide(std::size_t count, std::size_t workers,
                   const std::function<void(std::size_t)>& action) {
  std::atomic<std::size_t> next = 0;
  std::exception_ptr failure;
  std::mutex failure_guard;
  const auto work = [&] {
    for (std::size_t i = next++; i < count; i = next++) {
      try {
        action(i);
      } catch (...) {
        const std::lock_guard lock(failure_guard);
        if (failure == nullptr) failure = std::current_exception();
        next = count;
      }
    }
  };
  std::vector<std::thread> threads;
  for (std::size_t i = 1; i < std::min(workers, count); ++i)
    threads.emplace_back(work);
  work();
  for (std::thread& thread : threads)
    thread.join();
  if (failure != nullptr) std::rethrow_exception(failure);
}

}  // namespace publish
