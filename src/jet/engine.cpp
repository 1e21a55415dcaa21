#include "jet/engine.h"

#include <string>
#include <utility>
#include <vector>

#include "jet/errors.h"
#include "jet/store/compaction.h"
#include "jet/store/database.h"
#include "jet/store/storage_file.h"

namespace jet {
namespace {

constexpr int kMostLevels = 5;

class Engine final : public ports::DatabaseEngine {
 public:
  std::unique_ptr<ports::Database> OpenDatabase(const std::string& path, bool exclusive,
                                                bool read_only) override;
  std::unique_ptr<ports::Database> CreateDatabase(const std::string& path) override;
  void CompactDatabase(const std::string& source, const std::string& target) override;
  void Idle(ports::IdleOption option) override;
  void BeginTrans() override;
  void CommitTrans() override;
  void Rollback() override;
  bool TakesDefinitionsBack() const override { return true; }

 private:
  std::vector<std::shared_ptr<Session>> OpenSessions();
  std::unique_ptr<ports::Database> Adopt(std::shared_ptr<Session> session);

  std::shared_ptr<Workspace> workspace_ = std::make_shared<Workspace>();
  std::vector<std::weak_ptr<Session>> sessions_;
};

std::vector<std::shared_ptr<Session>> Engine::OpenSessions() {
  std::vector<std::shared_ptr<Session>> open;
  std::erase_if(sessions_, [](const auto& session) { return session.expired(); });
  for (const auto& session : sessions_) {
    if (auto held = session.lock(); held && held->Storage().IsOpen())
      open.push_back(std::move(held));
  }
  return open;
}

std::unique_ptr<ports::Database> Engine::Adopt(std::shared_ptr<Session> session) {
  sessions_.push_back(session);
  return std::make_unique<Database>(std::move(session));
}

std::unique_ptr<ports::Database> Engine::OpenDatabase(const std::string& path, bool exclusive,
                                                      bool read_only) {
  StorageFile file = OpenStorage(path, exclusive, read_only);
  return Adopt(std::make_shared<Session>(workspace_, std::move(file.lock),
                                         std::move(file.connection), exclusive, read_only));
}

std::unique_ptr<ports::Database> Engine::CreateDatabase(const std::string& path) {
  StorageFile file = CreateStorage(path);
  return Adopt(std::make_shared<Session>(workspace_, std::move(file.lock),
                                         std::move(file.connection), true, false));
}

void Engine::CompactDatabase(const std::string& source, const std::string& target) {
  Compact(source, target);
}

// Nothing to do: every change reaches the file when its transaction ends, and no lock is kept
// longer than necessary.
void Engine::Idle(ports::IdleOption /*option*/) {}

void Engine::BeginTrans() {
  if (workspace_->level >= kMostLevels) Fail(kTooManyTransactions);
  ++workspace_->level;
  for (const auto& session : OpenSessions())
    session->EnterLevels();
}

void Engine::CommitTrans() {
  if (workspace_->level == 0) Fail(kNoTransaction);
  // A database that cannot commit leaves the transaction open; the caller may retry or roll back.
  for (const auto& session : OpenSessions())
    session->CommitTo(workspace_->level - 1);
  --workspace_->level;
}

void Engine::Rollback() {
  if (workspace_->level == 0) Fail(kNoTransaction);
  --workspace_->level;
  for (const auto& session : OpenSessions())
    session->RollbackTo(workspace_->level);
}

}  // namespace

std::unique_ptr<ports::DatabaseEngine> MakeEngine() {
  return std::make_unique<Engine>();
}

}  // namespace jet
