#pragma once

#include <cstdint>
#include <string_view>
#include <vector>

// The members of DAO 3.6's objects that its public documentation names, as far as they concern
// tables, relations, rows and whole files: what an object in their place must answer to.
namespace tests {

// What an argument or a result may be.
enum class DaoKind {
  kNothing,
  kText,
  kNumber,  // Integer, Long, Byte
  kTruth,
  kKey,    // of a collection: a name or a position
  kValue,  // whatever a field may hold, Null and Empty included
  kObject,
};

enum class DaoAccess { kMethod, kRead, kReadWrite };

// The numbers that an argument may be: one of them, or any sum of them.
struct DaoNumbers {
  std::vector<std::int32_t> values = {};  // empty: any number
  bool are_bits = false;

  bool Allow(std::int32_t number) const;
};

struct DaoParameter {
  const char* name;
  DaoKind kind;
  bool is_optional = false;
  DaoNumbers numbers = {};
};

struct DaoMember {
  const char* object;
  const char* name;
  DaoAccess access = DaoAccess::kMethod;
  std::vector<DaoParameter> parameters = {};  // of a method
  DaoKind result = DaoKind::kNothing;         // a property's own kind
  const char* result_object = "";             // for kObject
};

const std::vector<DaoMember>& DaoMembers();

// By the names that DAO knows them by, without regard to case; -1 for none.
int FindDaoMember(std::string_view object, std::string_view name);

}  // namespace tests
