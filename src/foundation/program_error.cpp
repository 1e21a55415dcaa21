#include "foundation/program_error.h"

#include <utility>

namespace tmw {

ProgramError::ProgramError(std::int32_t number, std::string description, std::string source)
    : Number(number), Description(std::move(description)), Source(std::move(source)) {}

void RaiseProgramError(std::string description) {
  throw ProgramError(kProgramErrorNumber, std::move(description));
}

}  // namespace tmw
