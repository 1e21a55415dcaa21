#include "database/engine_failures.h"

#include <algorithm>
#include <iterator>

#include "ports/database_types.h"

namespace tmw {
namespace {

// 3006: locked exclusively; 3196: in use by another person or process; 3704, 3734: opened, or kept
// from being opened, by a user on some machine.
constexpr std::int32_t kInUse[] = {
    3006, ports::kFileAlreadyInUse, 3196, ports::kOpenedExclusively, 3704, 3734};

constexpr std::int32_t kResources[] = {
    3014,                                    // no more tables can be opened
    ports::kDiskFull,                        // 3026
    3035,                                    // system resources exceeded
    3036,                                    // the database has its largest size
    3037,                                    // no more tables or queries can be opened
    3040,                                    // the disk failed while it was read
    ports::kDiskError,                       // 3043
    3048,                                    // no more databases can be opened
    3049,                                    // the file is damaged
    3052,                                    // no more locks
    3183,                                    // no room for temporary files
    3343,                                    // the file is damaged or no database
    static_cast<std::int32_t>(0x8007000EU),  // E_OUTOFMEMORY
};

template <typename Numbers>
bool Contains(const Numbers& numbers, std::int32_t number) {
  return std::find(std::begin(numbers), std::end(numbers), number) != std::end(numbers);
}

}  // namespace

bool IsDatabaseInUse(std::int32_t number) {
  return Contains(kInUse, number);
}

bool IsResourceFailure(std::int32_t number) {
  return Contains(kResources, number);
}

}  // namespace tmw
