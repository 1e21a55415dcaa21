#include "jet/engine.h"

#include <string>
#include <utility>
#include <vector>

#include "jet/errors.h"
#include "jet/store/compaction.h"
#include "jet/store/container.h"
#include "jet/store/database.h"

namespace jet {
namespace {

constexpr int kMostLevels = 5;

class Engine final : public ports::DatabaseEngine {
 public:
  std::unique_ptr<ports::Database> OpenDatabase(const std::string& path, bool exclusive,
                                                bool read_only) override {
    const Purpose purpose = read_only ? Purpose::kReading : Purpose::kRewriting;
    return Adopt(std::make_unique<Container>(path, exclusive, purpose), read_only);
  }
  std::unique_ptr<ports::Database> CreateDatabase(const std::string& path) override {
    return Adopt(CreateContainer(path), false);
  }
  void CompactDatabase(const std::string& source, const std::string& target) override {
    Compact(source, target);
  }

  // Nothing to do: changes reach the file when its database is closed.
  void Idle(ports::IdleOption /*option*/) override {}

  void BeginTrans() override {
    if (workspace_->level >= kMostLevels) Fail(kTooManyTransactions);
    ++workspace_->level;
    for (const auto& session : OpenSessions())
      session->EnterLevels();
  }

  // A database that cannot commit leaves the transaction open; the caller may retry or roll back.
  void CommitTrans() override {
    RequireTransaction();
    for (const auto& session : OpenSessions())
      session->CommitTo(workspace_->level - 1);
    --workspace_->level;
  }

  void Rollback() override {
    RequireTransaction();
    --workspace_->level;
    for (const auto& session : OpenSessions())
      session->RollbackTo(workspace_->level);
  }

  bool TakesDefinitionsBack() const override { return true; }

 private:
  void RequireTransaction() const {
    if (workspace_->level == 0) Fail(kNoTransaction);
  }

  std::vector<std::shared_ptr<Session>> OpenSessions() {
    std::vector<std::shared_ptr<Session>> open;
    std::erase_if(sessions_, [](const auto& session) { return session.expired(); });
    for (const auto& session : sessions_) {
      if (auto held = session.lock(); held && held->Storage().IsOpen())
        open.push_back(std::move(held));
    }
    return open;
  }

  std::unique_ptr<ports::Database> Adopt(std::unique_ptr<Container> container, bool read_only) {
    auto session = std::make_shared<Session>(workspace_, std::move(container), read_only);
    sessions_.push_back(session);
    return std::make_unique<Database>(std::move(session));
  }

  std::shared_ptr<Workspace> workspace_ = std::make_shared<Workspace>();
  std::vector<std::weak_ptr<Session>> sessions_;
};

}  // namespace

std::unique_ptr<ports::DatabaseEngine> MakeEngine() {
  return std::make_unique<Engine>();
}

}  // namespace jet
