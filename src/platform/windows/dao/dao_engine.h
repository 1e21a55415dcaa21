#pragma once

#include <optional>
#include <utility>

#include "platform/windows/dao/dao_object.h"
#include "ports/database.h"

namespace platform {

class DaoEngine final : public ports::DatabaseEngine {
 public:
  // DAO's engine is made at the first call.
  DaoEngine() = default;
  explicit DaoEngine(DaoObject engine) : engine_(std::move(engine)) {}

  std::unique_ptr<ports::Database> OpenDatabase(const std::string& path, bool exclusive,
                                                bool read_only) override;
  std::unique_ptr<ports::Database> CreateDatabase(const std::string& path) override;
  void CompactDatabase(const std::string& source, const std::string& target) override;
  void Idle(ports::IdleOption option) override;
  void BeginTrans() override { Engine().Call(L"BeginTrans"); }
  void CommitTrans() override { Engine().Call(L"CommitTrans"); }
  void Rollback() override { Engine().Call(L"Rollback"); }
  bool TakesDefinitionsBack() const override { return false; }

 private:
  const DaoObject& Engine();

  std::optional<ComScope> com_;  // outlives the engine's object
  std::optional<DaoObject> engine_;
};

}  // namespace platform
