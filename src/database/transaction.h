#pragma once

namespace tmw {

// One transaction of the database engine, rolled back unless it is committed.
class Transaction {
 public:
  Transaction();
  Transaction(const Transaction&) = delete;
  Transaction& operator=(const Transaction&) = delete;
  ~Transaction();

  void Commit();

 private:
  bool is_open_ = true;
};

}  // namespace tmw
