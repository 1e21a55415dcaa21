#include "platform/windows/dao/dao_engine.h"

#include "platform/windows/dao/dao_database.h"

namespace platform {
namespace {

// dbLangGeneral, dbVersion40
constexpr const char* kGeneralOrder = ";LANGID=0x0409;CP=1252;COUNTRY=0";
constexpr std::int32_t kVersion40 = 64;

}  // namespace

const DaoObject& DaoEngine::Engine() {
  if (!engine_) {
    if (!com_) com_.emplace();
    engine_ = DaoObject::CreateEngine();
  }
  return *engine_;
}

std::unique_ptr<ports::Database> DaoEngine::OpenDatabase(const std::string& path, bool exclusive,
                                                         bool read_only) {
  return std::make_unique<DaoDatabase>(
      Engine().CallObject(L"OpenDatabase", {path, exclusive, read_only}));
}

std::unique_ptr<ports::Database> DaoEngine::CreateDatabase(const std::string& path) {
  return std::make_unique<DaoDatabase>(
      Engine().CallObject(L"CreateDatabase", {path, std::string(kGeneralOrder), kVersion40}));
}

void DaoEngine::CompactDatabase(const std::string& source, const std::string& target) {
  Engine().Call(L"CompactDatabase", {source, target});
}

void DaoEngine::Idle(ports::IdleOption option) {
  Engine().Call(L"Idle", {static_cast<std::int32_t>(option)});
}

}  // namespace platform
