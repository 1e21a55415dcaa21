#pragma once

#include <set>
#include <string>
#include <vector>

#include "ports/named_mutex.h"

namespace tests {

// Mutexes on a machine where others hold the named ones. Records creations and releases.
class FakeMutexes final : public ports::NamedMutexes {
 public:
  std::set<std::string> held_by_others;
  std::vector<std::string> log;

  ports::Status Prepare() override { return ports::Status::Success(); }
  std::string Place() const override { return {}; }
  ports::Outcome<ports::CreatedMutex> Create(const std::string& name, bool initial_owner) override {
    log.push_back((initial_owner ? "own " : "probe ") + name);
    ports::CreatedMutex created;
    created.mutex = std::make_unique<Held>(*this, name);
    created.already_existed = held_by_others.count(name) > 0;
    return {true, 0, std::move(created)};
  }

 private:
  class Held final : public ports::NamedMutex {
   public:
    Held(FakeMutexes& owner, std::string name) : owner_(owner), name_(std::move(name)) {}
    ~Held() override { owner_.log.push_back("close " + name_); }

   private:
    FakeMutexes& owner_;
    std::string name_;
  };
};

}  // namespace tests
