#include "ports/power.h"

#include <fcntl.h>
#include <systemd/sd-bus.h>

#include <cerrno>
#include <cstdint>
#include <utility>
#include <vector>

#include "foundation/unique_handle.h"
#include "platform/factories.h"
#include "platform/linux/descriptor.h"

namespace platform {
namespace {

// A bus that does not answer must not hold up an update.
constexpr std::uint64_t kPatience = 2'000'000;  // microseconds

constexpr const char* kEverything = "sleep:shutdown:handle-lid-switch";
// Where all at once is refused: a session without a seat may have the rights to some of it.
constexpr const char* kParts[] = {"sleep", "shutdown", "handle-lid-switch"};

struct BusTraits {
  using Type = sd_bus*;
  static Type Invalid() { return nullptr; }
  static void Close(Type bus) { sd_bus_flush_close_unref(bus); }
};
using Bus = tmw::UniqueHandle<BusTraits>;

struct MessageTraits {
  using Type = sd_bus_message*;
  static Type Invalid() { return nullptr; }
  static void Close(Type message) { sd_bus_message_unref(message); }
};
using Message = tmw::UniqueHandle<MessageTraits>;

// logind ends the lock when its descriptor has been closed.
class LinuxStayAwake final : public ports::StayAwake {
 public:
  explicit LinuxStayAwake(std::vector<UniqueDescriptor> locks) : locks_(std::move(locks)) {}

 private:
  std::vector<UniqueDescriptor> locks_;
};

Bus OpenSystemBus() {
  sd_bus* opened = nullptr;
  if (sd_bus_open_system(&opened) < 0) return {};
  Bus bus(opened);
  sd_bus_set_method_call_timeout(bus.Get(), kPatience);
  return bus;
}

// Takes a lock on that, or returns a negative error code. The interface: org.freedesktop.login1(5).
int Inhibit(const Bus& bus, const char* what, const std::string& who, const std::string& why,
            std::vector<UniqueDescriptor>& locks) {
  sd_bus_message* answer = nullptr;
  const int result =
      sd_bus_call_method(bus.Get(), "org.freedesktop.login1", "/org/freedesktop/login1",
                         "org.freedesktop.login1.Manager", "Inhibit", nullptr, &answer, "ssss",
                         what, who.c_str(), why.c_str(), "block");
  const Message owner(answer);
  if (result < 0) return result;
  int lock = -1;
  const int read = sd_bus_message_read(answer, "h", &lock);
  // The message closes its own descriptor.
  if (read >= 0) locks.emplace_back(fcntl(lock, F_DUPFD_CLOEXEC, 0));
  return read;
}

class LinuxPower final : public ports::Power {
 public:
  std::unique_ptr<ports::StayAwake> KeepAwake(const std::string& who,
                                              const std::string& why) override {
    const Bus bus = OpenSystemBus();
    if (!bus) return nullptr;
    std::vector<UniqueDescriptor> locks;
    const int code = Inhibit(bus, kEverything, who, why, locks);
    if (code < 0 && code != -ETIMEDOUT) {
      for (const char* const part : kParts)
        Inhibit(bus, part, who, why, locks);
    }
    return locks.empty() ? nullptr : std::make_unique<LinuxStayAwake>(std::move(locks));
  }
};

}  // namespace

std::unique_ptr<ports::Power> MakePower() {
  return std::make_unique<LinuxPower>();
}

}  // namespace platform
