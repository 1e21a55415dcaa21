#pragma once

#include <memory>

#include "publish/signer.h"
#include "tools/command_line.h"

namespace publish {

// The signer that the command line asks for, or null.
std::unique_ptr<Signer> MakeSigner(const tools::Arguments& arguments);

}  // namespace publish
