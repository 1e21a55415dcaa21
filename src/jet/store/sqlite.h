#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <string_view>

#include "ports/database_types.h"

struct sqlite3;
struct sqlite3_stmt;

// Owners of SQLite's objects. All failures are numbered errors.
namespace jet {

// One open storage. Its statements may outlive it: they then fail with 3420.
class Connection {
 public:
  Connection() = default;
  Connection(const Connection&) = delete;
  Connection& operator=(const Connection&) = delete;
  ~Connection() { Close(); }

  // A private storage in memory which, beyond a bounded part, lies in a temporary file without a
  // name and goes with the connection.
  void Open();
  void Close();
  bool IsOpen() const { return handle_ != nullptr; }
  // False also after a failure that ended the transaction.
  bool InTransaction() const;
  sqlite3* Handle() const;  // 3420 when closed

  void Run(const std::string& sql);
  std::int64_t ReadInteger(const std::string& sql);  // the first value of the first row

  std::int64_t Changes() const;       // rows changed by the last statement
  std::int64_t TotalChanges() const;  // by all statements
  std::int64_t LastRow() const;

  using TableNames = std::set<std::string, std::less<>>;
  // The tables whose rows statements have changed since the names were last taken. Deleting may
  // name a table that had no row to lose.
  TableNames TakeTouched();

  // Changes made during its life do not count.
  class Unnoticed {
   public:
    explicit Unnoticed(Connection& connection)
        : connection_(connection), saved_(connection.touched_) {}
    Unnoticed(const Unnoticed&) = delete;
    Unnoticed& operator=(const Unnoticed&) = delete;
    ~Unnoticed() { connection_.touched_ = saved_; }

   private:
    Connection& connection_;
    TableNames saved_;
  };

  // The error of a function called within a statement; the statement then fails with it.
  void NoteError(ports::DatabaseError error) { noted_ = std::move(error); }
  void ClearNotedError() { noted_.reset(); }

  [[noreturn]] void FailWith(int code);

 private:
  void WatchChanges();
  void NoteTouched(const char* table);

  sqlite3* handle_ = nullptr;
  std::optional<ports::DatabaseError> noted_;
  TableNames touched_;
};

// One prepared statement. Parameters count from 1, columns from 0.
class Statement {
 public:
  Statement() = default;
  Statement(std::shared_ptr<Connection> connection, const std::string& sql);
  Statement(const Statement&) = delete;
  Statement& operator=(const Statement&) = delete;
  Statement(Statement&& other) noexcept;
  Statement& operator=(Statement&& other) noexcept;
  ~Statement() { Finalize(); }

  explicit operator bool() const { return statement_ != nullptr; }
  sqlite3_stmt* Handle() const { return statement_; }

  Statement& BindNull(int parameter);
  Statement& Bind(int parameter, std::int64_t value);
  Statement& Bind(int parameter, double value);
  // The bytes must stay valid until the statement has been run.
  Statement& Bind(int parameter, std::string_view text);
  // The statement keeps the text itself.
  Statement& BindCopy(int parameter, const std::string& text);
  Statement& BindBytes(int parameter, std::string_view bytes);

  bool Step();   // true while there is a row
  void Reset();  // ends the run, keeps the bindings
  void Run();    // Step and Reset

  bool IsNull(int column) const;
  std::int64_t Integer(int column) const;
  double Real(int column) const;
  std::string_view Text(int column) const;  // valid until the next step
  std::string_view Bytes(int column) const;
  int StorageClass(int column) const;

 private:
  void Finalize() noexcept;
  void CheckOpen() const;

  std::shared_ptr<Connection> connection_;
  sqlite3_stmt* statement_ = nullptr;
};

}  // namespace jet
