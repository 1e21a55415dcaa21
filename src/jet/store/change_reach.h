#pragma once

#include <cstdint>
#include <memory>
#include <set>

#include "jet/store/catalogue.h"
#include "jet/store/sqlite.h"
#include "jet/store/table_loader.h"

namespace jet {

// What a change of a table's rows touches beyond them: the rows of tables that relations lead to,
// and the triggers that keep the relations.
class ChangeReach {
 public:
  ChangeReach(std::shared_ptr<Connection> storage, Catalogue& catalogue, TableLoader& loader)
      : storage_(std::move(storage)), catalogue_(catalogue), loader_(loader) {}

  // Makes the table's rows ready to be changed.
  void Prepare(const TablePtr& table);

  // After relations have changed or a transaction was taken back.
  void Forget() { ready_.clear(); }

 private:
  std::shared_ptr<Connection> storage_;
  Catalogue& catalogue_;
  TableLoader& loader_;
  std::set<std::int64_t> ready_;
};

}  // namespace jet
