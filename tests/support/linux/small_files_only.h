#pragma once

#include <sys/resource.h>

#include <csignal>

namespace tests {

// Lets this process's files grow to a limit, as a disk does that fills up.
class SmallFilesOnly {
 public:
  explicit SmallFilesOnly(rlim_t length) {
    old_handler_ = std::signal(SIGXFSZ, SIG_IGN);
    getrlimit(RLIMIT_FSIZE, &old_);
    const rlimit limit{length, old_.rlim_max};
    setrlimit(RLIMIT_FSIZE, &limit);
  }
  SmallFilesOnly(const SmallFilesOnly&) = delete;
  SmallFilesOnly& operator=(const SmallFilesOnly&) = delete;
  ~SmallFilesOnly() {
    setrlimit(RLIMIT_FSIZE, &old_);
    std::signal(SIGXFSZ, old_handler_);
  }

 private:
  rlimit old_{};
  void (*old_handler_)(int) = nullptr;
};

}  // namespace tests
