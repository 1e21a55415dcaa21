#pragma once

#include <string>

#include "rollback/verification.h"

namespace rollback {

// What the command line says.
struct Wishes {
  bool IsConfirmed = false;  // "--yes"
  bool FilesOnly = false;    // "--files-only"
  bool Finishes = false;     // "--finish"
};

enum class Decision { kNothing, kFiles, kFilesAndBooks };

// Everything that would come back and what happens to the present books, in sentences. set_aside:
// where they would go.
std::string Summary(const Findings& findings, const std::string& set_aside);

// Shows the summary and asks: one question if the books need not be brought back, else first
// whether to bring back both, then whether to bring back the files alone.
Decision Decide(const Findings& findings, const Wishes& wishes, const std::string& set_aside);

}  // namespace rollback
