#include "services/mutexes.h"

#include <cstdint>
#include <utility>

#include "foundation/api_errors.h"
#include "foundation/contract_names.h"
#include "foundation/error_handling.h"
#include "foundation/file_utils.h"
#include "ports/clock.h"
#include "ports/file_lock.h"
#include "ports/file_system.h"
#include "ports/ports.h"
#include "services/box_titles.h"
#include "services/message_boxes.h"
#include "services/services_texts.h"

namespace tmw {
namespace {

using ports::FileLockVerdict;

constexpr const char* kModule = "miMutexes";
constexpr std::int32_t kPollMilliseconds = 200;
constexpr int kFirstAttempts = 10;
constexpr int kLaterAttempts = 20;

std::unique_ptr<MutexKeeper>& KeeperSlot() {
  static std::unique_ptr<MutexKeeper> keeper;
  return keeper;
}

std::unique_ptr<ports::FileLock>& FolderLockSlot() {
  static std::unique_ptr<ports::FileLock> lock;
  return lock;
}

// The mutex of the probe is closed on return, so that it does not keep the name in use.
bool IsRunning(const std::string& mutex_name) {
  const auto probe = ports::CurrentPorts().mutexes->Create(mutex_name, false);
  return !probe || probe.value.already_existed;
}

// A place that cannot be made must not look like an application that runs.
void PreparePlace() {
  const ports::Status prepared = ports::CurrentPorts().mutexes->Prepare();
  if (prepared) return;
  const std::string place = ports::CurrentPorts().mutexes->Place();
  RaiseApiErrorWithMessage(services_texts::NoLockFolder(place), prepared.code);
}

void SleepOnePoll() {
  ports::CurrentPorts().clock->Sleep(kPollMilliseconds);
}

}  // namespace

const WaitingTexts kUpdaterWaits = {box_titles::kUpdaterStart, services_texts::ApplicationIsOpen,
                                    services_texts::SeveralCopies};

bool WaitUntilAppMutexClosed(const std::string& mutex_name, const std::string& app_title,
                             const WaitingTexts& texts) try {
  PreparePlace();
  for (int attempts = kFirstAttempts;; attempts = kLaterAttempts) {
    for (; attempts > 0; --attempts) {
      if (!IsRunning(mutex_name)) return true;
      SleepOnePoll();
    }
    if (!AskQuestion(texts.Title, texts.ApplicationIsOpen(app_title))) return false;
  }
} catch (...) {
  ReRaiseError(kModule, "WaitUntilAppMutexClosed");
}

bool LockUpdaterMutex(const std::string& mutex_name, const WaitingTexts& texts) try {
  ReleaseUpdaterLock();
  PreparePlace();
  for (int attempts = kFirstAttempts;; attempts = kLaterAttempts) {
    for (; attempts > 0; --attempts) {
      auto created = ports::CurrentPorts().mutexes->Create(mutex_name, true);
      if (!created) RaiseApiError(created.code);
      if (!created.value.already_existed) {
        auto keeper = std::make_unique<MutexKeeper>();
        keeper->SetMutex(std::move(created.value.mutex));
        KeeperSlot() = std::move(keeper);
        return true;
      }
      created.value.mutex.reset();
      SleepOnePoll();
    }
    if (!AskQuestion(texts.Title, texts.SeveralCopies())) return false;
  }
} catch (...) {
  ReRaiseError(kModule, "LockUpdaterMutex");
}

bool LockProductFolder(const std::string& root, const WaitingTexts& texts) try {
  const std::string file = JoinPath(root, names::kLockFile);
  // Fails where it is there already, which is as good.
  static_cast<void>(ports::CurrentPorts().files->Open(file, ports::FileMode::kCreateNew));
  for (int attempts = kFirstAttempts;; attempts = kLaterAttempts) {
    for (; attempts > 0; --attempts) {
      auto result =
          ports::CurrentPorts().file_locks->TryLock(file, ports::FileLockMode::kExclusive);
      const bool is_held = result && (result.value.verdict == FileLockVerdict::kHeldExclusively ||
                                      result.value.verdict == FileLockVerdict::kHeldShared);
      if (!is_held) {
        FolderLockSlot() = std::move(result.value.lock);
        return true;
      }
      SleepOnePoll();
    }
    if (!AskQuestion(texts.Title, texts.SeveralCopies())) return false;
  }
} catch (...) {
  ReRaiseError(kModule, "LockProductFolder");
}

void ReleaseUpdaterLock() {
  FolderLockSlot().reset();
  KeeperSlot().reset();
}

}  // namespace tmw
