#pragma once

#include <optional>
#include <string>

// The mark of a rollback under way, a file in the product's root. It lies there from before the
// first change until after the last one and holds what the user has decided, so that whoever
// finishes the rollback does the same. While it is there nothing else changes the product.
namespace tmw {

struct RollbackMark {
  // Where the present books go; empty: they stay.
  std::string SetAside;
  // Everything has been brought back, only tidying up is left.
  bool IsDone = false;
};

bool IsRollbackUnderWay();

// Nothing if there is no mark or if it cannot be understood.
std::optional<RollbackMark> ReadRollbackMark();

// In one step; on the disk when the call returns.
void WriteRollbackMark(const RollbackMark& mark);

void RemoveRollbackMark();

// The path of the mark.
std::string RollbackMarkPath();

}  // namespace tmw
