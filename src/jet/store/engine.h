#pragma once

#include <memory>
#include <string>
#include <vector>

#include "jet/store/session.h"
#include "ports/database.h"

namespace jet {

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

 private:
  std::vector<std::shared_ptr<Session>> OpenSessions();
  std::unique_ptr<ports::Database> Adopt(std::shared_ptr<Session> session);

  std::shared_ptr<Workspace> workspace_ = std::make_shared<Workspace>();
  std::vector<std::weak_ptr<Session>> sessions_;
};

}  // namespace jet
