#include "jet/store/sqlite.h"

#include <sqlite3.h>

#include <new>
#include <utility>

#include "jet/errors.h"

namespace jet {
namespace {

// SQLite reports several limits with one code; only the message distinguishes them.
void FailWithWords(std::string_view words) {
  if (words.find("integer overflow") != std::string_view::npos) Fail(kOverflow);
  for (const char* const limit : {"too large", "too many", "overflow", "at most"}) {
    if (words.find(limit) != std::string_view::npos) Fail(kTooComplex);
  }
}

}  // namespace

void Connection::Open() {
  const int code = sqlite3_open_v2(
      "", &handle_,
      SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE | SQLITE_OPEN_EXRESCODE | SQLITE_OPEN_NOMUTEX,
      nullptr);
  if (code != SQLITE_OK) {
    sqlite3_close_v2(std::exchange(handle_, nullptr));
    FailWith(code);
  }
  // Double quotes always enclose names, never texts.
  sqlite3_db_config(handle_, SQLITE_DBCONFIG_DQS_DML, 0, nullptr);
  sqlite3_db_config(handle_, SQLITE_DBCONFIG_DQS_DDL, 0, nullptr);
  Run("PRAGMA encoding = 'UTF-8'");
  Run("PRAGMA cache_size = -16000");
  // A cascade may return to the table in which it began.
  Run("PRAGMA recursive_triggers = ON");
  WatchChanges();
}

void Connection::NoteTouched(const char* table) {
  const std::string_view name(table);
  if (!touched_.contains(name)) touched_.emplace(name);
}

// Rows are reported one by one as they change, but for a statement that deletes all rows of a table
// at once; that one is noted when it is prepared.
void Connection::WatchChanges() {
  sqlite3_update_hook(
      handle_,
      [](void* self, int /*kind*/, const char* /*database*/, const char* table,
         sqlite3_int64 /*row*/) { static_cast<Connection*>(self)->NoteTouched(table); },
      this);
  sqlite3_set_authorizer(
      handle_,
      [](void* self, int action, const char* table, const char* /*second*/,
         const char* /*database*/, const char* trigger) {
        if (action == SQLITE_DELETE && trigger == nullptr)
          static_cast<Connection*>(self)->NoteTouched(table);
        return SQLITE_OK;
      },
      this);
}

Connection::TableNames Connection::TakeTouched() {
  return std::exchange(touched_, {});
}

void Connection::Close() {
  if (handle_ == nullptr) return;
  while (sqlite3_stmt* const statement = sqlite3_next_stmt(handle_, nullptr))
    sqlite3_finalize(statement);
  sqlite3_close_v2(std::exchange(handle_, nullptr));
}

bool Connection::InTransaction() const {
  return sqlite3_get_autocommit(Handle()) == 0;
}

sqlite3* Connection::Handle() const {
  if (handle_ == nullptr) Fail(kObjectClosed);
  return handle_;
}

void Connection::Run(const std::string& sql) {
  const int code = sqlite3_exec(Handle(), sql.c_str(), nullptr, nullptr, nullptr);
  if (code != SQLITE_OK) FailWith(code);
}

std::int64_t Connection::ReadInteger(const std::string& sql) {
  sqlite3_stmt* statement = nullptr;
  int code = sqlite3_prepare_v2(Handle(), sql.c_str(), -1, &statement, nullptr);
  std::int64_t value = 0;
  if (code == SQLITE_OK) {
    code = sqlite3_step(statement);
    if (code == SQLITE_ROW) value = sqlite3_column_int64(statement, 0);
  }
  sqlite3_finalize(statement);
  if (code != SQLITE_ROW && code != SQLITE_DONE) FailWith(code);
  return value;
}

std::int64_t Connection::Changes() const {
  return sqlite3_changes64(Handle());
}

std::int64_t Connection::TotalChanges() const {
  return sqlite3_total_changes64(Handle());
}

std::int64_t Connection::LastRow() const {
  return sqlite3_last_insert_rowid(Handle());
}

void Connection::FailWith(int code) {
  if (noted_) {
    const ports::DatabaseError error = *std::exchange(noted_, std::nullopt);
    throw error;
  }
  switch (code & 0xFF) {
    case SQLITE_CONSTRAINT:
      Fail(kDuplicateValue);
    case SQLITE_FULL:
      Fail(kDiskFull);
    case SQLITE_READONLY:
      Fail(kReadOnly);
    case SQLITE_BUSY:
    case SQLITE_LOCKED:
      Fail(kLockedByOther);
    case SQLITE_CANTOPEN:
    case SQLITE_CORRUPT:
    case SQLITE_IOERR:
      Fail(kDiskError);
    case SQLITE_NOMEM:
      throw std::bad_alloc();
    case SQLITE_TOOBIG:
      Fail(kTextTooLong);
    case SQLITE_INTERRUPT:
      Fail(kCancelled);
    case SQLITE_ERROR:
      FailWithWords(handle_ == nullptr ? "" : sqlite3_errmsg(handle_));
      [[fallthrough]];
    default:
      Fail(kReserved, std::to_string(code));
  }
}

Statement::Statement(std::shared_ptr<Connection> connection, const std::string& sql)
    : connection_(std::move(connection)) {
  const int code =
      sqlite3_prepare_v3(connection_->Handle(), sql.c_str(), static_cast<int>(sql.size() + 1),
                         SQLITE_PREPARE_PERSISTENT, &statement_, nullptr);
  if (code != SQLITE_OK) connection_->FailWith(code);
}

Statement::Statement(Statement&& other) noexcept
    : connection_(std::move(other.connection_)),
      statement_(std::exchange(other.statement_, nullptr)) {}

Statement& Statement::operator=(Statement&& other) noexcept {
  if (this != &other) {
    Finalize();
    connection_ = std::move(other.connection_);
    statement_ = std::exchange(other.statement_, nullptr);
  }
  return *this;
}

// A closed connection has finalized its statements itself.
void Statement::Finalize() noexcept {
  sqlite3_stmt* const statement = std::exchange(statement_, nullptr);
  if (statement != nullptr && connection_->IsOpen()) sqlite3_finalize(statement);
}

void Statement::CheckOpen() const {
  if (connection_ == nullptr || !connection_->IsOpen()) Fail(kObjectClosed);
}

Statement& Statement::BindNull(int parameter) {
  CheckOpen();
  sqlite3_bind_null(statement_, parameter);
  return *this;
}

Statement& Statement::Bind(int parameter, std::int64_t value) {
  CheckOpen();
  sqlite3_bind_int64(statement_, parameter, value);
  return *this;
}

Statement& Statement::Bind(int parameter, double value) {
  CheckOpen();
  sqlite3_bind_double(statement_, parameter, value);
  return *this;
}

Statement& Statement::Bind(int parameter, std::string_view text) {
  CheckOpen();
  // A null pointer would bind Null.
  const char* const data = text.data() == nullptr ? "" : text.data();
  const int code =
      sqlite3_bind_text64(statement_, parameter, data, text.size(), SQLITE_STATIC, SQLITE_UTF8);
  if (code != SQLITE_OK) connection_->FailWith(code);
  return *this;
}

Statement& Statement::BindCopy(int parameter, const std::string& text) {
  CheckOpen();
  const int code = sqlite3_bind_text64(statement_, parameter, text.data(), text.size(),
                                       SQLITE_TRANSIENT, SQLITE_UTF8);
  if (code != SQLITE_OK) connection_->FailWith(code);
  return *this;
}

Statement& Statement::BindBytes(int parameter, std::string_view bytes) {
  CheckOpen();
  const char* const data = bytes.data() == nullptr ? "" : bytes.data();
  const int code = sqlite3_bind_blob64(statement_, parameter, data, bytes.size(), SQLITE_STATIC);
  if (code != SQLITE_OK) connection_->FailWith(code);
  return *this;
}

bool Statement::Step() {
  CheckOpen();
  connection_->ClearNotedError();
  const int code = sqlite3_step(statement_);
  if (code == SQLITE_ROW) return true;
  if (code == SQLITE_DONE) return false;
  sqlite3_reset(statement_);
  connection_->FailWith(code);
}

void Statement::Reset() {
  CheckOpen();
  sqlite3_reset(statement_);
}

void Statement::Run() {
  while (Step()) {
  }
  Reset();
}

bool Statement::IsNull(int column) const {
  return sqlite3_column_type(statement_, column) == SQLITE_NULL;
}

std::int64_t Statement::Integer(int column) const {
  return sqlite3_column_int64(statement_, column);
}

double Statement::Real(int column) const {
  return sqlite3_column_double(statement_, column);
}

std::string_view Statement::Text(int column) const {
  const auto* const data = reinterpret_cast<const char*>(sqlite3_column_text(statement_, column));
  return {data == nullptr ? "" : data,
          static_cast<std::size_t>(sqlite3_column_bytes(statement_, column))};
}

std::string_view Statement::Bytes(int column) const {
  const auto* const data = static_cast<const char*>(sqlite3_column_blob(statement_, column));
  return {data == nullptr ? "" : data,
          static_cast<std::size_t>(sqlite3_column_bytes(statement_, column))};
}

int Statement::StorageClass(int column) const {
  return sqlite3_column_type(statement_, column);
}

}  // namespace jet
